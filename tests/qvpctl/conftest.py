"""Cameras for the tests that run on the virtual LAN; the others have networks of their own."""
import pytest
from cameras import DAEMON, living
from support.camera import Lan


@pytest.fixture(scope="module")
def whole_lan():
    return Lan(["--daemon", DAEMON])


@pytest.fixture
def lan(whole_lan):
    yield whole_lan
    whole_lan.stop_all()


@pytest.fixture
def camera(lan):
    return living(lan.camera())
