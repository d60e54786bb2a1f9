"""What the tests share that run qvpctl against virtual cameras: the tool, and what a camera has to show for it."""
import os
import re
import signal
import subprocess
import sys
import threading
from contextlib import contextmanager
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "tests/end_to_end"))

from output_schema import check_output  # noqa: E402
from support.waiting import wait_until  # noqa: E402

TOOL = os.environ.get("QVPCTL") or str(TREE / "build/release/qvpctl")
DAEMON = os.environ.get("QVP_DAEMON") or str(TREE / "build/release/qvp")
CODES = {1: "not-found", 2: "bad-value", 3: "this-machine", 4: "credentials-refused", 5: "refused", 6: "unverified"}
MARK = "MARKED-key"  # long enough for WPA, and no WEP key
LONGER = ["--wait", "10"]  # for what ends as soon as a camera answers: on a busy machine it may take its time


class Result:
    """How a run ended. With --json, every line of both streams has to be an object."""

    def __init__(self, arguments, done):
        self.status, self.out, self.err = done.returncode, done.stdout, done.stderr
        if "--json" in arguments:
            self.records, self.notes = check_output(arguments[0], self.out, self.err)
            self.error = self.notes[-1]["error"] if self.notes and "error" in self.notes[-1] else None

    def __repr__(self):
        return f"status {self.status}\n{self.out}{self.err}"


def patience(arguments):
    """Only of one that is named by its MAC, and of as many as are expected, is the end of the answers known."""
    is_named = len(arguments) > 1 and re.fullmatch(r"(\w\w:){5}\w\w", arguments[1])
    return LONGER if (is_named or "--expect" in arguments) and "--wait" not in arguments else []


def qvpctl(*arguments, password="admin", **environment):
    variables = {**os.environ, "QVPCTL_PASSWORD": password, **environment}
    if password is None:
        del variables["QVPCTL_PASSWORD"]
    done = subprocess.run([TOOL, *arguments, *patience(arguments)], stdin=subprocess.DEVNULL, capture_output=True, timeout=120, env=variables,
                          start_new_session=True)  # no terminal to ask at
    done.stdout, done.stderr = done.stdout.decode(), done.stderr.decode()
    return Result(arguments, done)


def assert_fails(status, *arguments, words, code=None, **options):
    """In both forms: the status, nothing on standard output, and the reason on standard error."""
    plain = qvpctl(*arguments, **options)
    assert (plain.status, plain.out) == (status, ""), plain
    assert plain.err.splitlines()[-1].startswith("qvpctl: ") or "\n  " in plain.err
    assert words in plain.err
    form = qvpctl(*arguments, "--json", **options)
    assert (form.status, form.error["code"]) == (status, code or CODES[status]), form
    assert words in form.error["message"]


def living(camera):
    camera.let_its_address_change()
    return camera


@contextmanager
def every_second(act):
    """Does that meanwhile."""
    ended = threading.Event()

    def repeat():
        while not ended.wait(1):
            act()

    thread = threading.Thread(target=repeat)
    thread.start()
    try:
        yield
    finally:
        ended.set()
        thread.join()


def reporting(camera):
    """The camera reports every second meanwhile; by itself it does so every thirty."""
    return every_second(lambda: camera.signal(signal.SIGALRM))


def mac(camera):
    return camera.mac.hex(":")


PLAIN, JSON = [], ["--json"]


def run(form, *arguments, status=0, **options):
    """In one of the forms; it has to end with that status."""
    result = qvpctl(*arguments, *form, **options)
    assert result.status == status, (arguments, result)
    tells_of_each = arguments[0] in ("plan", "diff", "export", "apply", "revert")
    assert status in (0, 6) or result.out == "" or form == JSON or tells_of_each, result
    return result


def columns(table):
    """The rows of a table, each {heading: text}."""
    heading, *rows = table.splitlines()
    starts = [match.start() for match in re.finditer(r"\S+", heading)]
    cut = [slice(start, end) for start, end in zip(starts, [*starts[1:], None])]
    return [{heading[part].strip(): row[part].strip() for part in cut} for row in rows]


def value(form, camera, key, **options):
    result = run(form, "get", mac(camera), key, **options)
    return result.records[0]["value"] if form else result.out.removesuffix("\n")


def discover(form, *options):
    """{MAC: (address, name, notes)} of what was found."""
    result = run(form, "discover", *options)
    if form:
        return {found["mac"]: (found["address"], found["name"], found["problems"]) for found in result.records}
    notes = lambda row: [] if row.get("NOTE", "-") == "-" else row["NOTE"].split(",")  # noqa: E731
    return {row["MAC"]: (row["ADDRESS"], row["NAME"], notes(row)) for row in columns(result.out)}


def get(camera, key, **options):
    result = qvpctl("get", mac(camera), key, **options)
    assert (result.status, result.err) == (0, ""), result
    return result.out.removesuffix("\n")


def assert_set(camera, *assignments, **options):
    """Changes, and then again: the second time there is nothing to do and nothing to say."""
    result = qvpctl("set", mac(camera), *assignments, **options)
    assert (result.status, result.out) == (0, ""), result
    store = camera.store()
    if any(assignment.startswith("wifi.") for assignment in assignments):  # the one command in the background
        wait_until(lambda: any("reset_wifi" in command for command in camera.commands()), "the wireless reset")
    camera.forget_commands()
    again = qvpctl("set", mac(camera), *assignments, **options)
    assert (again.status, again.out, again.err) == (0, "", ""), again
    assert (camera.store(), camera.board_log()) == (store, [])
    return result
