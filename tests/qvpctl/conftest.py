"""Cameras for the tests that run on the virtual LAN, and networks of their own for the others."""
import pytest
from cameras import DAEMON, TOOL, living
from output_schema import check_output
from support.camera import Lan
from veth_network import Network


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


class CheckedNetwork(Network):
    """What the tool prints with --json is held against the schema."""

    def run_tool(self, *arguments, **options):
        done = super().run_tool(*arguments, **options)
        if "--json" in arguments and "stdout" not in options:
            check_output(arguments[0], done.stdout.decode(), done.stderr.decode())
        return done


@pytest.fixture
def network():
    result = CheckedNetwork(TOOL)
    yield result
    result.close()
