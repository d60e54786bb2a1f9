"""End to end: the real daemon in virtual cameras, real datagrams, real signals, real board scripts.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/end_to_end/discovery_test.py

QVP_DAEMON names another daemon than build/release/qvp, and QVP_EMULATOR the program and its options that run it.
"""
import os
import sys
from pathlib import Path

import pytest

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

from support.camera import TREE, Lan  # noqa: E402
from support.tool import Listener, Tool  # noqa: E402


DAEMON = Path(os.environ.get("QVP_DAEMON") or TREE / "build/release/qvp")
EMULATOR = os.environ.get("QVP_EMULATOR", "")


def pytest_configure():
    if "QVP_LAN" not in os.environ:
        raise pytest.UsageError("to be run inside the virtual LAN: virtual-camera run -n 0 -- python3 -m pytest ...")
    if not os.access(DAEMON, os.X_OK):
        preset = DAEMON.parent.name
        raise pytest.UsageError(f"{DAEMON} is not built: cmake --preset {preset} && cmake --build --preset {preset}")


@pytest.fixture(scope="session")
def whole_lan():
    return Lan(["--daemon", str(DAEMON), *(["--emulator", EMULATOR] if EMULATOR else [])])


@pytest.fixture
def lan(whole_lan):
    yield whole_lan
    whole_lan.stop_all()


@pytest.fixture
def camera(lan):
    return lan.camera()


@pytest.fixture
def tool():
    tool = Tool()
    yield tool
    tool.close()


@pytest.fixture
def listener():
    listener = Listener()
    yield listener
    listener.close()
