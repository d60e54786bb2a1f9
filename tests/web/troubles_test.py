"""What goes wrong with cameras, and how the page says and mends it: silent ones, addresses that are foreign or taken, a
run that is stopped half way. The tool's clock can leap, so that nobody waits for a camera to be taken for silent."""
import os
import re
import subprocess

import pytest
from cameras import DAEMON, Held, end, mac, stored
from chromium import PATIENCE, TREE, Page, start_tool
from selenium.webdriver.common.keys import Keys

LEAPING_CLOCK = os.environ.get("LEAPING_CLOCK") or str(TREE / "build/release/libleaping_clock.so")
FOREIGN, TAKEN = 4, 5  # cameras that are added


@pytest.fixture(scope="module", name="leap")
def leap_file(tmp_path_factory):
    file = tmp_path_factory.mktemp("clock") / "seconds"
    file.write_bytes(bytes(8))
    return file


@pytest.fixture(scope="module", name="tool")
def running_tool(leap):
    process, address = start_tool(LD_PRELOAD=LEAPING_CLOCK, LEAP_FILE=str(leap))
    yield address
    end(process)


@pytest.fixture(autouse=True)
def a_login(request):
    """For all cameras, which the tool keeps."""
    if "page" not in request.fixturenames:
        return
    page = request.getfixturevalue("page")
    page.click_text("Log in")
    page.type("dialog input[type=password]", "admin").send_keys(Keys.ENTER)
    page.wait(lambda: page.all("dialog") == [], "the login's end")
    page.script("window.told = ''; new MutationObserver(() => { window.told += document.getElementById('live').textContent; })"
                ".observe(document.getElementById('live'), { childList: true });")


def camera(*words):
    subprocess.run(["camera", *words], stdout=subprocess.DEVNULL, timeout=PATIENCE, check=True)


def row(page, number):
    return page.text(f"#camera-table tr[data-mac='{mac(number)}']")


def show(page, choice):
    page.click(f"#filter option[value={choice}]")


def shown_macs(page):
    return page.shown("#camera-table tbody tr", lambda one: one.get_attribute("data-mac"))


def open_camera(page, number):
    page.one(f"tr[data-mac='{mac(number)}'] a.name").click()
    page.one("#detail input[name='ipv4.address']")


def move(page, number, address):
    open_camera(page, number)
    page.type("#detail input[name='ipv4.address']", address)
    page.click("#detail .change-bar .primary")
    page.one("dialog .diff")
    page.click("dialog .primary")
    page.wait(lambda: page.shown(".way.verified, .way.failed, .way.unverified"), "the end of the change")
    assert page.shown(".way.verified"), page.text(".way")


@pytest.mark.refusals(404)  # its settings cannot be read meanwhile
def test_a_camera_falls_silent_and_is_heard_again(page, leap):
    page.wait(lambda: page.text("#count") == "3 cameras", "three cameras")
    camera("mute", "3")
    with leap.open("r+b") as seconds:  # which the tool has mapped, so it must not be empty for a moment
        seconds.write((100).to_bytes(8, "little"))
    page.wait(lambda: re.search(r"Silent since \d", row(page, 3)), "the silent camera")
    assert [name for name in ("1", "2") if "Present" not in row(page, int(name))] == [], "these were asked, and are there"
    page.wait(lambda: "Camera 3 is silent." in page.script("return window.told"), "what a screen reader is told")
    show(page, "silent")
    assert shown_macs(page) == [mac(3)]
    page.one(f"tr[data-mac='{mac(3)}'] a.name").click()
    page.wait(lambda: "It has said nothing for a while" in page.text("#detail .problems"), "what is wrong")
    camera("unmute", "3")
    page.click("#search-again")
    page.wait(lambda: "Present" in page.text(".detail-state"), "the camera's return")
    assert page.shown("#detail .problems") == [] and shown_macs(page) == []
    page.wait(lambda: "Camera 3 is here again." in page.script("return window.told"), "what a screen reader is told")


def test_cameras_at_wrong_addresses_are_marked_and_moved(page):
    camera("start", str(FOREIGN), "--daemon", DAEMON, "--set", "NETWORK_V4/IP=192.0.2.4", "--set", "NETWORK_V4/SubnetMask=255.255.255.0")
    camera("start", str(TAKEN), "--daemon", DAEMON, "--set", "NETWORK_V4/IP=198.18.1.1")
    page.wait(lambda: "Other network" in row(page, FOREIGN), "the mark of the foreign camera")
    page.wait(lambda: "Address twice" in row(page, TAKEN) and "Address twice" in row(page, 1), "the marks of both")
    show(page, "problems")
    page.wait(lambda: shown_macs(page) == [mac(1), mac(FOREIGN), mac(TAKEN)], "these three alone")
    open_camera(page, FOREIGN)
    page.wait(lambda: "Give it an address of this network" in page.text("#detail .problems"), "what is to be done")
    move(page, FOREIGN, "198.18.1.4/15")
    move(page, TAKEN, "198.18.1.5/15")
    page.wait(lambda: shown_macs(page) == [], "no mark")
    assert [stored(number, "NETWORK_V4", "IP") for number in (FOREIGN, TAKEN)] == ["198.18.1.4", "198.18.1.5"]
    show(page, "all")
    page.wait(lambda: all("Present" in row(page, number) for number in (1, FOREIGN, TAKEN)), "that they are well")
    page.wait(lambda: page.shown("#detail .problems") == [], "that nothing is wrong")


def result_row(page, number):
    return next(text for text in page.texts("#many .plan tbody tr") if mac(number) in text)


def test_a_run_is_stopped_half_way(page):
    """The camera whose turn it is goes on to its end; what has not begun stays as it is, and the table says so."""
    page.wait(lambda: {mac(number) for number in (1, 2, 3)} <= set(shown_macs(page)), "the cameras")
    held = Held(2)
    for number in (1, 2, 3):
        page.one(f"tr[data-mac='{mac(number)}'] input").click()
    page.click_text("Set them up together")
    page.type(".together input", "Gate #")
    page.click_text("Show the plan")
    page.click("#many option[value='1']")
    page.click_text("Apply to 3 cameras")
    held.gate.wait()
    page.wait(lambda: "1 of 3" in page.text("#many .run-line"), "the run")
    page.click_text("All cameras", "#many")
    assert page.text("#run-banner") == "1 of 3 cameras are done"
    page.click("#run-banner a")
    page.click("#run-stop")
    assert page.text("#run-stop") == "Stopping: what is on its way goes to its end."
    held.release()
    page.wait(lambda: page.text("#many .run-line") == "Stopped after 2 of 3 cameras", "the end of the run")
    assert page.text("#many .summary") == "3 cameras: 2 changed, 1 failed."
    assert ["Changed" in result_row(page, number) for number in (1, 2, 3)] == [True, True, False]
    assert "not tried: stopped" in result_row(page, 3)
    assert [stored(number, "CAMSYSTEM", "CameraName") for number in (1, 2, 3)] == ["Gate 1", "Gate 2", "Camera 3"]
    page.click_text("Result as CSV")
    lines = page.saved("result.csv").splitlines()
    assert [line.rpartition(",")[2] for line in lines] == ["why", "", "", "not tried: stopped"]


def test_the_end_of_the_tool_is_told(tmp_path):
    """It may come back; another one at its place does not know this browser, and the page says what to do."""
    first, address = start_tool()
    page = Page(tmp_path, address)
    try:
        page.one("#list")
        end(first)
        page.wait(lambda: "does not answer" in page.text("#connection"), "that the tool is gone")
        second, _ = start_tool(look=("--print", "--port", re.search(r":(\d+)/", address)[1]))
        page.wait(lambda: "Start “qvpctl web” again" in page.text("#connection"), "that the session is over")
        end(second)
    finally:
        page.close()
