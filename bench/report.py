"""Tables of figures, on the terminal and in the document."""
import datetime
import os
import pathlib
import platform
import re
import string
import subprocess

import goals
import plot
from lab import TREE
from rates import NARROW, WIDE

FUNCTIONS = 15


def table(heads, rows):
    """Lines of Markdown that are aligned for the terminal too; the first column is text."""
    cells = [heads, *[[str(cell) for cell in row] for row in rows]]
    widths = [max(len(row[column]) for row in cells) for column in range(len(heads))]
    rule = ["-" * widths[0]] + ["-" * (width - 1) + ":" for width in widths[1:]]

    def line(row):
        figures = [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        return f"| {' | '.join([row[0].ljust(widths[0]), *figures])} |"

    return "\n".join(line(row) for row in [cells[0], rule, *cells[1:]])


def number(value):
    """Three digits, or all of a large one."""
    decimals = 0 if value >= 100 or value % 1 == 0 else 1 if value >= 10 else 2
    return f"{value:,.{decimals}f}"


def kib(size):
    return f"{size / 1024:,.0f}"


def requests_table(results):
    heads = ["request", "reply", "1: /s", "p50 µs", "p99 µs", "16: /s", "p50 µs", "p99 µs", "CPU s", "x floor",
             "calls", "fsync", "instructions"]
    rows = []
    for result in results:
        r = result.rates
        by_window = [number(figure[window]) for window in (NARROW, WIDE) for figure in (r.rate, r.p50, r.p99)]
        counted = [sum(result.calls.values()), result.calls["fsync"], sum(result.instructions.values())]
        rows.append([result.row.name, r.reply_bytes, *by_window, f"{r.cpu_seconds:.2f}", f"{r.times_floor:.2f}",
                     *map(number, counted)])
    return table(heads, rows)


def _worst(results, group):
    own = [result for result in results if result.row.goal == group]
    return {"times_floor": max(result.rates.times_floor for result in own),
            "calls": max(sum(result.calls.values()) for result in own),
            "instructions": max(sum(result.instructions.values()) for result in own)}


def goals_table(results, programs):
    names = {"times_floor": "processor time x floor", "calls": "system calls", "instructions": "user instructions"}
    rows = [(f"{group}: {names[kind]}", figure, goals.REQUEST[group][kind])
            for group in goals.REQUEST for kind, figure in _worst(results, group).items()]
    qvp = programs["qvp"]
    rows += [(".bss, KiB", qvp.bss / 1024, goals.SIZE["bss"] / 1024),
             ("private dirty, KiB", qvp.private_dirty / 1024, goals.MEMORY["private_dirty"] / 1024),
             ("resident, KiB", qvp.resident / 1024, goals.MEMORY["resident"] / 1024),
             ("start to first answer, ms", qvp.start, goals.START_MILLISECONDS)]
    if qvp.sizes.get("mips"):
        rows.append(("stripped for MIPS, bytes", qvp.sizes["mips"], goals.SIZE["mips_stripped"]))
    return table(["figure", "measured", "goal", "met"],
                 [[name, number(figure), number(goal), "yes" if figure <= goal else "no"]
                  for name, figure, goal in rows])


def programs_table(programs):
    rows = [[name, kib(p.resident), kib(p.private_dirty), kib(p.bss), "-" if p.start is None else f"{p.start:.2f}",
             *[f"{p.sizes[preset]:,}" if preset in p.sizes else "-" for preset in ("release", "mips", "musl")]]
            for name, p in programs.items()]
    return table(["program", "resident KiB", "private dirty KiB", ".bss KiB", "first answer ms", "stripped x86-64",
                  "for MIPS", "musl, static"], rows)


def store_table(costs):
    return table(["store KiB", "CPU s", "x floor", "calls", "instructions"],
                 [[f"{c.kib:.1f}", f"{c.rates.cpu_seconds:.2f}", f"{c.rates.times_floor:.2f}", number(c.calls),
                   number(c.instructions)] for c in costs])


def cameras_table(costs):
    return table(["cameras", "ms to the last answer", "CPU ms of all", "fewest answers"],
                 [[c.cameras, number(c.milliseconds), number(c.cpu_milliseconds), c.answers] for c in costs])


def functions_table(result):
    """Where the instructions of one request go."""
    whole = sum(result.instructions.values())
    most = result.instructions.most_common(FUNCTIONS)
    costs = [(f"{name.split('(')[0]} ({pathlib.Path(file).name})", cost) for (file, name), cost in most]
    costs.append(("all others", whole - sum(cost for _, cost in most)))
    return table(["function", "instructions", "share"],
                 [[name, number(cost), f"{100 * cost / whole:.1f} %"] for name, cost in costs])


def calls_line(result):
    return ", ".join(f"{name} {number(count)}" for name, count in result.calls.most_common())


def machine():
    cpu = re.search(r"^model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    version = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True, check=True).stdout
    kernel = re.match(r"[\d.]+", os.uname().release)[0]
    return (f"{cpu[1] if cpu else platform.machine()}, {os.cpu_count()} processors; Linux {kernel}; "
            f"{' '.join(platform.libc_ver())}; {version.splitlines()[0]}; measured {datetime.date.today()}.")


def write_document(texts, results, folder):
    images = folder / "images"
    images.mkdir(parents=True, exist_ok=True)
    template = string.Template((TREE / "bench/performance.md.in").read_text())
    (folder / "performance.md").write_text(template.substitute(texts))
    latency = [(result.row.name, result.rates.p50[NARROW], result.rates.p99[NARROW]) for result in results]
    cost = [(result.row.name, result.rates.times_floor) for result in results]
    pictures = {"latency": plot.bars("Latency of one request in flight, µs", ["median", "99th percentile"], latency),
                "cost": plot.bars("Processor time, 16 requests in flight", ["times the floor"], cost)}
    for name, picture in pictures.items():
        (images / f"{name}.svg").write_text(picture)
