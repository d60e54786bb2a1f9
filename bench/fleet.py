"""How the time of `qvpctl apply` grows with the cameras of a table. Started by bench/fleet.

For each number of cameras, this program runs itself once more on a virtual LAN of its own.
"""
import argparse
import json
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
from dataclasses import asdict, dataclass

import report
from lab import BUILD, TREE

CAMERAS, PARALLEL = [1, 10, 50, 200], [1, 8, 32]
RESTART = """#!/bin/bash
. /usr/lib/board/record
ip link set eth0 down
sleep {away}
ip link set eth0 up
exec /usr/lib/board/configure-eth0
"""
STATISTICS = pathlib.Path("/sys/class/net/lan0/statistics")


@dataclass
class Run:
    cameras: int
    parallel: int
    away: int           # seconds that a camera takes for itself
    seconds: float
    cpu_seconds: float  # the tool's own
    resident: int       # bytes, at most
    sent: int           # packets
    received: int
    journal: int        # bytes

    def ideal(self):
        """The first camera goes ahead alone."""
        return self.away * (1 + math.ceil((self.cameras - 1) / self.parallel))


def write_table(folder, count, turn):
    lines = ["mac,name,ipv4.address"]
    for number in range(1, count + 1):
        high, low = divmod(number, 256)
        lines.append(f"02:51:56:50:{high:02x}:{low:02x},Hall {turn} {number},198.18.{16 * (turn + 1) + high}.{low}/15")
    table = folder / f"{turn}.csv"
    table.write_text("\n".join(lines) + "\n")
    return table


def packets():
    return [int((STATISTICS / f"{way}_packets").read_text()) for way in ("tx", "rx")]


def most_memory(pid):
    """Resident bytes. What wait4 tells begins with the memory of this program, which the other one was before its exec."""
    text = pathlib.Path(f"/proc/{pid}/status").read_text()
    line = re.search(r"^VmHWM:\s*(\d+) kB", text, re.M)
    return int(line[1]) * 1024 if line else 0  # none: it is ending


def apply(table, cameras, parallel, away):
    command = [BUILD / "qvpctl", "apply", table, "--json", "--parallel", str(parallel)]
    before, start = packets(), time.monotonic()
    with open(table.with_suffix(".out"), "w+", encoding="utf-8") as output:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                   env={**os.environ, "QVPCTL_PASSWORD": "admin"})
        resident = 0
        while (end := os.wait4(process.pid, os.WNOHANG))[0] == 0:
            resident = max(resident, most_memory(process.pid))
            time.sleep(0.05)
        _, status, usage = end
        seconds = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        records = [json.loads(line) for line in output]
    if process.returncode != 0 or records[-1]["summary"]["changed"] != cameras:
        failures = [record for record in records if record.get("reason")]
        raise RuntimeError(f"{cameras} cameras, {parallel} at a time: status {process.returncode}, {failures}")
    sent, received = (now - then for now, then in zip(packets(), before))
    return Run(cameras, parallel, away, seconds, usage.ru_utime + usage.ru_stime, resident, sent, received,
               pathlib.Path(f"{table}.journal").stat().st_size)


def measure_here(count, parallel, away):
    """On a LAN that has so many cameras."""
    for number in range(1, count + 1):
        script = pathlib.Path(os.environ["QVP_LAN"], str(number), "root/etc/init.d/ipv4")
        script.unlink()  # it may be a link
        script.write_text(RESTART.format(away=away))
        script.chmod(0o755)
    with tempfile.TemporaryDirectory() as folder:
        for turn, at_a_time in enumerate(parallel):
            run = apply(write_table(pathlib.Path(folder), count, turn), count, at_a_time, away)
            print(json.dumps(asdict(run)), flush=True)


def measure(count, parallel, away):
    """On a LAN of its own."""
    command = [TREE / "virtual-camera/virtual-camera", "run", "-n", str(count), "--daemon", BUILD / "qvp", "--",
               sys.executable, "-B", os.path.abspath(__file__), "--here", "--away", str(away), "--cameras", str(count),
               "--parallel", *map(str, parallel)]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            run = Run(**json.loads(line))
            print(f"  {run.cameras} cameras, {run.parallel} at a time: {run.seconds:.1f} s", file=sys.stderr, flush=True)
            yield run
    if process.returncode != 0:
        sys.exit(process.returncode)


def runs_table(runs):
    heads = ["cameras", "at a time", "s", "ideal s", "x ideal", "CPU s", "packets sent", "received", "journal KiB"]
    return report.table(heads, [
        [run.cameras, run.parallel, f"{run.seconds:.1f}", run.ideal(), f"{run.seconds / run.ideal():.2f}",
         f"{run.cpu_seconds:.2f}", f"{run.sent:,}", f"{run.received:,}",
         f"{run.journal / 1024:.1f}"] for run in runs])


def most_resident(runs):
    return f"{max(run.resident for run in runs) / 2**20:.1f}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--cameras", type=int, nargs="+", default=CAMERAS)
    parser.add_argument("--parallel", type=int, nargs="+", default=PARALLEL)
    parser.add_argument("--away", type=int, default=10)
    parser.add_argument("--here", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.here:
        return measure_here(options.cameras[0], options.parallel, options.away)
    runs = [run for count in options.cameras for run in measure(count, options.parallel, options.away)]
    print(f"{report.machine()}\n\n{runs_table(runs)}\n\nThe tool's memory: at most {most_resident(runs)} MiB.")


if __name__ == "__main__":
    main()
