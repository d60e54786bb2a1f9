"""Figures that are the same from run to run, but for the digits of the clock: system calls, user instructions, sizes.

Calls and instructions are the difference of two runs, of N requests and of 2N, so that start and end do not count.
"""
import collections
import pathlib
import re
import subprocess
import time

from lab import STATE, Load, wait_until

ATTEMPTS = 3
PRESENCE_SECONDS = 25  # the daemon reports its presence every 30 s: a run that took longer may hold a second report
COST = re.compile(r"[+\-*\d]\S* (\d+)")


def _run(server, prefix, requests):
    """A server under a tool, from its start to its end; its process id."""
    for _ in range(ATTEMPTS):
        start = time.monotonic()
        process = server.start(prefix)
        load = Load(server, "-n", str(requests))
        process.stop()
        if load.lost:
            raise RuntimeError(f"{server.command[0]} left {load.lost} requests unanswered")
        if time.monotonic() - start < PRESENCE_SECONDS:
            return process.pid
    raise RuntimeError(f"{server.command[0]} needs too long for {requests} requests under {prefix[0]}")


def _difference(measure, server, requests):
    """Per request, and by name."""
    less, more = measure(server, requests), measure(server, 2 * requests)
    costs = {name: (more[name] - less[name]) / requests for name in more}
    return collections.Counter({name: cost for name, cost in costs.items() if cost})


def _calls_of_run(server, requests):
    table = STATE / "strace"
    table.unlink(missing_ok=True)
    # -D: the server stays the process that was started; its tracer writes the table when it is gone. What a command
    # that the server runs asks of the system is not the server's.
    follow = ["-f"] if server.pid_file else []
    _run(server, ["strace", "-D", *follow, "-c", "-o", table], requests)
    wait_until(lambda: table.exists() and " total\n" in table.read_text(), "strace's table")
    rows = [line.split() for line in table.read_text().splitlines()[2:]]
    return collections.Counter({row[-1]: int(row[3]) for row in rows if row[-1] != "total" and row[3].isdigit()})


def _instructions_of_run(server, requests):
    pid = _run(server, ["valgrind", "-q", "--tool=callgrind", f"--callgrind-out-file={STATE}/callgrind.%p"], requests)
    own_costs = _own_costs(STATE / f"callgrind.{pid}")
    for path in STATE.glob("callgrind.*"):
        path.unlink()
    return own_costs


def _own_costs(path):
    """Instructions by (file, function), without those of the functions that it calls."""
    costs, names, place = collections.Counter(), {}, {"ob": "", "fn": ""}
    lines = iter(path.read_text().splitlines())
    for line in lines:
        if line.startswith("calls="):
            next(lines)  # what was called cost so much in all
        elif match := COST.match(line):
            costs[place["ob"], place["fn"]] += int(match[1])
        elif match := re.match(r"(c?ob|c?fn)=\((\d+)\)(?: (.*))?", line):
            kind = match[1][-2:]
            name = names.setdefault((kind, match[2]), match[3])
            if match[1] in place:
                place[kind] = name
    return costs


def system_calls(server, requests):
    """By name, a request."""
    return _difference(_calls_of_run, server, requests)


def instructions(server, requests):
    """By (file, function), a request."""
    return _difference(_instructions_of_run, server, requests)


def _tool(program, name):
    """binutils of the machine that the program is for."""
    is_mips = program.read_bytes()[18:20] == b"\0\x08"
    return f"mips-linux-gnu-{name}" if is_mips else name


def stripped_size(program):
    stripped = STATE / "stripped"
    subprocess.run([_tool(program, "strip"), "-o", stripped, program], check=True)
    return pathlib.Path(stripped).stat().st_size


def bss_size(program):
    command = [_tool(program, "readelf"), "-SW", program]
    sections = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout
    return int(re.search(r" \.bss +NOBITS +\w+ \w+ (\w+)", sections)[1], 16)
