"""scripts/update_documents makes the documents what they are, whatever they were before."""
import shutil
import subprocess

from script_tree import BUILT, SOURCE

PATIENCE = 300
MADE = ("docs/protocol.md", "docs/qvpctl.1", "docs/man/qvpctl-get.1", "docs/man/qvp-platform.3", "docs/reference/settings.md",
        "docs/reference/store-keys.md", "docs/reference/time-zones.md", "docs/reference/exit-status-and-json.md")


def spoil(page):
    """Without what was made: one line of every table and dump, or all of a manual page."""
    if page.suffix == ".md":
        lines = page.read_text().splitlines(keepends=True)
        made = [i + 1 for i, line in enumerate(lines) if line.startswith(("<!-- table", "<!-- layout", "<!-- exchange"))]
        page.write_text("".join(line for i, line in enumerate(lines) if i not in made))
    else:
        page.write_text("")


def test_everything_is_made_anew(tmp_path):
    tree = tmp_path / "tree"
    shutil.copytree(SOURCE, tree, ignore=shutil.ignore_patterns("build", ".*"), symlinks=True)
    (tree / "build").mkdir()
    (tree / "build/release").symlink_to(BUILT)
    for name in MADE:
        spoil(tree / name)
        assert (tree / name).read_text() != (SOURCE / name).read_text()
    (tree / "docs/man/qvpctl-gone.1").write_text("")
    subprocess.run([tree / "scripts/update_documents"], timeout=PATIENCE, check=True)
    different = subprocess.run(["diff", "-r", "-q", SOURCE / "docs", tree / "docs"], capture_output=True, text=True, check=False)
    assert different.stdout + different.stderr == ""
