"""Debian's Chromium with the page in it, and what is waited for and asked of it."""
import json
import os
import re
import subprocess
from pathlib import Path

from selenium import webdriver
from selenium.common.exceptions import NoSuchElementException, StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

TREE = Path(__file__).resolve().parents[2]
TOOL = os.environ.get("QVPCTL") or str(TREE / "build/release/qvpctl")
PATIENCE = 60
WIDE, PHONE = (1280, 800), (390, 844)


def start_tool(look=("--print",), **environment):
    """The tool's page, and the address that lets one in."""
    process = subprocess.Popen([TOOL, "web", *look], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True, env=os.environ | environment)
    address = re.search(r"http://127\.0\.0\.1:\d+/\?token=\S+", process.stdout.readline())
    assert address, "the tool tells no address"
    return process, address[0]


def start_chromium(folder):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    # It is root in a namespace of its own: its sandbox would want another one.
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-proxy-server",
                     "--disable-background-networking", "--disable-extensions", "--disable-sync", "--no-first-run",
                     "--renderer-process-limit=1", "--hide-scrollbars", f"--user-data-dir={folder}/profile"):
        options.add_argument(argument)
    options.add_experimental_option("prefs", {"intl.accept_languages": "en", "download.default_directory": f"{folder}/saved"})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    os.environ["NO_PROXY"] = "*"
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class Page:
    def __init__(self, folder, address, way_in=None):
        self.folder = Path(folder)
        self.base = address.split("?")[0]
        self.driver = start_chromium(folder)
        self.set_size(*WIDE)
        self.driver.get(way_in or address)
        self.wait(lambda: self.driver.current_url == self.base, "the page behind the way in")
        self.requests, self.errors = [], []

    def close(self):
        self.driver.quit()

    # --- How it is looked at

    def set_size(self, width, height, scale=1):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": scale, "mobile": width < 500})

    def set_media(self, **features):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": name.replace("_", "-"), "value": value} for name, value in features.items()]})

    def open(self, place=""):
        """Loads the page anew, at one of its views."""
        self.script("history.replaceState(null, '', arguments[0])", self.base + place)
        self.driver.refresh()
        self.wait(lambda: self.shown("#camera-table tbody tr, #welcome h2, #many h2, #detail h2"))

    # --- What is there

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def shown(self, selector, look=lambda one: one):
        """Those that can be seen, or what `look` sees of each; anew when the page is drawn anew in the midst of it."""
        while True:
            try:
                return [look(one) for one in self.all(selector) if one.is_displayed()]
            except StaleElementReferenceException:
                continue

    def one(self, selector):
        return self.wait(lambda: self.shown(selector), selector)[0]

    def last(self, selector):
        return self.wait(lambda: self.shown(selector), selector)[-1]

    def texts(self, selector):
        return self.shown(selector, lambda one: one.text)

    def text(self, selector):
        return self.wait(lambda: self.texts(selector), selector)[0]

    def script(self, code, *arguments):
        return self.driver.execute_script(code, *arguments)

    @property
    def focused(self):
        return self.driver.switch_to.active_element

    def wait(self, condition, what="", patience=PATIENCE):
        ignored = [StaleElementReferenceException, NoSuchElementException]
        wait = WebDriverWait(self.driver, patience, poll_frequency=0.15, ignored_exceptions=ignored)
        return wait.until(lambda _: condition(), f"never: {what}")

    # --- What one does

    def click(self, selector):
        self.wait(lambda: [one.click() for one in self.shown(selector)[:1]], selector)

    def click_text(self, text, within="body"):
        """The button or link of that name."""
        def find():
            return [one for one in self.shown(f"{within} button, {within} a") if one.text == text]
        self.wait(lambda: [one.click() for one in find()[-1:]], text)

    def type(self, selector, text):
        field = self.one(selector)
        field.clear()
        field.send_keys(text)
        return field

    def keys(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def tab_to(self, reached, most=200):
        """Goes on by the keyboard alone until the focused element is the one that is meant."""
        for _ in range(most):
            if reached(self.focused):
                return self.focused
            self.keys(Keys.TAB)
        raise AssertionError("the keyboard does not lead there")

    def saved(self, name):
        """A file that the page let be saved, once it is whole."""
        file = self.folder / "saved" / name
        self.wait(file.is_file, name)
        text = file.read_text()
        file.unlink()
        return text

    # --- What it must never do

    def collect(self):
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                self.requests.append(message["params"]["request"]["url"])
        for entry in self.driver.get_log("browser"):
            if entry["level"] in ("SEVERE", "WARNING"):
                self.errors.append(entry["message"])

    def assert_clean(self, refusals=()):
        """No error, and nothing asked of another host. `refusals`: HTTP statuses that the story brings about."""
        self.collect()
        own = (self.base, "data:", "blob:" + self.base, "chrome://")
        assert [url for url in self.requests if not url.startswith(own)] == []
        expected = tuple(f"status of {status} " for status in refusals)
        assert [error for error in self.errors if not any(one in error for one in expected)] == []
        self.requests.clear()
        self.errors.clear()
