"""A page for each file of tests; the tests run where the cameras are."""
import pytest
from chromium import Page, start_tool
from cameras import end


@pytest.fixture(scope="module", name="tool")
def running_tool():
    process, address = start_tool()
    yield address
    end(process)


@pytest.fixture(scope="module", name="opened")
def opened_page(tool, tmp_path_factory):
    page = Page(tmp_path_factory.mktemp("chromium"), tool)
    yield page
    page.close()


@pytest.fixture
def page(opened, request):
    """The list, wide and light; afterwards nothing has gone wrong in the browser."""
    opened.set_size(1280, 800)
    opened.set_media(prefers_color_scheme="light")
    opened.open()
    opened.collect()
    opened.errors.clear()
    yield opened
    marker = request.node.get_closest_marker("refusals")
    opened.assert_clean(marker.args if marker else ())


def pytest_configure(config):
    config.addinivalue_line("markers", "refusals(status...): HTTP statuses that the story brings about")
