"""Figures that depend on the machine: rates, latencies, processor time.

Each slice of a server stands between two slices of the floor with the same size of reply, so that what slows the
machine down for a while slows both.
"""
import socket
import statistics
import struct
import time
from dataclasses import dataclass

import servers
from lab import SERVER_ADDRESS, Load, Process, exec_time, start_process

SLICES = 9
NARROW, WIDE = 1, 16  # requests in flight
STARTS = 11


@dataclass
class Rates:
    """Medians over the slices; by window where it is a dictionary."""
    reply_bytes: int
    rate: dict
    p50: dict  # microseconds
    p99: dict
    cpu_seconds: float  # per 100,000 requests
    times_floor: float
    lost: int
    resident: int
    private_dirty: int


class Measured:
    """A running server, and what its slices were."""

    def __init__(self, server, seconds):
        self.server, self.seconds, self.process = server, seconds, server.start()
        self.loads, self.cpu = {NARROW: [], WIDE: []}, {NARROW: [], WIDE: []}

    def slice(self, window):
        before = self.process.cpu_seconds()
        load = Load(self.server, "-b", "-w", str(window), "-s", str(self.seconds))
        self.cpu[window].append((self.process.cpu_seconds() - before) / load.replies)
        self.loads[window].append(load)

    def median(self, figure):
        return {window: statistics.median(map(figure, loads)) for window, loads in self.loads.items()}

    def lost(self):
        return sum(load.lost for loads in self.loads.values() for load in loads)


def measure(server, seconds):
    subject = Measured(server, seconds)
    reference = Measured(servers.floor(len(server.first_reply)), seconds)
    reference.slice(NARROW)  # the machine wakes up
    reference.slice(WIDE)
    for _ in range(SLICES):
        subject.slice(WIDE)
        reference.slice(WIDE)
        subject.slice(NARROW)
    resident, private_dirty = subject.process.memory()
    subject.process.stop()
    reference.process.stop()
    floor, cpu = reference.cpu[WIDE], subject.cpu[WIDE]
    ratios = [2 * own / (before + after) for own, before, after in zip(cpu, floor, floor[1:])]
    return Rates(reply_bytes=len(server.first_reply),
                 rate=subject.median(lambda load: load.rate),
                 p50=subject.median(lambda load: load.p50 / 1000),
                 p99=subject.median(lambda load: load.p99 / 1000),
                 cpu_seconds=statistics.median(cpu) * 100_000,
                 times_floor=statistics.median(ratios),
                 lost=subject.lost(),
                 resident=resident, private_dirty=private_dirty)


def _start_once(server):
    """Milliseconds from the exec to the first answer; asked again until there is one."""
    server.before_start()
    process = Process(start_process(server.command, "server", server.environment))
    started = struct.unpack("q", exec_time[:])[0]
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.connect((SERVER_ADDRESS, server.port))
        client.settimeout(0.0001)
        answered = False
        while not answered:
            try:
                client.send(bytes.fromhex(server.requests[0]))
                answered = bool(client.recv(1024))
            except (ConnectionRefusedError, TimeoutError):
                pass
    milliseconds = (time.monotonic_ns() - started) / 1e6
    process.stop()
    return milliseconds


def start_milliseconds(server):
    return statistics.median(_start_once(server) for _ in range(STARTS))
