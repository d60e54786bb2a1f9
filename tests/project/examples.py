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
"""
import dataclasses
import re
import shlex
import subprocess

SHELL = "virtual-camera/virtual-camera shell"
END = "--- end of example ---"
PATIENCE = 120

FENCE = re.compile(r"^(?:<!-- (cameras(?: [^\n]*)?|shell) -->\n+)?```console\n(.*?)^```$", re.M | re.S)
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
        return Session(None if place == "shell" else place.removeprefix("cameras"), steps)
    first = steps[0]
    if first.command.startswith(SHELL):
        assert first.shows == "", f"line {first.line}: what the shell itself shows is left out"
        return Session(first.command.removeprefix(SHELL), steps[1:])
    return Session(None, steps) if first.command.startswith(("./run", "virtual-camera/")) else None


def sessions_of(text):
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
    return re.findall(r"^```(?:sh|bash|shell)\b.*", text, re.M)


def run(session, tree):
    """What each step shows, on one stream as on a terminal."""
    script = "exec 2>&1\n" + "".join(f"{step.command}\necho '{END}'\n" for step in session.steps)
    programs = f"{tree.top}/build/release"
    path = f"{tree.environment()['PATH']}:{programs}"
    done = subprocess.run(session.place(), input=script, cwd=tree.top,
                          env=tree.environment() | {"LC_ALL": "C.UTF-8", "PATH": path, "TERM": "dumb"},
                          capture_output=True, text=True, timeout=PATIENCE, check=False)
    outputs = done.stdout.split(END + "\n")
    assert outputs.pop() == "" and len(outputs) == len(session.steps), done
    return outputs


def is_alike(output, expected):
    pattern = re.escape(expected).replace(re.escape("...\n"), "(?:.*\n)*?").replace(re.escape("…"), ".*?")
    return re.fullmatch(pattern, output) is not None
