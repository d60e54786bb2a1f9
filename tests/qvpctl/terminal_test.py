"""What people see and type: bars, colours, prompts, and what Ctrl-C leaves.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/terminal_test.py
"""
import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios

import pyte
import pytest
from cameras import LONGER, TOOL, get, living, mac, patience, qvpctl
from fleet_files import PATIENCE as ASKED_OFTEN
from fleet_files import write
from support.waiting import PATIENCE, wait_until


def start(*arguments, columns=80, rows=24, **environment):
    pid, terminal = pty.fork()
    if pid == 0:
        fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        os.execve(TOOL, [TOOL, *arguments, *patience(arguments)], {**os.environ, "TERM": "xterm", **environment})
    return pid, terminal


def read_until(terminal, pattern):
    output = ""
    while not re.search(pattern, output):
        assert select.select([terminal], [], [], PATIENCE)[0], output
        output += os.read(terminal, 4096).decode()
    return output


def finish(pid, terminal):
    """How it ended, and the rest of what it wrote."""
    output = b""
    try:
        while part := os.read(terminal, 4096):
            output += part
    except OSError:  # the other end is closed
        pass
    os.close(terminal)
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), output.decode()


def on_terminal(*arguments, **environment):
    return finish(*start(*arguments, **{"QVPCTL_PASSWORD": "admin", **environment}))


# --- Bars, colours, links ---------------------------------------------------------------------------------------------

def test_a_terminal_shows_bars_and_links(camera):
    status, output = on_terminal("scan", mac(camera))
    assert status == 0
    assert "\r\x1b[K[....................]  0 s of up to " in output  # while the camera is away, and wiped away afterwards
    assert output.index("\r\x1b[K\x1b[1mSIGNAL\x1b[0m") < output.index("\u25a0\u25a0\u25a0\u25a0\u25a0 81%  Workshop")
    url = f"http://{camera.address}/"
    assert f"\x1b]8;;{url}\x1b\\{url}\x1b]8;;\x1b\\" in on_terminal("discover", "--expect", "1")[1]
    assert "\x1b[1;31mqvpctl:\x1b[0m no camera" in on_terminal("get", "Nobody", "--wait", "0.3")[1]


@pytest.mark.parametrize("environment", [{"NO_COLOR": "1"}, {"TERM": "dumb"}])
def test_a_terminal_without_colours(camera, environment):
    status, output = on_terminal("discover", "--expect", "1", **environment)
    assert (status, "\x1b" in output, f"http://{camera.address}/" in output) == (0, False, True)


def test_a_bar_is_no_longer_than_a_line(camera):
    status, output = on_terminal("scan", mac(camera), columns=20)
    assert status == 0
    assert "\r\x1b[K[..................\r" in output


@pytest.mark.parametrize("arguments", [["discover", "--expect", "1"], ["scan"]])
def test_a_terminal_gets_json_and_nothing_else(camera, arguments):
    target = [] if "discover" in arguments else [mac(camera)]
    status, output = on_terminal(*arguments, *target, "--json")
    assert status == 0
    assert all(isinstance(json.loads(line), dict) for line in output.splitlines())


def test_many_cameras_have_a_line_each(lan, tmp_path):
    """The second waits until the first is verified; in the end the table stands alone on the screen."""
    cameras = [living(camera) for camera in lan.cameras(2)]
    site = write(tmp_path, "mac,name", *((camera, "Hall") for camera in cameras))
    status, output = on_terminal("apply", site, *ASKED_OFTEN)
    screen = pyte.Screen(80, 24)
    stream, shown = pyte.Stream(screen), set()
    first, second = [mac(camera) for camera in cameras]
    for part in re.split(r"(?= done)", output):
        stream.feed(part)
        lines = {line[:17]: line[19:].rstrip() for line in screen.display}
        shown.add((lines.get(first, "")[:4], lines.get(second, "")[:4]))
    assert {("wait", "wait"), ("[...", "wait"), ("back", "wait"), ("veri", "wait"), ("veri", "[...")} <= shown, shown
    assert status == 0
    left = [line.split() for line in screen.display if line.strip()]
    assert left[0] == ["CAMERA", "ADDRESS", "NAME", "RESULT", "WHY"] and len(left) == 4, left


def test_the_line_of_a_camera_that_is_away_moves(camera, tmp_path):
    gate = camera.gate("/etc/init.d/ipv4")
    pid, terminal = start("apply", write(tmp_path, "mac,name", (camera, "Hall")), *ASKED_OFTEN, QVPCTL_PASSWORD="admin")
    output = read_until(terminal, r"\]  [1-9]\d* s of up to 30 s  away: ")
    gate.wait()
    gate.open()
    status, rest = finish(pid, terminal)
    assert (status, "]  0 s of up to 30 s" in output, "1 of 1 done" in rest) == (0, True, True)


def test_a_small_terminal_shows_the_cameras_that_something_is_done_with(lan, tmp_path):
    """Five of them do not fit, so those that wait or are done are left out; a line is no wider than the terminal."""
    cameras = [living(camera) for camera in lan.cameras(5)]
    site = write(tmp_path, "mac,name", *((camera, "Hall") for camera in cameras))
    status, output = on_terminal("apply", site, *ASKED_OFTEN, columns=40, rows=5)
    assert status == 0
    frames = [frame.splitlines() for frame in re.findall(r"(?:\x1b\[\d+A\r\x1b\[J|^)((?:[^\x1b]*\n)\d of 5 done\r?\n)", output)]
    assert max(len(frame) for frame in frames) == 4
    assert {line[19:] for frame in frames for line in frame if line[19:].startswith(("wait", "veri"))} == set()
    assert all(len(line) < 40 for frame in frames for line in frame)
    assert any("[..." in line for frame in frames for line in frame) and "5 of 5 done" in output


# --- Prompts ----------------------------------------------------------------------------------------------------------

def echoes(terminal):
    return bool(termios.tcgetattr(terminal)[3] & termios.ECHO)


def at_a_prompt(command, *typed):
    """Runs a shell command, types at each of its prompts, and returns what it showed; the terminal has to echo afterwards."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execve("/bin/sh", ["sh", "-c", f"trap : INT; {command}; echo status $?; read end"], {**os.environ, "Q": TOOL})
    output = ""
    for answer, prompt in zip(typed, ["assword", "Again: "]):
        output += read_until(terminal, prompt)
        wait_until(lambda: not echoes(terminal), "the prompt")
        os.write(terminal, answer)
    output += read_until(terminal, "status ")
    assert echoes(terminal)
    os.write(terminal, b"\n\n")
    return output + finish(pid, terminal)[1]


def asked(camera):
    return " ".join([mac(camera), *LONGER])


def test_a_password_is_asked_for_without_echo(camera):
    output = at_a_prompt(f"$Q verify {asked(camera)}", b"admin\n")
    assert "Password of admin: \r\n" in output and "status 0" in output
    assert output.count("admin") == 1 + output.count("administrator")


@pytest.mark.parametrize("key", [b"\x03", b"\x04"], ids=["Ctrl-C", "Ctrl-D"])
@pytest.mark.parametrize("command", ["verify", "passwd"])
def test_giving_up_at_a_prompt(camera, command, key):
    output = at_a_prompt(f"$Q {command} {asked(camera)}", key)
    assert "qvpctl:" in output and "nothing was entered" in output and "status 3" in output
    assert qvpctl("verify", mac(camera)).status == 0


def test_a_new_password_is_asked_for_twice(camera):
    command = f"QVPCTL_PASSWORD=admin $Q passwd {asked(camera)}"
    assert "are not the same" in at_a_prompt(command, b"one\n", b"other\n")
    assert "must not be empty" in at_a_prompt(command, b"\n", b"\n")
    assert "status 0" in at_a_prompt(command, b"new\n", b"new\n")
    assert qvpctl("verify", mac(camera), password="new").status == 0


# --- Stops in the middle ----------------------------------------------------------------------------------------------

def test_a_stop_while_the_camera_is_away(camera):
    camera.replace_script("/usr/sbin/msger", "#!/bin/sh\nexec sleep 5\n")
    pid, terminal = start("set", mac(camera), "name=Gate", "http-port=81", QVPCTL_PASSWORD="admin")
    output = read_until(terminal, " s of up to ")
    os.kill(pid, signal.SIGINT)
    status, rest = finish(pid, terminal)
    assert status == 6
    assert (output + rest).splitlines()[-1].endswith("what was sent to the camera is not undone, and what was to follow is not "
                                                     "sent")


def test_a_reader_that_leaves_does_not_break_a_change(camera):
    script = f"{TOOL} set {asked(camera)} time.zone=Asia/Tokyo name=Pipe 2>&1 | true"
    subprocess.run(["bash", "-c", script], env={**os.environ, "QVPCTL_PASSWORD": "admin"}, timeout=120, check=True)
    assert (get(camera, "name"), get(camera, "time.zone")) == ("Pipe", "Asia/Tokyo")
