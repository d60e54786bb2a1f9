"""One camera, from the first click to what stands in its store. Each story has a camera that the others leave alone, or
leaves it as they need it; they run in this order."""
import re
import subprocess

import pytest
from cameras import DAEMON, Held, mac, root, stored
from chromium import PATIENCE
from selenium.webdriver.common.keys import Keys

WAY = ["waiting", "sent", "away", "back", "verified"]

# Notes each step of a change that is seen; one that is over before the next picture is not.
WATCH = """
    window.steps = [];
    window.countdown = '';
    window.countdownInTable = '';
    window.isLocked = false;
    new MutationObserver(() => {
        window.countdown ||= document.querySelector('.way .now .countdown')?.textContent ?? '';
        window.countdownInTable ||= document.querySelector('#camera-table .countdown')?.textContent ?? '';
        window.isLocked ||= document.querySelector('#detail .settings fieldset:disabled input') !== null;
        const step = document.querySelector('.way')?.className.replace('way ', '');
        if (step && window.steps.at(-1) !== step) window.steps.push(step);
    }).observe(document.body, { childList: true, subtree: true });"""


def open_camera(page, number):
    page.open(f"#camera/{mac(number)}")
    page.script(WATCH)
    page.one("#detail .settings")


def log_in(page, number, password="admin"):
    open_camera(page, number)
    if page.shown("#detail .login"):
        page.type("#detail .login input[type=password]", password).send_keys(Keys.ENTER)
    page.one("#detail input[name='http-port']")


def send(page):
    """What was typed, by way of the diff."""
    page.click("#detail .change-bar .primary")
    diff = page.text("dialog .diff tbody")
    page.click("dialog .primary")
    await_end(page)
    return diff


def await_end(page):
    page.wait(lambda: page.shown(".way.verified, .way.failed, .way.unverified"), "the end of the change")
    assert page.shown(".way.verified"), page.text(".way")


def row(page, number):
    return page.text(f"#camera-table tr[data-mac='{mac(number)}']")


def test_cameras_are_found_by_themselves(page):
    page.wait(lambda: page.text("#count") == "3 cameras", "three cameras")
    for number in (1, 2, 3):
        assert f"Camera {number}" in row(page, number) and f"198.18.1.{number}" in row(page, number)
        assert "Present" in row(page, number) and mac(number) in row(page, number)


def test_a_search_can_be_asked_for_again(page):
    page.click("#search-again")
    page.wait(lambda: page.text("#search-state") == "The last search found 3 cameras", "the search's end")


def test_a_camera_is_named_by_the_keyboard_alone(page):
    page.keys(Keys.TAB)
    assert page.focused.text == "Skip to the cameras"
    page.keys(Keys.ENTER)
    page.tab_to(lambda one: one.text == "Camera 1").send_keys(Keys.ENTER)
    page.wait(lambda: page.focused.get_attribute("id") == "detail-heading", "the focus in the camera")
    page.script(WATCH)
    page.one("#detail .login")
    page.tab_to(lambda one: one.get_attribute("type") == "password").send_keys("admin", Keys.ENTER)
    page.one("#detail input[name='name']")
    page.tab_to(lambda one: one.get_attribute("name") == "name").send_keys(Keys.CONTROL, "a")
    page.keys("Front door", Keys.ENTER)
    page.one("dialog .diff")
    held = Held(1)
    page.tab_to(lambda one: one.text == "Send").send_keys(Keys.ENTER)
    page.wait(lambda: page.focused.get_attribute("id") == "detail-change", "the focus where the change is told")
    held.gate.wait()
    page.wait(lambda: page.script("return window.countdown && window.countdownInTable && window.isLocked"), "the camera to be away")
    held.release()
    await_end(page)
    page.wait(lambda: page.text("#detail-heading") == "Front door", "the new name")
    page.keys(Keys.ESCAPE)
    page.wait(lambda: page.focused.text == "Front door", "the focus back in the table")
    assert stored(1, "CAMSYSTEM", "CameraName") == "Front door"
    steps = page.script("return window.steps")
    assert steps == [step for step in WAY if step in steps] and "away" in steps and steps[-1] == "verified"
    assert re.fullmatch(r"\d+ s", page.script("return window.countdown"))
    assert re.fullmatch(r"\d+ s", page.script("return window.countdownInTable"))
    assert page.script("return window.isLocked"), "nothing is typed while the camera changes"


@pytest.mark.refusals(401)
def test_a_wrong_password_is_told(page):
    open_camera(page, 2)
    page.type("#detail .login input[type=password]", "wrong").send_keys(Keys.ENTER)
    page.wait(lambda: "refused" in page.text("#detail .login .problem-text"), "the refusal")
    assert page.all("#detail input[name='http-port']") == []


def test_a_login_for_all_opens_the_others(page):
    open_camera(page, 2)
    page.click("#detail .login .choice input")
    page.type("#detail .login input[type=password]", "admin").send_keys(Keys.ENTER)
    page.one("#detail input[name='http-port']")
    open_camera(page, 3)
    page.one("#detail input[name='http-port']")


@pytest.mark.refusals(400)
def test_what_the_camera_would_refuse_is_told_where_it_was_typed(page):
    log_in(page, 2)
    page.type("input[name='http-port']", "8088")
    page.click("#detail .change-bar .primary")
    page.wait(lambda: "8087 and 8089 are free" in page.text("#detail .fault"), "the reason")
    field = page.one("input[name='http-port']")
    assert field == page.focused and field.get_attribute("aria-invalid") == "true"
    assert page.one("#detail .fault").get_attribute("id") in field.get_attribute("aria-describedby")
    page.click_text("Discard", "#detail")
    assert page.shown("#detail .change-bar, #detail .fault") == []


def test_a_camera_is_moved_to_a_fixed_address(page):
    log_in(page, 2)
    page.type("input[name='ipv4.address']", "198.18.7.2/15")
    diff = send(page)
    assert "198.18.1.2/15" in diff and "198.18.7.2/15" in diff
    page.wait(lambda: "198.18.7.2" in row(page, 2), "the new address in the table")
    assert stored(2, "NETWORK_V4", "IP") == "198.18.7.2"
    assert page.one("input[name='ipv4.address']").get_attribute("value") == "198.18.7.2/15"
    page.wait(lambda: page.shown("#detail .change-bar") == [], "nothing is left to send")


def test_a_camera_joins_a_network_of_its_survey(page):
    log_in(page, 3)
    page.click(".survey button")
    page.wait(lambda: "Reception" in page.text(".networks"), "the survey")
    assert "64 %" in page.text(".networks") and "channel 1" in page.text(".networks")
    page.one(".networks button[aria-label='Join Reception']").click()
    page.click("dialog .primary")
    assert "key is needed" in page.text("dialog .fault")
    page.type("dialog input[type=password]", "a wireless key").send_keys(Keys.ENTER)
    page.wait(lambda: "Reception" in page.text("dialog .diff"), "the diff")
    assert "a wireless key" not in page.driver.page_source and "secret" in page.last("dialog .diff").text
    page.last("dialog .primary").click()
    await_end(page)
    assert (stored(3, "WIRELESS", "SSID"), stored(3, "WIRELESS", "PreSharedKey")) == ("Reception", "a wireless key")


def test_a_password_is_changed_and_goes_on_to_be_used(page):
    log_in(page, 3)
    page.click_text("Password …", "#detail")
    first, second = page.shown("dialog input[type=password]")
    first.send_keys("seven brown foxes")
    second.send_keys("seven brown fixes", Keys.ENTER)
    assert page.text("dialog .fault") == "These two differ."
    second.clear()
    second.send_keys("seven brown foxes", Keys.ENTER)
    await_end(page)
    assert stored(3, "USER_ADMIN", "Password1") == "seven brown foxes"
    log_in(page, 3)
    page.type("input[name='ddns.host']", "gate.example.com")
    send(page)
    assert stored(3, "DDNS", "HOST") == "gate.example.com"


def test_changes_that_were_not_sent_are_not_lost_by_leaving(page):
    log_in(page, 2)
    page.type("input[name='name']", "Forgotten")
    page.click("#detail-close")
    assert "Camera 2" in page.text("dialog") and page.focused.text == "Cancel"
    page.keys(Keys.ESCAPE)
    page.wait(lambda: page.all("dialog") == [], "the question's end")
    assert page.one("input[name='name']").get_attribute("value") == "Forgotten"
    page.one(f"#camera-table tr[data-mac='{mac(3)}'] a.name").click()
    page.one("dialog")
    page.driver.back()  # a question is enough
    assert len(page.shown("dialog")) == 1 and page.text("#detail-heading") == "Camera 2"
    page.click_text("Leave", "dialog")
    page.wait(lambda: page.text("#detail-heading") == "Camera 3", "the other camera")
    page.click("#detail-close")
    page.wait(lambda: page.shown("#detail") == [], "the list alone")


def test_a_reboot_names_the_camera_it_is_about(page):
    boots = (root(2) / "var/log/board.log").read_text().count("reboot")
    log_in(page, 2)
    page.click_text("Reboot …", "#detail")
    assert page.text("dialog h2") == "Reboot Camera 2?"
    page.keys(Keys.ESCAPE)
    page.wait(lambda: page.all("dialog") == [], "the question's end")
    assert page.focused.text == "Reboot …"
    page.click_text("Reboot …", "#detail")
    page.click_text("Reboot Camera 2", "dialog")
    await_end(page)
    assert (root(2) / "var/log/board.log").read_text().count("reboot") > boots


def test_a_factory_reset_wants_the_name_typed(page):
    log_in(page, 1)
    page.click_text("Factory reset …", "#detail")
    page.type("dialog input", "Camera 2").send_keys(Keys.ENTER)
    assert page.text("dialog .fault") == "This camera's name is Front door."
    assert stored(1, "CAMSYSTEM", "CameraName") == "Front door"
    page.type("dialog input", "Front door").send_keys(Keys.ENTER)
    await_end(page)
    page.wait(lambda: stored(1, "CAMSYSTEM", "CameraName") == "Camera 1", "the name of the factory")


def test_a_camera_that_is_switched_on_appears_and_is_told(page):
    assert page.all(f"tr[data-mac='{mac(4)}']") == []
    page.script("window.told = ''; new MutationObserver(() => { window.told += document.getElementById('live').textContent; })"
                ".observe(document.getElementById('live'), { childList: true });")
    subprocess.run(["camera", "start", "4", "--daemon", DAEMON], stdout=subprocess.DEVNULL, timeout=PATIENCE, check=True)
    page.wait(lambda: "Camera 4" in row(page, 4), "the new camera")
    page.wait(lambda: "Camera 4 is here." in page.script("return window.told"), "what a screen reader is told")
