"""Many cameras at once, and texts of cameras that would like to be more than text."""
import csv
import io

import pytest
from cameras import mac, report, root, stored
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

HOSTILE = '<img src=x onerror="window.harmed = 1">'


@pytest.fixture(autouse=True)
def a_login(page):
    """For all cameras, which the tool keeps."""
    page.click_text("Log in")
    page.type("dialog input[type=password]", "admin").send_keys(Keys.ENTER)
    page.wait(lambda: page.all("dialog") == [], "the login's end")


def choose_cameras(page, *numbers):
    page.wait(lambda: len(page.shown("#camera-table tbody tr")) == 3, "the cameras")
    for box in page.shown("#camera-table tbody input:checked"):
        box.click()
    for number in numbers:
        page.one(f"tr[data-mac='{mac(number)}'] input").click()


def test_names_with_a_counter_and_addresses_from_a_range(page):
    choose_cameras(page, 1, 2)
    assert page.text("#selection-text") == "2 cameras selected"
    page.click_text("Set them up together")
    pattern, _, first, _ = page.shown(".together input")
    pattern.send_keys("Gate ##")
    first.send_keys("198.18.1.6/30")
    page.click_text("Show the plan")
    page.wait(lambda: "network" in page.text(".together .fault") and page.focused == first, "that there are not enough addresses")
    first.clear()
    first.send_keys("198.18.1.3/15")  # which camera 3 has, so it is left out
    assert "Gate 01" in page.text(".preview") and "198.18.1.4/15" in page.text(".preview")
    page.click_text("Show the plan")
    page.wait(lambda: "2 to change" in page.text("#many .summary"), "the plan")
    page.click_text("Apply to 2 cameras")
    page.wait(lambda: "2 changed" in page.text("#many .summary"), "the end of the run")
    assert [stored(number, "CAMSYSTEM", "CameraName") for number in (1, 2)] == ["Gate 01", "Gate 02"]
    assert [stored(number, "NETWORK_V4", "IP") for number in (1, 2)] == ["198.18.1.4", "198.18.1.5"]
    page.click_text("Result as CSV")
    result = page.saved("result.csv").splitlines()
    assert len(result) == 3 and all("changed" in line for line in result[1:])
    page.click_text("Set up more")


def test_a_table_is_chosen_asks_for_its_secret_and_is_applied(page, tmp_path):
    file = tmp_path / "site.csv"
    file.write_text(f"mac,name,password\n{mac(1)},Yard,\n{mac(3)},Workshop,prompt:new password\n")
    page.click_text("Many at once")
    page.one(".drop input").send_keys(str(file))
    assert page.text("dialog label") == "new password"
    page.type("dialog input", "seven brown foxes").send_keys(Keys.ENTER)
    page.wait(lambda: "2 to change" in page.text("#many .summary"), "the plan")
    assert "seven brown foxes" not in page.driver.page_source and "secret" in page.text(".plan")
    page.click_text("Apply to 2 cameras")
    page.wait(lambda: "2 changed" in page.text("#many .summary"), "the end of the run")
    assert stored(1, "CAMSYSTEM", "CameraName") == "Yard" and stored(3, "CAMSYSTEM", "CameraName") == "Workshop"
    assert stored(3, "USER_ADMIN", "Password1") == "seven brown foxes"


DROP = """
    const files = new DataTransfer();
    files.items.add(new File([arguments[0]], 'site.csv', { type: 'text/csv' }));
    const target = document.getElementById('list');
    for (const kind of ['dragover', 'drop']) {
        target.dispatchEvent(new DragEvent(kind, { bubbles: true, cancelable: true, dataTransfer: files }));
    }"""


def test_a_table_is_dropped_on_the_list(page):
    page.script(DROP, f"mac,name\n{mac(2)},Gate 02\n02:51:56:50:00:77,Nobody\n")
    page.wait(lambda: "1 already as wanted" in page.text("#many .summary"), "the plan")
    assert "1 unreachable" in page.text("#many .summary")
    assert [text for text in page.texts("#many button") if text.startswith("Apply")] == []


def test_a_file_that_is_no_table_of_cameras_is_not_sent(page):
    page.script(DROP, "x" * 1000001)
    page.wait(lambda: "site.csv" in page.text("#many-problem"), "that it is too large")


@pytest.mark.refusals(400)
def test_what_is_wrong_with_a_table_is_told_with_its_place(page):
    page.script(DROP, f"mac,name,http-port\n{mac(2)},Gate,8088\n{mac(3)},{'x' * 64},80\n")
    page.wait(lambda: "8087 and 8089 are free" in page.text("#many-problem table"), "the fault")
    cells = page.texts("#many-problem tbody tr th, #many-problem tbody td")
    assert (cells[0:2], cells[3:5], len(cells)) == (["2", "3"], ["3", "2"], 6)


def test_the_cameras_are_exported(page):
    """With the values that their stores have, and without secrets."""
    page.click_text("Export")
    table = page.saved("cameras.csv")
    rows = {one["mac"]: one for one in csv.DictReader(io.StringIO(table))}
    assert set(rows) == {mac(number) for number in (1, 2, 3)}
    kept = {"name": ("CAMSYSTEM", "CameraName"), "wifi.ssid": ("WIRELESS", "SSID"), "ddns.host": ("DDNS", "HOST")}
    for number in (1, 2, 3):
        row = rows[mac(number)]
        assert {key: row[key] for key in kept} == {key: stored(number, *place) for key, place in kept.items()}
        assert row["ipv4.address"] == stored(number, "NETWORK_V4", "IP") + "/15"
    assert "seven brown foxes" not in table


def test_texts_of_cameras_are_only_text(page):
    store = root(2) / "etc/qvp/camera.ini"
    store.write_text(store.read_text().replace("CameraName=Gate 02", "CameraName=" + '"' + HOSTILE.replace('"', '\\"') + '"'))
    (root(2) / "etc/qvp/site_list.txt").write_text(
        (root(2) / "etc/qvp/site_list.txt").read_text().replace("Reception     ", "<svg onload=1>"))
    page.click("#search-again")
    page.wait(lambda: HOSTILE in page.text(f"tr[data-mac='{mac(2)}']"), "the name as text")
    page.one(f"tr[data-mac='{mac(2)}'] a.name").click()
    page.wait(lambda: page.text("#detail-heading") == HOSTILE, "the heading")
    page.click(".survey button")
    page.wait(lambda: "<svg onload=1>" in page.text(".networks"), "the network as text")
    page.click_text("Reboot …", "#detail")
    assert page.text("dialog h2") == f"Reboot {HOSTILE}?"
    page.keys(Keys.ESCAPE)
    page.click("#detail-close")
    report(b"\x02\x00\x5e\x00\x00\x01", "198.18.99.1", HOSTILE.encode(), b"<img src=1 onerror=harm(2)>", HOSTILE.encode())
    stranger = "tr[data-mac='02:00:5e:00:00:01']"
    page.wait(lambda: page.text(stranger).count(HOSTILE) == 2 and "<img src=1 onerror=harm(2)>" in page.text(stranger), "a camera that is only heard")
    page.one(f"{stranger} a.name").click()
    page.wait(lambda: page.text("#detail .facts").count("<img") == 2, "what it says of itself")
    assert page.script("return [document.images.length, window.harmed ?? null]") == [0, None]
    assert page.driver.find_elements(By.CSS_SELECTOR, "svg[onload]") == []
