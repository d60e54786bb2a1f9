"""The languages of the page have the same texts, and know what the tool says of its settings."""
import json
import os
import re
import subprocess
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
PAGE = TREE / "qvpctl/web/page"
TOOL = os.environ.get("QVPCTL") or str(TREE / "build/release/qvpctl")
TABLES = {file.stem: json.loads(file.read_text()) for file in sorted((PAGE / "languages").glob("*.json"))}
ENGLISH = TABLES["en"]["texts"]


def placeholders(text):
    return sorted(re.findall(r"\{\w+\}", text))


def test_there_is_english_and_another_language():
    assert len(TABLES) >= 2


def test_every_language_has_every_text():
    for name, table in TABLES.items():
        assert set(table["texts"]) == set(ENGLISH), name
        assert {key: placeholders(text) for key, text in table["texts"].items()} == \
            {key: placeholders(text) for key, text in ENGLISH.items()}, name


def test_every_text_that_the_page_shows_is_there():
    used = set()
    for file in [*PAGE.glob("*.js"), PAGE / "index.html"]:
        source = file.read_text()
        used |= set(re.findall(r"\bt\('([^']+)'", source)) | set(re.findall(r'data-text="([^"]+)"', source))
        used |= {key + ".other" for key in re.findall(r"\bcount\('([^']+)'", source)}
    assert len(used) > 100 and used - set(ENGLISH) == set()


def test_the_english_of_the_page_itself_is_that_of_the_table():
    shown = re.findall(r'data-text="([^"]+)"[^>]*>([^<]*)<', (PAGE / "index.html").read_text())
    assert len(shown) > 10 and [key for key, text in shown if ENGLISH[key] != text] == []


def settings_texts():
    """Summary, values and note of every setting, as the tool's help has them; groups with what a change does."""
    document = (TREE / "docs/reference/settings.md").read_text()
    for cells in re.findall(r"^\| `[^`]+` \| (.*?) \| (.*?) \| (.*?) \|$", document, re.M):
        summary, values, note = cells
        yield from (one for one in (summary, values, re.sub(r"^(secret|read only)(; )?", "", note)) if one)
    yield from (group[0].lower() + group[1:] for group in re.findall(r"^## (.+)$", document, re.M))
    yield from re.findall(r"Written by [^:\n]*: the camera (.+?)\.(?: |$)", document, re.M)


def test_every_language_knows_what_the_tool_says_of_its_settings():
    for name, table in TABLES.items():
        if name != "en":
            assert set(settings_texts()) - set(table["known"]) == set(), name


def test_every_setting_has_a_label():
    listing = subprocess.run([TOOL, "__complete", "words", "get", "x", ""], capture_output=True, text=True, timeout=20, check=True)
    keys = [line.split("\t")[0] for line in listing.stdout.splitlines()]
    keys = [key for key in keys if key in (TREE / "docs/reference/settings.md").read_text()]
    assert len(keys) > 20 and [key for key in keys if f"label.{key}" not in ENGLISH and "." in key] == []
