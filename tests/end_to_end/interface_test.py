"""The served interface goes away, comes back, or gets another name, while the daemon serves it."""
import signal
import subprocess

import pytest
from support.camera import SCRIPT
from support.requests import discovery
from support.waiting import wait_until
from support.wire import EVERYONE, request


def take_interface_away(camera):
    subprocess.run(["ip", "link", "delete", f"camera{camera.number}"], check=True)


def bring_interface_back(camera, mac):
    camera.mac = mac
    init = (camera.folder / "init.pid").read_text().strip()
    subprocess.run(["ip", "link", "add", f"camera{camera.number}", "type", "veth", "peer", "name", "eth0", "address",
                    mac.hex(":"), "netns", init], check=True)
    camera.run("ip", "link", "set", "eth0", "up")
    camera.run("ip", "address", "add", f"{camera.address}/15", "dev", "eth0")
    camera.plug_in()
    subprocess.run(["ip", "neigh", "flush", "to", camera.address], check=True)  # who had the address before


def report(daemon, count):
    """Has it send a presence report, and waits until it has tried."""
    daemon.signal(signal.SIGALRM)
    wait_until(lambda: daemon.trace().count("[general_report]") >= count, f"report {count}")
    traced = daemon.trace().count("Ignore signal")
    daemon.signal(signal.SIGQUIT)  # one signal after the other: this one waits for the report's end
    wait_until(lambda: daemon.trace().count("Ignore signal") > traced, "the report's end")


AS_ROOT = []
AS_A_SERVICE = ["setpriv", "--bounding-set", "-net_raw,-net_admin", "--inh-caps", "-net_raw,-net_admin"]


@pytest.mark.parametrize("rights", [AS_ROOT, AS_A_SERVICE], ids=["root", "service"])
def test_an_interface_that_is_made_again(tool, lan, rights):
    camera = lan.camera("--no-daemon")
    run = camera.start_daemon("eth0", prefix=rights).wait_for_start()
    assert len(tool.ask(camera, discovery(camera))) == 505
    take_interface_away(camera)
    report(run, 2)  # the first was that of the start
    bring_interface_back(camera, bytes.fromhex("025156aa0001"))
    report(run, 3)
    wait_until(lambda: "qvp(eth0): the interface is there again\n" in run.trace(), "the interface")
    assert len(tool.ask(camera, discovery(camera))) == 505
    assert tool.ask(camera, request(0x00A1), EVERYONE)[6:12] == camera.mac


def test_its_report_goes_out_at_once(listener, camera):
    take_interface_away(camera)
    report(camera, 2)
    bring_interface_back(camera, camera.mac)
    camera.signal(signal.SIGALRM)
    while (data := listener.report(camera))[2:4] != b"\x02\x00":  # the third: the second went nowhere
        assert data[2:4] == b"\x00\x00"
    assert data[12:16] == bytes(map(int, camera.address.split(".")))


HOLDER = """
import socket, sys
held = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
held.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, b"eth0")
held.bind(("", 62976))
print("held", flush=True)
sys.stdin.read()
"""


def test_that_it_cannot_be_served_is_told_once(tool, camera):
    take_interface_away(camera)
    report(camera, 2)
    bring_interface_back(camera, camera.mac)
    with subprocess.Popen([SCRIPT, "exec", str(camera.number), "--", "/usr/bin/python3", "-c", HOLDER],
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as holder:
        assert holder.stdout.readline() == b"held\n"
        report(camera, 3)
        report(camera, 4)
    told = "qvp(eth0): the interface is there again, but cannot be served: Address already in use\n"
    assert camera.trace().count(told) == 1
    report(camera, 5)
    assert camera.trace().count("qvp(eth0): the interface is there again\n") == 1
    tool.assert_in_step(camera)
    assert camera.trace().count("qvp(eth0): the interface") == 2


def test_an_interface_with_another_name(tool, camera):
    camera.run("ip", "link", "set", "eth0", "down")
    camera.run("ip", "link", "set", "eth0", "name", "wan0")
    camera.run("ip", "link", "set", "wan0", "up")
    report(camera, 2)
    report(camera, 3)
    assert camera.trace().count("qvp(eth0): its interface is called wan0 now\n") == 1
    camera.run("ip", "link", "set", "wan0", "down")
    camera.run("ip", "link", "set", "wan0", "name", "eth0")
    camera.run("ip", "link", "set", "eth0", "up")
    camera.plug_in()
    tool.assert_in_step(camera)
