"""Includes only ever point down.

Usage: layers_test.py SOURCE_FOLDER

Each folder may include itself and the folders named for it here, and nothing else of the project.
"""
import pathlib
import re
import sys

MAY_INCLUDE = {
    "protocol": set(),
    "platform": set(),
    "platform/linux": {"platform"},
    "src/util": {"protocol", "platform"},
    "src/handlers": {"src/util", "protocol", "platform"},
    "src/upgrade": {"src/util", "protocol", "platform"},
    "src/landap": {"src/handlers", "src/util"},
    "qvpctl": {"protocol"},
    "qvpctl/commands": {"qvpctl", "protocol"},
    "src/service": {"src/handlers", "src/landap", "src/upgrade", "src/util", "protocol", "platform"},
}
ROOTS = ["", "src", "platform"]  # what the compiler searches
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def target(top, source, name):
    for folder in [source.parent] + [top / root for root in ROOTS]:
        if (folder / name).is_file():
            return (folder / name).resolve().parent.relative_to(top).as_posix()
    return None


def main(top):
    faults, count = [], 0
    for folder, allowed in MAY_INCLUDE.items():
        for source in sorted((top / folder).glob("*.[ch]*")):
            for name in INCLUDE.findall(source.read_text()):
                count += 1
                found = target(top, source, name)
                if found != folder and found not in allowed:
                    faults.append(f"{source.relative_to(top)} includes {name} ({found})")
    print(f"{count} includes")
    print("\n".join(faults))
    return 1 if faults or not count else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
