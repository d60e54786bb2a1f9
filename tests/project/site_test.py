"""The documents as a site: it builds, no link is dead, every page is in its contents, nothing comes from another host."""
import html.parser
import pathlib
import re
import subprocess
import urllib.parse

import pytest
from script_tree import SOURCE

PATIENCE = 300
LOADED = {("img", "src"), ("script", "src"), ("link", "href"), ("iframe", "src"), ("source", "src"), ("source", "srcset"),
          ("img", "srcset"), ("object", "data"), ("embed", "src"), ("video", "src"), ("audio", "src"), ("form", "action")}
NAMES_ONLY = {"canonical", "next", "prev"}  # of <link>: loads nothing
FOREIGN = re.compile(r"(?:[a-z][a-z0-9+.-]*:)?//", re.I)
STYLE_LOADS = re.compile(r"(?:url\(|@import)\s*['\"]?\s*([^'\")\s;]+)")
OWN = ("build", ".git", ".cache")


class Page(html.parser.HTMLParser):
    def __init__(self, file):
        super().__init__()
        self.anchors, self.links, self.loads, self.styles = set(), [], [], []
        self.in_style = False
        self.feed(file.read_text())

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.in_style = tag == "style"
        self.anchors |= {values[name] for name in ("id", "name") if values.get(name)}
        self.styles.append(values.get("style") or "")
        for name, value in attributes:
            if (tag, name) in LOADED and values.get("rel") not in NAMES_ONLY:
                self.loads.append(value)
            elif name in ("href", "src"):
                self.links.append(value)

    def handle_data(self, data):
        if self.in_style:
            self.styles.append(data)


@pytest.fixture(scope="module", name="site")
def built_site(tmp_path_factory):
    folder = tmp_path_factory.mktemp("documents") / "site"
    built = subprocess.run([SOURCE / "scripts/build_site", folder], capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert built.returncode == 0, built.stdout + built.stderr
    return folder


@pytest.fixture(scope="module", name="pages")
def parsed_pages(site):
    return {file: Page(file) for file in site.rglob("*.html")}


def is_foreign(target):
    return FOREIGN.match(target) is not None


def is_elsewhere(target):
    return urllib.parse.urlsplit(target).scheme != "" or is_foreign(target)


def dead(file, target, pages, site):
    """What is wrong with a link, or None."""
    parts = urllib.parse.urlsplit(target)
    path = urllib.parse.unquote(parts.path)
    goal = (site / path.lstrip("/") if path.startswith("/") else file.parent / path).resolve() if path else file
    if goal.is_dir():
        goal /= "index.html"
    if not goal.is_file():
        return f"{file.relative_to(site)}: {target} leads nowhere"
    if parts.fragment and goal in pages and urllib.parse.unquote(parts.fragment) not in pages[goal].anchors:
        return f"{file.relative_to(site)}: {target} has no such anchor"
    return None


def test_no_link_is_dead(site, pages):
    faults = [fault for file, page in pages.items() for target in page.links
              if not is_elsewhere(target) and (fault := dead(file, target, pages, site))]
    assert faults == []


def test_there_is_a_page_for_every_document(site, pages):
    documents = {page.relative_to(SOURCE).as_posix() for folder in ("ansible", "docs", "packaging", "virtual-camera", "wireshark")
                 for page in (SOURCE / folder).rglob("*.md")}
    documents |= {page.name for page in SOURCE.glob("*.md")}
    contents = {line.rsplit(": ", 1)[-1].strip() for line in (SOURCE / "mkdocs.yml").read_text().splitlines()}
    assert documents - contents == set(), "not in the contents of mkdocs.yml"
    assert {document.removesuffix(".md") for document in documents if not document.endswith(("README.md", "index.md"))} <= {
        file.relative_to(site).as_posix().removesuffix(".html") for file in pages}


def test_it_can_be_searched(site):
    assert "duplicate-address" in (site / "search/search_index.json").read_text()


def test_what_is_loaded_is_in_the_site(site, pages):
    loads = [(file, target) for file, page in pages.items() for target in page.loads]
    for file in [*site.rglob("*.css"), *site.rglob("*.svg"), *pages]:
        style = " ".join(pages[file].styles) if file in pages else file.read_text()
        loads += [(file, target) for target in STYLE_LOADS.findall(style) if not target.startswith(("data:", "#"))]
    assert len(loads) > len(pages)
    assert [load for load in loads if is_foreign(load[1])] == []
    assert [fault for file, target in loads if (fault := dead(file, target, pages, site))] == []


def slug(heading):
    """The anchor that repository hosts give a heading."""
    text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).replace("`", "").strip().lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def documents_of_the_tree():
    return [page for page in sorted(SOURCE.rglob("*.md")) if page.relative_to(SOURCE).parts[0] not in OWN]


def prose(page):
    """Without what only shows how something would be written."""
    return re.sub(r"^```.*?^```$|`[^`\n]*`", "", page.read_text(), flags=re.M | re.S)


@pytest.mark.parametrize("page", documents_of_the_tree(), ids=lambda page: page.relative_to(SOURCE).as_posix())
def test_links_of_the_tree(page):
    """Of every document, in the site or not, as a reader of the tree follows them."""
    faults = []
    for target in re.findall(r"\]\(([^)\s]+)\)", prose(page)):
        path, _, anchor = target.partition("#")
        goal = pathlib.Path(page.parent / path) if path else page
        if is_elsewhere(target):
            continue
        if not goal.exists():
            faults.append(target)
        elif anchor and anchor not in {slug(heading) for heading in re.findall(r"^#+ (.*)$", goal.read_text(), re.M)}:
            faults.append(target)
    assert faults == []
