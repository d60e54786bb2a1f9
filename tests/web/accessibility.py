"""What a screen reader is told, and where the keyboard leads."""
from pathlib import Path

from selenium.webdriver.common.keys import Keys

FAULTS = (Path(__file__).parent / "accessibility.js").read_text()
CONTROLS = {"button", "link", "checkbox", "textbox", "searchbox", "combobox", "spinbutton", "ComboBoxMenuButton", "progressbar",
            "dialog", "table", "columnheader", "rowheader", "group", "region", "form", "listbox", "MenuListPopup"}
NEEDS_NO_NAME = {"form", "group", "listbox", "MenuListPopup"}  # a fieldset has one, a details element has not

FOCUSABLE = """
    const inDialog = document.querySelector('dialog[open]') ?? document;
    return [...inDialog.querySelectorAll('a[href], button, input, select, summary')].filter((one) =>
        !one.matches(':disabled') && one.checkVisibility({ visibilityProperty: true }) && one.tabIndex >= 0);"""


def unnamed(page):
    """The controls and tables, as Chromium tells them to a screen reader, that have no name."""
    tree = page.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
    seen = [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in tree
            if not node.get("ignored") and "role" in node]
    assert any(role in ("table", "dialog", "heading") for role, _ in seen)
    return [role for role, name in seen if role in CONTROLS - NEEDS_NO_NAME and name.strip() == ""]


def faults(page):
    """A line each, "" for none."""
    return "\n".join(page.script(FAULTS) + [f"without a name: {role}" for role in unnamed(page)])


def tab_order(page):
    """Every control that the keyboard reaches, in its order, each with a visible focus; and those it has to reach."""
    expected = page.script(FOCUSABLE)
    page.script("arguments[0].focus()", expected[0])
    reached = expected[:1]
    for _ in range(len(expected) + 2):
        page.keys(Keys.TAB)
        focused = page.focused
        if focused.tag_name == "body" or focused in reached:
            break
        assert page.script("return getComputedStyle(arguments[0]).outlineStyle !== 'none'", focused), focused.get_attribute("outerHTML")
        reached.append(focused)
    return reached, expected
