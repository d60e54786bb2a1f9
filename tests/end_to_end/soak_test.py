"""For a long time: every datagram that has to be answered is, nothing else is, and the daemon grows no fatter by it.

  QVP_SOAK_DATAGRAMS   how many datagrams one camera gets; as many as are worth a page of evidence: 2000000
  QVP_SOAK_REPORTS     how often each of 200 cameras reports; an hour of them: 120
"""
import os
import random
import signal
import subprocess
from pathlib import Path

from support.requests import basic_info, discovery
from support.tool import Listener
from support.waiting import wait_until
from support.wire import FAMILIES, protected, request

DATAGRAMS = int(os.environ.get("QVP_SOAK_DATAGRAMS") or 40_000)
TIMES = int(os.environ.get("QVP_SOAK_REPORTS") or 3)
CAMERAS, HANDFUL, BATCH, SETS = 200, 20, 16, 40
READS = (0xA6, 0xA8, 0xAC, 0xAF)  # network, wireless in full, clock, wireless in short
SPARE_KIB = 64  # what the C library may take for its own in a long life


class Process:
    """What one takes of the machine."""

    def __init__(self, pid):
        self.folder = Path("/proc") / str(pid)

    def memory(self):
        status = (self.folder / "status").read_text()
        return int(next(line.split()[1] for line in status.splitlines() if line.startswith("VmRSS:")))

    def descriptors(self):
        """Those that it keeps: a report of its own accord opens files for a moment."""
        return sorted(set.intersection(*(set(os.listdir(self.folder / "fd")) for _ in range(3))))


def answered(camera):
    """Datagrams that get one reply each."""
    for protocol in FAMILIES:
        yield discovery(camera, protocol)
        yield request(0x00A1, protocol=protocol)
        yield request(0x00A1, camera.mac, protocol=protocol, selector=0x7777)
        for opcode in READS:
            yield protected(opcode, camera, protocol=protocol)
            yield protected(opcode, camera, protocol=protocol, password=b"wrong")
            yield protected(opcode, camera, protocol=protocol) + bytes(700)


def unanswered(camera, generator):
    """Datagrams that get none."""
    other = bytes.fromhex("025156ff0001")
    yield from (b"", b"\xfd", discovery(camera)[:21], discovery(camera)[:18])
    yield from (request(0x00A1, other, selector=0x7777), request(0x00A1, magic=b"\xfd\xfe"), request(0x00A1, protocol=3))
    yield from (request(opcode, camera.mac) for opcode in (0x0000, 0x00A0, 0x00C1, 0xFFFF))
    for length in (1, 17, 22, 86, 500, 1024, 1400):
        yield b"\x01" + generator.randbytes(length)


class Exchange:
    """A closed loop: as many replies as datagrams that have to be answered, before the next are sent."""

    def __init__(self, tool, camera):
        generator = random.Random(7)
        self.tool, self.camera, self.generator = tool, camera, generator
        self.pool = [(datagram, 1) for datagram in answered(camera)]
        self.pool += [(datagram, 0) for datagram in unanswered(camera, generator)]

    def run(self, count):
        for _ in range(0, count, BATCH):
            batch = self.generator.choices(self.pool, k=BATCH)
            for datagram, _ in batch:
                self.tool.send(datagram, self.camera.address)
            for _ in range(sum(replies for _, replies in batch)):
                self.tool.receive()
        assert not self.tool.has_reply()


def test_a_long_life(tool, lan):
    camera = lan.camera("--no-daemon")
    run = camera.start_daemon("eth0", stderr=subprocess.DEVNULL)
    camera.wait_for_port()
    daemon = Process(run.pid)
    wait_until(lambda: (daemon.folder / "comm").read_text() == "qvp\n", "the daemon in the place of what starts it")
    exchange = Exchange(tool, camera)
    exchange.run(DATAGRAMS // 10)
    memory, descriptors = daemon.memory(), daemon.descriptors()
    for number in range(SETS):
        exchange.run(DATAGRAMS * 9 // 10 // SETS)
        assert tool.ask(camera, basic_info(camera, name=b"Yard %d" % number))[16] == 0
    tool.assert_in_step(camera)
    print(f"{DATAGRAMS} datagrams, {SETS} changes: {memory} KiB before, {daemon.memory()} KiB after")
    assert camera.store()["CAMSYSTEM"]["CameraName"] == b"Yard %d" % (SETS - 1)
    assert daemon.descriptors() == descriptors
    assert daemon.memory() <= memory + SPARE_KIB


class Reports:
    """The numbers of the reports that cameras send; each camera's next one has the next number."""

    def __init__(self):
        self.listener = Listener()
        self.numbers = {}

    def hear(self):
        data = self.listener.report()
        mac, number = data[6:12], int.from_bytes(data[2:4], "little")
        assert number == self.numbers.get(mac, number - 1) + 1
        self.numbers[mac] = number

    def of(self, cameras):
        """Has each of them report, a handful at a time, as a receive buffer has room for."""
        for start in range(0, len(cameras), HANDFUL):
            handful = cameras[start : start + HANDFUL]
            before = [self.numbers.get(camera.mac) for camera in handful]
            for camera in handful:
                camera.signal(signal.SIGALRM)
            while any(self.numbers.get(camera.mac) == number for camera, number in zip(handful, before)):
                self.hear()


def test_two_hundred_cameras_report(tool, lan):
    """Every report of every camera comes, with the next number, and all of them answer a search in between."""
    cameras = lan.cameras(CAMERAS)
    reports = Reports()

    def live():
        reports.of(cameras)
        tool.send(request(0x00A1))
        assert {tool.receive()[0][6:12] for _ in cameras} == {camera.mac for camera in cameras}

    live()
    processes = [Process(camera.daemon_pid()) for camera in cameras]
    memory, descriptors = [one.memory() for one in processes], [one.descriptors() for one in processes]
    for _ in range(TIMES):
        live()
    reports.listener.close()
    assert [one.descriptors() for one in processes] == descriptors
    grown = [after.memory() - before for after, before in zip(processes, memory)]
    print(f"{CAMERAS} cameras, {TIMES} reports each: {max(grown)} KiB more at most")
    assert max(grown) <= SPARE_KIB
