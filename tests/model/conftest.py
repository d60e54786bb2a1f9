"""The daemon beside a model of it. Like the end-to-end tests, pytest runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/model
"""
import os
import sys
from pathlib import Path

import pytest

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "end_to_end")]

from support.camera import TREE, Lan  # noqa: E402

QVP = Path(os.environ.get("QVP_DAEMON") or TREE / "build/release/qvp")
LIBRARY = Path(os.environ.get("QVP_RECORDING_BOARD") or TREE / "build/release/tests/model/librecording_board.so")


def pytest_configure():
    if "QVP_LAN" not in os.environ:
        raise pytest.UsageError("to be run inside the virtual LAN: virtual-camera run -n 0 -- python3 -m pytest ...")
    for file in (QVP, LIBRARY):
        if not file.exists():
            raise pytest.UsageError(f"{file} is not built")


@pytest.fixture
def daemon():
    from daemon import Daemon
    lan = Lan(["--daemon", str(QVP)])
    daemon = Daemon(lan.camera("--no-daemon"), LIBRARY)
    yield daemon
    try:
        daemon.stop()
    finally:
        daemon.close()
        lan.stop_all()
