"""qvpctl watch, and cameras that report themselves, each test on networks of its own."""
import json
import re
import signal
import subprocess
import sys

import pytest
from datagrams import reply, report
from veth_network import PATIENCE, line_within


def start_watch(network, *arguments):
    process = network.start_tool("watch", *arguments)
    network.wait_until_listening(process)
    return process


def test_watch_shows_reports_as_they_come(network):
    process = start_watch(network)
    network.camera(network.link(), broadcasts=[report(7)])
    assert line_within(process.stdout) == (
        "TIME                       MAC                ADDRESS          NAME              PRODUCT           FIRMWARE")
    line = line_within(process.stdout)
    assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d  02:00:5e:10:00:af  10\.9\.0\.2 {9}Front door {8}"
                        r"Product {11}1\.05", line)
    assert process.poll() is None


@pytest.mark.parametrize("stop", [signal.SIGINT, signal.SIGTERM])
def test_watch_ends_with_0_when_stopped(network, stop):
    process = start_watch(network)
    line_within(process.stdout)
    process.send_signal(stop)
    assert process.wait(PATIENCE) == 0
    assert process.stderr.read() == b""


def test_watch_tells_reports_from_forgeries(network):
    process = start_watch(network, "--json", "--count", "2")
    forged = ["", "ff", report(1)[:2 * 316], report(1) + "00", report(1) + "00" * 707, report(1) + "00" * 900,
              report(1, changes=[(0, b"\xee\xfe")]), report(1, changes=[(0, b"\xfd\xfd")]),
              report(1, changes=[(4, b"\xa1\x00")]), report(1, changes=[(4, b"\xa0\x01")]),
              report(1, changes=[(18, b"\x01\x00")]), report(1, changes=[(20, b"\x28\x01")]),
              reply().replace("SSSS", "0000"), "ff" * 317]
    network.camera(network.link(), broadcasts=forged + [report(0x1234)] + forged + [report(3, b"\x1b[2J\xff")])
    output, errors = process.communicate(timeout=PATIENCE)
    assert (process.returncode, errors) == (0, b"")
    first, second = [json.loads(line) for line in output.decode("ascii").splitlines()]
    assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d", first.pop("time"))
    assert first == {"mac": "02:00:5e:10:00:af", "address": "10.9.0.2", "netmask": "255.255.255.0",
                     "name": "Front door", "product": "Product", "firmware": "1.05", "hardware": "Rev B",
                     "sequence": 0x1234, "interface": "tool0"}
    assert (second["sequence"], second["name"]) == (3, "\x1b[2J\ufffd")


def test_watch_keeps_to_the_named_interface(network):
    first, second = network.link(), network.link()
    process = start_watch(network, "--json", "-i", "tool1", "--count", "1")
    network.camera(first, broadcasts=[report(1)])
    network.camera(second, broadcasts=[report(2)])
    output, _ = process.communicate(timeout=PATIENCE)
    assert [json.loads(line)["sequence"] for line in output.splitlines()] == [2]


@pytest.mark.parametrize("watch_is_first", [True, False])
def test_watch_leaves_a_service_on_the_port_its_datagrams(network, watch_is_first):
    """Both hold the port; a broadcast reaches both, what is sent to the machine alone reaches the service."""
    host = network.link()
    service = ("import socket, sys\n"
               "s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
               "s.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)\n"
               "s.bind(('0.0.0.0', 62976))\n"
               "print('ready', flush=True)\n"
               "while True: print(len(s.recv(2048)), flush=True)\n")

    def start_service():
        process = network.tool_host.start(sys.executable, "-c", service, stdout=subprocess.PIPE)
        network.processes.append(process)
        assert line_within(process.stdout) == "ready"
        return process

    early = None if watch_is_first else start_service()
    watch = start_watch(network, "--json", "--count", "1")
    other = early or start_service()
    host.run(sys.executable, "-c", "import socket\ns = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
                                   "for _ in range(3): s.sendto(b'x' * 22, ('10.9.0.1', 62976))\n")
    network.camera(host, broadcasts=[report(5)])
    assert json.loads(line_within(watch.stdout))["sequence"] == 5
    assert [line_within(other.stdout) for _ in range(4)] == ["22", "22", "22", "317"]


def test_an_interface_that_is_not_there_ends_with_3(network):
    result = network.run_tool("watch", "-i", "nope0")
    assert (result.returncode, result.stdout, result.stderr) == (3, b"", b"qvpctl: interface nope0: no such interface\n")
