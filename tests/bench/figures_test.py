"""What a request costs in system calls and user instructions, and how large the daemon is: not above bench/goals.py.

How fast this machine is does not matter.
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench"))
# pylint: disable=wrong-import-position
import counts
import goals
import servers
from lab import BUILD, make_lab

REQUESTS = 50


def figures_of_requests():
    for row in servers.daemon_rows():
        if not row.goal:
            continue
        goal = goals.REQUEST[row.goal]
        for kind, count in (("calls", counts.system_calls), ("instructions", counts.instructions)):
            yield f"{row.name}: {kind}", sum(count(row.server, REQUESTS).values()), goal[kind]


def figures_of_sizes():
    yield ".bss, bytes", counts.bss_size(BUILD / "qvp"), goals.SIZE["bss"]
    mips = servers.built("mips")
    if mips:
        yield "stripped for MIPS, bytes", counts.stripped_size(mips), goals.SIZE["mips_stripped"]
    else:
        print("there is no build for MIPS: its size is not looked at")


def main():
    make_lab()
    above = 0
    for name, figure, goal in [*figures_of_requests(), *figures_of_sizes()]:
        limit = max(goal, goals.HELD.get(name, goal))
        verdict = "  ABOVE" if figure > limit else f"  held at {limit:,}" if figure > goal else ""
        above += figure > limit
        print(f"{name:40} {figure:10,.1f}  goal {goal:8,}{verdict}")
    print(f"{above} above their limits")
    return 1 if above else 0


if __name__ == "__main__":
    sys.exit(main())
