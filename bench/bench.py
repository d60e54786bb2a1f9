"""Measures everything and reports it. Started by bench/run, in namespaces."""
import argparse
import collections
import os
import pathlib
import sys
from dataclasses import dataclass, field

import counts
import datagrams
import growth
import rates
import report
import servers
from lab import CPUS, TREE, make_lab

MOST_DIFFERENCE = 0.05


@dataclass
class Result:
    row: servers.Row
    rates: rates.Rates
    calls: collections.Counter
    instructions: collections.Counter


@dataclass
class Program:
    """The most of all requests, where they differ."""
    resident: int = 0
    private_dirty: int = 0
    bss: int = None
    start: float = None
    sizes: dict = field(default_factory=dict)


def say(text):
    print(text, flush=True)


def measure(row, seconds):
    print(f"  {row.name}", file=sys.stderr, flush=True)
    return Result(row, rates.measure(row.server, seconds), counts.system_calls(row.server, row.counted),
                  counts.instructions(row.server, row.counted))


def measure_programs(results):
    programs = collections.defaultdict(Program)
    for result in results:
        program = programs[result.row.program]
        program.resident = max(program.resident, result.rates.resident)
        program.private_dirty = max(program.private_dirty, result.rates.private_dirty)
    qvp = programs["qvp"]
    qvp.start = rates.start_milliseconds(servers.daemon(datagrams.supported_functions()))
    builds = {preset: servers.built(preset) for preset in ("release", "mips", "musl")}
    qvp.sizes = {preset: counts.stripped_size(program) for preset, program in builds.items() if program}
    for result in results:
        programs[result.row.program].bss = counts.bss_size(pathlib.Path(result.row.server.command[0]))
    return programs


def verdict(difference, figures):
    return "." if difference <= MOST_DIFFERENCE else f": the machine was not idle, and {figures} are not to be trusted."


def doubts(results):
    """What the figures are worth, a line each."""
    first, last = (result.rates for result in results if result.row.key.startswith("floor_alone"))
    beside = max(abs(first.times_floor - 1), abs(last.times_floor - 1))
    drift = abs(last.cpu_seconds / first.cpu_seconds - 1)
    yield f"The floor beside itself: within {100 * beside:.1f} %{verdict(beside, 'the multiples of the floor')}"
    yield f"The floor, first and last: within {100 * drift:.1f} %{verdict(drift, 'rates, latencies and seconds')}"
    if len(CPUS) < 2:
        yield "Server and load shared the one processor that there is."
    for result in results:
        if result.rates.lost:
            yield f"{result.row.name}: {result.rates.lost} requests were lost."


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=float, default=0.1)
    parser.add_argument("--write-docs", action="store_true")
    options = parser.parse_args()
    busy = os.getloadavg()[0]
    make_lab()
    peers, left_out = servers.peer_rows()
    rows = [*servers.floors(), *servers.daemon_rows(), *peers, servers.floor_alone("last")]
    results = [measure(row, options.seconds) for row in rows]
    programs = measure_programs(results)
    discovery = next(result for result in results if result.row.key == "discovery")
    notes = [*doubts(results), *left_out, f"Load of the machine at the start: {busy:.1f}."]
    texts = {
        "machine": report.machine(),
        "requests": report.requests_table(results),
        "goals": report.goals_table(results, programs),
        "programs": report.programs_table(programs),
        "notes": "\n".join(f"- {line}" for line in notes),
        "store": report.store_table(growth.with_store(options.seconds)),
        "cameras": report.cameras_table(growth.with_cameras()),
        "functions": report.functions_table(discovery),
        "calls": report.calls_line(discovery),
    }
    for name in ("machine", "requests", "notes", "goals", "programs", "store", "cameras", "functions", "calls"):
        say(f"{texts[name]}\n")
    report.write_document(texts, results, TREE / ("docs" if options.write_docs else "build/bench"))


if __name__ == "__main__":
    main()
