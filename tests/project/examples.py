"""The examples of a page: its console blocks, executed, and held against what the page shows.

    ```console
    $ qvpctl discover --csv >found.csv      a command behind "$ ", its other lines behind "> "
    $ wc -l found.csv                       and below it what it shows, on both streams
    4 found.csv
    ```

A line "..." stands for any lines, and "…" for anything in a line. Blocks go on in one session, with its variables and its
folder, until a new one begins:

    a block whose first command is ./run                          a shell in the tree
    a block whose first command is virtual-camera/virtual-camera shell ...    its commands run in that shell
    "<!-- cameras OPTIONS -->" in front of a block                the same without showing it, with qvpctl on the PATH
    "<!-- shell -->" in front of a block                          a shell in the tree, with qvpctl on the PATH
    "<!-- sources -->" in front of a block                        a shell in a copy of the sources, which builds them for real

"<!-- not executed: REASON -->" in front of a block leaves it out.
"""
import dataclasses
import os
import re
import shlex
import shutil
import subprocess

from script_tree import SOURCE

SHELL = "virtual-camera/virtual-camera shell"
END = "--- end of example ---"
PATIENCE = 300

LEFT_OUT = re.compile(r"^<!-- not executed: [^\n]+ -->\n+```\w+\n.*?^```$", re.M | re.S)
FENCE = re.compile(r"^(?:<!-- (cameras(?: [^\n]*)?|shell|sources) -->\n+)?```console\n(.*?)^```$", re.M | re.S)
STEP = re.compile(r"^\$ ([^\n]*\n(?:> ?[^\n]*\n)*)", re.M)


@dataclasses.dataclass
class Step:
    command: str
    shows: str
    line: int  # of the page


@dataclasses.dataclass
class Session:
    cameras: str | None  # options of the launcher; None: a plain shell
    steps: list
    builds: bool = False

    def place(self):
        if self.cameras is None:
            return ["bash"]
        return ["virtual-camera/virtual-camera", "run", *shlex.split(self.cameras), "--", "bash"]


def steps_of(block, line):
    starts = list(STEP.finditer(block))
    assert starts and starts[0].start() == 0, f"line {line}: a console block begins with a command behind '$ '"
    ends = [start.start() for start in starts[1:]] + [len(block)]
    steps = []
    for start, end in zip(starts, ends):
        command = re.sub(r"\n> ?", "\n", start.group(1)).removesuffix("\n")
        steps.append(Step(command, block[start.end() : end], line + block.count("\n", 0, start.start())))
    return steps


def begin(place, steps):
    """The session that a block begins, or None: it goes on with the one before."""
    if place is not None:
        if place.startswith("cameras"):
            return Session(place.removeprefix("cameras"), steps)
        return Session(None, steps, builds=place == "sources")
    first = steps[0]
    if first.command.startswith(SHELL):
        assert first.shows == "", f"line {first.line}: what the shell itself shows is left out"
        return Session(first.command.removeprefix(SHELL), steps[1:])
    return Session(None, steps) if first.command.startswith(("./run", "virtual-camera/virtual-camera ")) else None


def without_left_out(text):
    """As many lines as before."""
    return LEFT_OUT.sub(lambda block: "\n" * block.group().count("\n"), text)


def sessions_of(text):
    text = without_left_out(text)
    sessions = []
    for block in FENCE.finditer(text):
        steps = steps_of(block.group(2), text.count("\n", 0, block.start(2)) + 1)
        session = begin(block.group(1), steps)
        if session:
            sessions.append(session)
            continue
        assert sessions, f"line {steps[0].line}: nothing says where this block is to be run"
        sessions[-1].steps += steps
    return sessions


def unexecuted(text):
    """Blocks that show commands which nobody would execute."""
    return re.findall(r"^```(?:sh|bash|shell)\b.*", without_left_out(text), re.M)


def copy_sources(folder):
    names = [name for name in os.listdir(SOURCE) if not name.startswith(".") and name != "build"]
    for name in names:
        copy = shutil.copytree if (SOURCE / name).is_dir() else shutil.copy
        copy(SOURCE / name, folder / name)


def surroundings(session, tree):
    """The folder and the PATH of a session."""
    if not session.builds:
        return tree.top, f"{tree.environment()['PATH']}:{tree.top}/build/release"
    folder = tree.top.with_name("sources")
    folder.mkdir()
    copy_sources(folder)
    return folder, os.environ["PATH"]


def run(session, tree):
    """What each step shows, on one stream as on a terminal."""
    script = "exec 2>&1\n" + "".join(f"{step.command}\necho '{END}'\n" for step in session.steps)
    folder, path = surroundings(session, tree)
    done = subprocess.run(session.place(), input=script, cwd=folder,
                          env=tree.environment() | {"LC_ALL": "C.UTF-8", "PATH": path, "TERM": "dumb"},
                          capture_output=True, text=True, timeout=PATIENCE, check=False)
    outputs = done.stdout.split(END + "\n")
    assert outputs.pop() == "" and len(outputs) == len(session.steps), done
    return outputs


def is_alike(output, expected):
    pattern = re.escape(expected).replace(re.escape("...\n"), "(?:.*\n)*?").replace(re.escape("…"), ".*?")
    return re.fullmatch(pattern, output) is not None
