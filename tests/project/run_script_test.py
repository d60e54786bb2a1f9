"""./run shows that building goes on, and what a run of tests comes to of which a part was left out."""
import json
import os
import pty
import subprocess

import pytest
from script_tree import BUILT, NINJA, PATIENCE, SOURCE, ScriptTree, write_script

WHOLE_SUITE = str(SOURCE / "tests/support/whole_suite")


@pytest.fixture
def tree(tmp_path):
    """A place where a virtual camera is always found."""
    tree = ScriptTree(tmp_path)
    write_script(tree.top / "scripts/with_namespaces", 'exec "$@"')
    (tree.top / "virtual-camera").unlink()
    write_script(tree.top / "virtual-camera/virtual-camera", "echo a camera")
    return tree


def on_terminal(tree, *command):
    ours, theirs = pty.openpty()
    process = subprocess.Popen(command, cwd=tree.top, env=tree.environment(), stdin=theirs, stdout=theirs, stderr=theirs)
    os.close(theirs)
    output = b""
    try:
        while data := os.read(ours, 4096):
            output += data
    except OSError:  # how Linux tells that the other side is closed
        pass
    os.close(ours)
    assert process.wait(PATIENCE) == 0
    return output.decode()


# --- What building looks like -----------------------------------------------------------------------------------------

def test_a_terminal_has_one_line_that_is_rewritten(tree):
    tree.set_build(NINJA)
    first, rest = on_terminal(tree, "./run").split("\r\n", 1)
    assert [state.rstrip() for state in first.split("\r")] == ["Building"] + [f"Building {step} of 8" for step in range(1, 9)]
    assert rest.startswith("Starting a virtual camera")


def test_a_shorter_state_covers_a_longer_one(tree):
    tree.set_build("echo '[9/1000] a'; echo '[9/9] b'")
    states = on_terminal(tree, "./run").split("\r\n")[0].split("\r")
    assert len(states[2]) >= len(states[1].rstrip()) == len("Building 9 of 1000")


def test_a_file_has_a_line_a_quarter(tree):
    tree.set_build(NINJA)
    lines = tree.run("./run").stdout.splitlines()
    assert lines[:5] == ["Building", "Building 2 of 8", "Building 4 of 8", "Building 6 of 8",
                         "Starting a virtual camera, and looking for it"]


def test_the_steps_are_counted_whatever_the_caller_likes_ninja_to_print(tree, monkeypatch):
    monkeypatch.setenv("NINJA_STATUS", "%p ")
    tree.set_build('case $NINJA_STATUS in "[%f/%t] ") echo "[1/2] a" ;; esac')
    assert "Building 1 of 2" in tree.run("./run").stdout


def test_nothing_to_build_is_one_line(tree):
    tree.set_build("echo 'ninja: no work to do.'")
    assert tree.run("./run").stdout.startswith("Building\nStarting")
    assert on_terminal(tree, "./run").startswith("Building\r\nStarting")


def test_the_whole_log_is_kept(tree):
    tree.set_build(NINJA + "echo a warning >&2")
    assert tree.run("./run").returncode == 0
    log = (tree.top / "build/run.log").read_text().splitlines()
    assert log[0] == "-- Configured" and log[1].startswith("[1/8]") and log[8].startswith("[8/8]") and log[9] == "a warning"


def test_a_failed_build_shows_the_last_lines(tree):
    tree.set_build("seq -f 'line %g' 100; echo 'error: no semicolon' >&2; exit 1")
    done = tree.run("./run")
    assert done.returncode == 1 and "Starting" not in done.stdout
    assert done.stdout.splitlines()[-2:] == ["error: no semicolon",
                                             "run: the build failed; all of its output is in build/run.log"]
    assert "line 100" in done.stdout and "line 60" not in done.stdout
    assert "line 1\n" in (tree.top / "build/run.log").read_text()


def test_a_failed_configuration_fails(tree):
    tree.program("cmake", "echo no compiler; exit 1")
    done = tree.run("./run")
    assert done.returncode == 1 and "no compiler" in done.stdout
    assert tree.called("cmake") == ["cmake --preset release"]


@pytest.mark.parametrize("arguments", [(), ("lo",), ("web",)])
def test_a_tree_where_build_is_a_file_is_told(tree, arguments):
    (tree.top / "build").write_text("")
    done = tree.run("./run", *arguments)
    assert done.returncode == 1 and f"run: {tree.top}/build cannot be written (" in done.stdout
    assert tree.calls.read_text() == ""


# --- What a part left out makes of the whole --------------------------------------------------------------------------

@pytest.mark.parametrize(("program", "status"), [
    ("echo '[  PASSED  ] 1 test.'", 0),
    ("echo '[  PASSED  ] 1 test.'; echo '[  SKIPPED ] 1 test.'", 77),
    ("echo '[  SKIPPED ] 1 test.' >&2; exit 1", 1),
    ("kill -SEGV $$", 139)])
def test_a_suite_with_a_skipped_case_is_skipped(program, status):
    done = subprocess.run([WHOLE_SUITE, "sh", "-c", program], capture_output=True, timeout=PATIENCE, check=False)
    assert done.returncode == status
    assert ("SKIPPED" in program) == (b"[  SKIPPED ] 1 test.\n" in done.stdout)


def test_tests_that_need_namespaces_can_be_skipped():
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILT, capture_output=True, timeout=PATIENCE, check=True)
    needy = {test["name"]: {item["name"]: item["value"] for item in test["properties"]}
             for test in json.loads(listing.stdout)["tests"]
             if test["name"].startswith(("end_to_end.", "model.", "qvpctl_", "virtual_camera.", "platform_linux."))}
    assert {"end_to_end.discovery", "model.differential", "qvpctl_discover", "qvpctl_setup",
            "virtual_camera.board"} <= set(needy)
    assert [name for name, properties in needy.items() if properties.get("SKIP_RETURN_CODE") != 77] == []
