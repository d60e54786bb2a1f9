"""Every example of the README does what it shows, down to the last letter."""
import re
import subprocess

import pytest

from script_tree import SOURCE, ScriptTree

SHELL = "virtual-camera/virtual-camera shell "
END = "--- end of example ---"
PATIENCE = 120


def examples():
    """Sessions: each a list of (command, what it shows). A block without a beginning of its own goes on with the last one."""
    sessions = []
    for block in re.findall(r"^```console\n(.*?)^```$", (SOURCE / "README.md").read_text(), re.M | re.S):
        steps = [(text.split("\n", 1)[0], text.split("\n", 1)[1]) for text in re.split(r"^\$ ", block, flags=re.M)[1:]]
        if steps[0][0].startswith(("./run", "virtual-camera/")):
            sessions.append([])
        sessions[-1] += steps
    return sessions


def shown(session, tree):
    """What each command of a session shows, on one stream as on a terminal."""
    (first, _), *others = session
    commands = [first]
    if first.startswith(SHELL):
        commands = [command for command, _ in others]
        place = ["virtual-camera/virtual-camera", "run", *first.removeprefix(SHELL).split(), "--", "bash"]
    else:
        place = ["bash"]
    script = "exec 2>&1\n" + "".join(f"{command}\necho '{END}'\n" for command in commands)
    done = subprocess.run(place, input=script, cwd=tree.top, env=tree.environment() | {"LC_ALL": "C.UTF-8"},
                          capture_output=True, text=True, timeout=PATIENCE, check=True)
    outputs = done.stdout.split(END + "\n")
    assert outputs.pop() == "" and len(outputs) == len(commands), done
    return ([""] if first.startswith(SHELL) else []) + outputs


def is_alike(output, expected):
    """A line "..." stands for any lines."""
    pattern = re.escape(expected).replace(re.escape("...\n"), "(?:.*\n)*?")
    return re.fullmatch(pattern, output) is not None


def test_there_are_examples():
    assert len(examples()) >= 3
    assert "```sh" not in (SOURCE / "README.md").read_text()  # which nobody would execute


@pytest.mark.parametrize("session", examples(), ids=lambda session: session[0][0])
def test_example(session, tmp_path):
    tree = ScriptTree(tmp_path)
    tree.use_built("qvp", "qvpctl", "libvirtual_clock.so")
    tree.set_build("echo '[1/1] Linking CXX executable qvpctl'")
    for (command, expected), output in zip(session, shown(session, tree)):
        if command == session[0][0] and command.startswith(SHELL):
            assert expected == ""
            continue
        assert is_alike(output, expected), f"{command}\n--- shows\n{output}--- but should\n{expected}"


def test_the_picture_is_of_a_real_run():
    drawn = subprocess.run([SOURCE / "docs/images/draw"], capture_output=True, text=True, timeout=PATIENCE, check=True).stdout
    assert drawn == (SOURCE / "docs/images/setting-up.svg").read_text()
