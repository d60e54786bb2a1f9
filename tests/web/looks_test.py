"""How the page looks and is read: light and dark, on a telephone, to a screen reader, in the other language."""
import pytest
from accessibility import faults, tab_order
from cameras import mac
from chromium import PHONE
from selenium.webdriver.common.keys import Keys


def show_list(page):
    page.wait(lambda: len(page.shown("#camera-table tbody tr")) == 3, "the cameras")
    if not page.all("#camera-table tbody input:checked"):
        page.one("#select-all").click()
    page.one("#selection")


def show_login(page):
    page.open(f"#camera/{mac(1)}")
    page.one("#detail .login")


def log_in(page):
    page.click("#login-all")
    page.type("dialog input[type=password]", "admin").send_keys(Keys.ENTER)
    page.wait(lambda: page.all("dialog") == [], "the login's end")


def show_settings(page):
    log_in(page)
    page.open(f"#camera/{mac(1)}")
    page.one("#detail input[name='http-port']")


def show_networks(page):
    show_settings(page)
    page.click(".survey button")
    page.one(".networks")


def show_review(page):
    show_settings(page)
    page.type("input[name='name']", "Front door")
    page.click("#detail .change-bar .primary")
    page.one("dialog .diff")


def show_fault(page):
    show_settings(page)
    page.click_text("Factory reset …", "#detail")
    page.click("dialog .danger")
    page.one("dialog .fault")


def show_many(page):
    show_list(page)
    page.click_text("Set them up together")
    page.type(".together input", "Gate #")


def show_plan(page):
    log_in(page)
    show_many(page)
    page.click_text("Show the plan")
    page.one("#many .plan")


# The login's own view comes before those that log in.
VIEWS = [show_list, show_login, show_settings, show_networks, show_review, show_fault, show_many, show_plan]


@pytest.mark.parametrize("view", VIEWS)
def test_every_view_can_be_read(page, view):
    """In both colour schemes; and on a telephone nothing sticks out."""
    view(page)
    assert faults(page) == ""
    page.set_media(prefers_color_scheme="dark")
    assert faults(page) == ""
    page.set_size(*PHONE)
    page.wait(lambda: page.script("return innerWidth") == PHONE[0], "the telephone")
    assert page.script("return document.documentElement.scrollWidth") == PHONE[0]
    assert faults(page) == ""


@pytest.mark.parametrize("view", [show_list, show_settings, show_review, show_many])
def test_the_keyboard_goes_through_every_control_in_its_order(page, view):
    view(page)
    reached, expected = tab_order(page)
    assert [one.get_attribute("outerHTML")[:120] for one in reached] == [one.get_attribute("outerHTML")[:120] for one in expected]


def test_dark_is_dark_and_light_is_light(page):
    light = page.script("return getComputedStyle(document.body).backgroundColor")
    page.set_media(prefers_color_scheme="dark")
    dark = page.script("return getComputedStyle(document.body).backgroundColor")
    brightness = [sum(int(part) for part in text[4:-1].split(",")) for text in (light, dark)]
    assert brightness[0] > 600 and brightness[1] < 150


def test_who_wants_no_motion_sees_none(page):
    show_list(page)
    moving = "return document.getAnimations().length + [...document.querySelectorAll('*')].filter((one) => getComputedStyle(one).animationName !== 'none').length"
    page.script("document.querySelector('#list').insertAdjacentHTML('beforeend', '<p class=\"working\"><i class=\"icon\"></i></p>')")
    assert page.script(moving) > 0
    page.set_media(prefers_reduced_motion="reduce")
    assert page.script(moving) == 0


def test_the_table_is_searched_and_sorted(page):
    page.wait(lambda: len(page.shown("#camera-table tbody tr")) == 3, "the cameras")
    names = lambda: page.texts("#camera-table tbody a.name")  # noqa: E731
    assert names() == ["Camera 1", "Camera 2", "Camera 3"]
    page.click_text("Product", "#camera-table")
    heading = page.one("#camera-table th[data-sort=product]")
    assert heading.get_attribute("aria-sort") == "ascending" and names() == ["Camera 3", "Camera 1", "Camera 2"]
    page.click_text("Product", "#camera-table")
    assert heading.get_attribute("aria-sort") == "descending" and names() == ["Camera 2", "Camera 1", "Camera 3"]
    page.type("#search", "198.18.1.2")
    assert names() == ["Camera 2"] and page.text("#count") == "1 of 3 cameras"
    page.click("#select-all")
    assert page.text("#selection-text") == "1 camera selected", "what is not shown is not selected"
    page.one("#search").clear()
    page.keys(" ", Keys.BACKSPACE)
    page.click("#filter option[value=selected]")
    assert names() == ["Camera 2"]
    page.click("#filter option[value=all]")
    assert len(names()) == 3
    page.type("#search", "nothing like that")
    assert page.text("#no-match") == "No camera is like that." and page.shown("#camera-table") == []


def test_the_other_language_is_kept(page):
    page.click("#language option[value=de]")
    page.wait(lambda: page.text("h1") == "Kameras", "the page in German")
    page.open()
    assert page.script("return document.documentElement.lang") == "de"
    assert page.text("#search-again") == "Erneut suchen"
    log_in(page)
    page.open(f"#camera/{mac(1)}")
    page.wait(lambda: page.text("#detail legend") == "Name, Port und Adresse", "the groups in German")
    page.click("#language option[value=en]")
    page.wait(lambda: page.text("h1") == "Cameras", "the page in English")
