"""Cameras for the dissector's captures."""
import os
import sys
from pathlib import Path

import pytest

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "tests/end_to_end"))

from support.camera import Lan  # noqa: E402

DAEMON = os.environ.get("QVP_DAEMON") or str(TREE / "build/release/qvp")


@pytest.fixture(scope="module")
def whole_lan():
    return Lan(["--daemon", DAEMON])
