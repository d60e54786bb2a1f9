"""The first page where no camera is: what helps, and three virtual cameras to try. Runs on a network with nobody on it."""
import os

import pytest
from accessibility import faults
from cameras import end
from chromium import TREE, Page, start_tool
from support.waiting import wait_until


@pytest.fixture(scope="module", name="page")
def lonely_page(tmp_path_factory):
    """The browser comes in by the file that it is opened with."""
    folder = tmp_path_factory.mktemp("chromium")
    opener = folder / "xdg-open"
    opener.write_text(f'#!/bin/sh\necho "$1" >"{folder}/name" && mv "{folder}/name" "{folder}/opened"\n')
    opener.chmod(0o755)
    process, address = start_tool(look=(), PATH=f"{folder}:{TREE}/virtual-camera:{os.environ['PATH']}", XDG_RUNTIME_DIR=str(folder))
    wait_until((folder / "opened").exists, "a browser is opened")
    page = Page(folder, address, "file://" + (folder / "opened").read_text().strip())
    yield page
    page.close()
    end(process)


def test_it_says_where_was_searched_and_what_may_be_wrong(page):
    page.wait(lambda: page.text("#welcome h2") == "No camera has answered yet", "the end of the search")
    assert "lonely0" in page.text("#welcome .chips")
    assert len(page.shown("#welcome .reasons li")) == 4 and page.shown("#list") == []
    assert faults(page) == ""


def test_a_button_starts_three_virtual_cameras(page):
    page.click("#start-virtual")
    page.wait(lambda: page.shown("#list") and page.text("#count") == "3 cameras", "three cameras")
    assert page.texts("#camera-table a.name") == ["Camera 1", "Camera 2", "Camera 3"]
    page.wait(lambda: page.shown("#connection") == [], "the connection")
    # This machine's browser does not reach their web pages, so nothing leads there.
    page.wait(lambda: page.shown("#camera-table td a") == [], "addresses without links")
