"""How cost grows: with the store's size, and with the cameras that answer one broadcast."""
import socket
import statistics
import subprocess
import time
from dataclasses import dataclass

import counts
import datagrams
import rates
import servers
from lab import STATE, Process, start_process, wait_until

STORE_KIB = (1, 10, 60)
REQUESTS = 20
CAMERAS = (1, 50, 200)
BROADCASTS = 11
MOST_BYTES = 1 << 22  # of replies that wait to be read; as many of them as the system grants


@dataclass
class StoreCost:
    kib: float
    rates: rates.Rates
    calls: float
    instructions: float


def with_store(seconds):
    for kib in STORE_KIB:
        server = servers.daemon(datagrams.discovery(), store_size=kib * 1024)
        figures = rates.measure(server, seconds)
        size = (STATE / "camera/camera.ini").stat().st_size / 1024
        calls, instructions = counts.system_calls(server, REQUESTS), counts.instructions(server, REQUESTS)
        yield StoreCost(size, figures, sum(calls.values()), sum(instructions.values()))


class Cameras:
    """Cameras on one bridge, each with a network of its own."""

    def __init__(self):
        self.processes = []
        self._ip("", "link add lan0 type bridge", "address add 198.19.0.1/16 brd 198.19.255.255 dev lan0",
                 "link set lan0 up")
        self.client = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.client.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        self.client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, MOST_BYTES)
        self.client.settimeout(2)

    @staticmethod
    def _ip(network, *commands):
        where = ["-n", network] if network else []
        subprocess.run(["ip", *where, "-batch", "-"], input="\n".join(commands), text=True, check=True)

    def _add(self, number):
        name, folder = f"cam{number}", STATE / f"cam{number}"
        servers.make_store(folder, 0)
        self._ip("", f"netns add {name}", f"link add {name} type veth peer name eth{number} netns {name}",
                 f"link set {name} master lan0 up")
        # A pid file is named after the interface, and these cameras share their /run.
        self._ip(name, f"address add 198.19.1.{number}/16 dev eth{number}", "link set lo up",
                 f"link set eth{number} up", "route add default via 198.19.0.1")
        server = servers.daemon(folder=folder)
        command = [server.command[0], f"eth{number}"]
        self.processes.append(Process(start_process(command, name, server.environment)))

    def grow(self, count):
        while len(self.processes) < count:
            self._add(len(self.processes) + 1)
        wait_until(lambda: self.ask()[1] == count, f"{count} cameras answer")

    def ask(self):
        """Milliseconds until all have answered, and how many did."""
        answered, last, start = set(), 0, time.monotonic_ns()
        self.client.sendto(datagrams.discovery(), ("198.19.255.255", datagrams.PORT))
        while len(answered) < len(self.processes):
            try:
                answered.add(self.client.recvfrom(1024)[1])
            except TimeoutError:
                break
            last = time.monotonic_ns()
        return (last - start) / 1e6, len(answered)

    def cpu_seconds(self):
        return sum(process.cpu_seconds() for process in self.processes)

    def stop(self):
        for process in self.processes:
            process.stop()


@dataclass
class BroadcastCost:
    cameras: int
    milliseconds: float  # until the last answer
    cpu_milliseconds: float  # of all daemons together
    answers: int  # fewest


def with_cameras():
    cameras = Cameras()
    for count in CAMERAS:
        cameras.grow(count)
        before = cameras.cpu_seconds()
        asked = [cameras.ask() for _ in range(BROADCASTS)]
        cpu = (cameras.cpu_seconds() - before) * 1000 / BROADCASTS
        yield BroadcastCost(count, statistics.median(took for took, _ in asked), cpu,
                            min(answers for _, answers in asked))
    cameras.stop()
