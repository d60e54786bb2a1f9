"""Runs the virtual camera's launcher, and scripts on the LAN that it lays."""
import contextlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

import pytest

TREE = pathlib.Path(__file__).parents[2]
LAUNCHER = str(TREE / "virtual-camera/virtual-camera")
CAMERA = shlex.quote(str(TREE / "virtual-camera/camera"))
DISCOVER = shlex.join([sys.executable, str(TREE / "tests/virtual_camera/broadcast_discovery.py")])
PAGE = shlex.join([sys.executable, str(TREE / "tests/virtual_camera/web_page.py")])
DAEMON = ["--daemon", os.environ["QVP_DAEMON"]] if "QVP_DAEMON" in os.environ else []
PATIENCE = 120

AS_NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
USERS = [pytest.param([], id="caller"),
         pytest.param(AS_NOBODY, id="nobody", marks=pytest.mark.skipif(os.getuid() != 0, reason="only root becomes nobody"))]

# What the scripts below share: a wait on a condition, and the camera's folder.
PROLOGUE = f"""
set -eu
camera() {{ {CAMERA} "$@"; }}
until_true() {{ for _ in $(seq 3000); do if "$@" 2>/dev/null; then return; fi; sleep 0.02; done; echo "never: $*" >&2; exit 99; }}
one=$QVP_LAN/1
store=$one/root/etc/qvp/camera.ini
"""


@contextlib.contextmanager
def started(*arguments, user=(), **options):
    """The process of the launcher, which is gone behind the block, however that ends."""
    with subprocess.Popen([*user, LAUNCHER, *arguments], **options) as launcher:
        try:
            yield launcher
        finally:
            launcher.kill()


def launch(*arguments, user=()):
    return subprocess.run([*user, LAUNCHER, *arguments], capture_output=True, timeout=PATIENCE)


def in_lan(script, *options, user=()):
    """What a script prints that runs on a LAN with one camera, or as many as the options say."""
    done = launch("run", *DAEMON, *options, "--", "bash", "-c", PROLOGUE + script, user=user)
    assert done.returncode == 0, done.stderr.decode(errors="replace")
    return done.stdout.decode()


def replies(output):
    """The discovery replies of an output, by address."""
    return {address: bytes.fromhex(data) for address, data in re.findall(r"^([0-9.]+) ([0-9a-f]{1010})$", output, re.M)}


def text(data, offset, width):
    return data[offset:offset + width].split(b"\0")[0].decode()


def processes_with(mark):
    """Their command lines; a process that is about to become another program shows no environment for a moment."""
    found = []
    for path in pathlib.Path("/proc").glob("[0-9]*/environ"):
        try:
            if mark.encode() in path.read_bytes():
                found.append((path.parent / "cmdline").read_bytes().replace(b"\0", b" "))
        except OSError:
            pass
    return found


def wait_until(condition):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < deadline
        time.sleep(0.02)


def wait_until_gone(mark):
    wait_until(lambda: not processes_with(mark))


def interfaces():
    listing = subprocess.run(["ip", "-oneline", "link"], capture_output=True, check=True).stdout.decode()
    return re.findall(r"^\d+: ([^:@]+)", listing, re.M)
