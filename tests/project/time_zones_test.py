"""The daemon and the tools number the time zones alike. Usage: time_zones_test.py SOURCE_FOLDER"""
import pathlib
import re
import sys


def rows(path, pattern):
    """Wire ids and the places they stand for."""
    found = re.findall(pattern, path.read_text(), re.M)
    return {int(number): places for number, places in found}


def main(top):
    daemon = rows(top / "platform/linux/time_zone/zone_table.cpp", r'^    \{\d+, +(\d+), +"[^"]+", +"([^"]+)" *\},')
    tools = rows(top / "client/time_zones.cpp", r'^    \{(\d+), +"[^"]+", +"([^"]+)" *\},')
    faults = [f"{number}: the daemon has {daemon.get(number)}, the tools have {tools.get(number)}"
              for number in sorted(daemon.keys() | tools.keys()) if daemon.get(number) != tools.get(number)]
    print(f"{len(daemon)} zones")
    print("\n".join(faults))
    return 1 if faults or not daemon else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
