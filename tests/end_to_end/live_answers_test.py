"""Answers are never older than the request, although the daemon keeps what it has read."""
import os
import signal
import time
from pathlib import Path

import pytest
from support.requests import discovery
from support.waiting import wait_until
from support.wire import PORT, ip

NAME, ADDRESS, MASK, GATEWAY, DNS, DNS2, CLOCK = 226, 290, 298, 302, 306, 310, 315
ROUNDS = 200


def text_at(data, offset):
    return data[offset : offset + 64].rstrip(b"\0")


def address_at(data, offset):
    return ".".join(str(octet) for octet in data[offset : offset + 4])


def replace(path, content):
    new = path.with_name(path.name + ".test")
    new.write_bytes(content)
    new.rename(path)


def overwrite(path, content):
    """In place, and in one call: nobody sees it half written."""
    file = os.open(path, os.O_WRONLY)
    os.pwrite(file, content, 0)
    os.ftruncate(file, len(content))
    os.close(file)


class Held:
    """The daemon stands still while a change is made, so the request lies before its socket already."""

    def __init__(self, camera):
        self.pid = camera.daemon_pid()

    def __enter__(self):
        os.kill(self.pid, signal.SIGSTOP)
        wait_until(lambda: " T " in Path(f"/proc/{self.pid}/stat").read_text(), "the daemon's halt")

    def __exit__(self, *_):
        os.kill(self.pid, signal.SIGCONT)


def bytes_read(camera):
    """What the daemon has read from files and datagrams so far."""
    lines = Path(f"/proc/{camera.daemon_pid()}/io").read_text().splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("rchar:"))


def rest(tool, camera):
    """Until a request reads nothing any more but what the kernel makes anew each time, the table of routes."""

    def reads():
        tool.ask(camera, discovery(camera))
        before = bytes_read(camera)
        tool.ask(camera, discovery(camera))
        return bytes_read(camera) - before

    routes = len(camera.run("cat", "/proc/net/route"))
    wait_until(lambda: reads() <= routes, "the store and the name servers to be kept")


@pytest.fixture(params=["at once", "after a rest"])
def pause(request, tool):
    """What is between one change and the next."""
    return (lambda camera: rest(tool, camera)) if request.param == "after a rest" else lambda camera: None


@pytest.fixture(params=["between", "before"])
def changing(request, tool):
    """Changes between two requests, or with a request waiting already that the daemon has not taken yet."""

    def between(camera, change):
        change()
        return tool.ask(camera, discovery(camera))

    def before(camera, change):
        with Held(camera):
            asked = discovery(camera)
            tool.send(asked, camera.address)
            change()
        data, sender = tool.receive()
        assert sender == (camera.address, PORT) and data[2:6] == asked[2:6]
        return data

    return between if request.param == "between" else before


def store_named(camera, name):
    content = camera.store_file.read_bytes()
    start = content.index(b"CameraName=") + len(b"CameraName=")
    return content[:start] + name + content[content.index(b"\n", start) :]


@pytest.mark.parametrize("write", [replace, overwrite])
def test_the_store(camera, changing, pause, write):
    camera.write_store(store_named(camera, b"Gate"))
    pause(camera)
    for name in (b"Yard", b"G", b"A longer name"):  # of the same size, shorter, longer
        content = store_named(camera, name)
        data = changing(camera, lambda content=content: write(camera.store_file, content))
        assert text_at(data, NAME) == name


@pytest.mark.parametrize("write", [replace, overwrite])
def test_the_store_again_and_again(tool, camera, write):
    for number in range(ROUNDS):
        name = b"Name %03d" % number
        write(camera.store_file, store_named(camera, name))
        assert text_at(tool.ask(camera, discovery(camera)), NAME) == name


def test_a_report(tool, listener, camera):
    listener.report(camera)  # of its start
    rest(tool, camera)
    replace(camera.store_file, store_named(camera, b"Gate"))
    camera.signal(signal.SIGALRM)
    assert text_at(listener.report(camera), 220) == b"Gate"


def test_a_store_whose_writer_hides_the_time(tool, camera):
    rest(tool, camera)
    known = camera.store_file.stat()
    overwrite(camera.store_file, store_named(camera, b"Kamera %d" % camera.number))
    os.utime(camera.store_file, ns=(known.st_atime_ns, known.st_mtime_ns))
    assert camera.store_file.stat().st_size == known.st_size
    assert text_at(tool.ask(camera, discovery(camera)), NAME) == b"Kamera %d" % camera.number


def test_a_store_that_goes_and_comes_back(camera, changing, pause):
    content = camera.store_file.read_bytes()
    pause(camera)
    assert text_at(changing(camera, camera.store_file.unlink), NAME) == b""
    data = changing(camera, lambda: camera.store_file.write_bytes(content))
    assert text_at(data, NAME) == b"Camera %d" % camera.number


def resolver(*servers):
    return b"".join(b"nameserver %s\n" % server.encode() for server in servers)


@pytest.mark.parametrize("write", [replace, overwrite])
def test_the_name_servers(camera, changing, pause, write):
    file = camera.root / "etc/resolv.conf"
    file.write_bytes(resolver("192.0.2.11", "192.0.2.12"))
    pause(camera)
    for servers in (("192.0.2.13", "192.0.2.14"), ("192.0.2.15", "192.0.2.16")):
        data = changing(camera, lambda servers=servers: write(file, resolver(*servers)))
        assert (address_at(data, DNS), address_at(data, DNS2)) == servers
    assert address_at(changing(camera, file.unlink), DNS) == "0.0.0.0"
    assert address_at(changing(camera, lambda: file.write_bytes(resolver("192.0.2.16"))), DNS) == "192.0.2.16"


def test_the_name_servers_again_and_again(tool, camera):
    for number in range(ROUNDS):
        server = f"192.0.2.{100 + number % 100}"
        overwrite(camera.root / "etc/resolv.conf", resolver(server))
        assert address_at(tool.ask(camera, discovery(camera)), DNS) == server


def test_the_route(camera, changing, pause):
    pause(camera)
    for gateway in ("198.18.0.7", "198.18.0.8", "0.0.0.0", "198.18.0.9"):
        change = f"ip route replace default via {gateway} dev eth0" if gateway != "0.0.0.0" else "ip route delete default"
        data = changing(camera, lambda change=change: camera.run("sh", "-c", change))
        assert address_at(data, GATEWAY) == gateway


def test_the_address(camera, changing, pause):
    """The camera keeps the address that it is asked at; the one that it tells is the interface's first."""
    pause(camera)
    for first, mask in ((f"198.18.200.{camera.number}", 16), (f"198.18.201.{camera.number}", 17)):
        data = changing(camera, lambda first=first, mask=mask: camera.run("sh", "-c", (
            f"ip address flush dev eth0 && ip address add {first}/{mask} dev eth0 &&"
            f" ip address add {camera.address}/15 dev eth0 && ip route replace 198.18.0.1 dev eth0 src {camera.address}")))  # fmt: skip
        assert address_at(data, ADDRESS) == first
        assert data[MASK : MASK + 4] == ip("255.255.0.0" if mask == 16 else "255.255.128.0")


def zone_file(hours):
    """A zone that is so much ahead of UTC all year, as the C library reads it."""
    kind = (hours * 3600).to_bytes(4, "big", signed=True) + b"\0\0" + b"ZON\0"
    block = b"TZif2" + bytes(15) + b"".join(n.to_bytes(4, "big") for n in (0, 0, 0, 0, 1, 4)) + kind
    return block + block + b"\nZON%+d\n" % -hours


def hours_ahead(data):
    shown = time.mktime(time.strptime(data[CLOCK : CLOCK + 14].decode(), "%Y%m%d%H%M%S"))
    return round((shown - time.mktime(time.gmtime())) / 3600)


def test_the_zone(camera, changing, pause):
    pause(camera)
    for hours in (3, -5, 9):
        data = changing(camera, lambda hours=hours: replace(camera.root / "etc/localtime", zone_file(hours)))
        assert hours_ahead(data) == hours


def test_the_zone_again_and_again(tool, camera):
    for number in range(ROUNDS):
        replace(camera.root / "etc/localtime", zone_file(number % 12))
        assert hours_ahead(tool.ask(camera, discovery(camera))) == number % 12
