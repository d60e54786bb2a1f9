"""Includes only ever point down, and every folder of sources has its floor.

Usage: layers_test.py SOURCE_FOLDER

Each folder may include itself and the folders named for it here, and nothing else of the project.
"""
import pathlib
import re
import sys

LINUX = "platform/linux"
BELOW_COMMANDS = {"src/util", "src/camera", "src/system", "protocol", "platform"}
CLIENT = {"client", "client/commands", "client/settings", "client/session", "client/fleet"}
MAY_INCLUDE = {
    "protocol": set(),
    "platform": set(),
    "platform/example": {"platform"},
    LINUX: {"platform", f"{LINUX}/common"},
    f"{LINUX}/common": {"platform"},
    f"{LINUX}/network": {"platform", f"{LINUX}/common"},
    f"{LINUX}/store": {"platform", f"{LINUX}/common"},
    f"{LINUX}/tools": {f"{LINUX}/store", "platform", f"{LINUX}/common"},
    f"{LINUX}/time_zone": {"platform", f"{LINUX}/common"},
    f"{LINUX}/wireless": {"platform", f"{LINUX}/common"},
    "src/system": set(),
    "src/camera": {"platform"},
    "src/util": {"src/camera", "src/system", "protocol", "platform"},
    "src/upgrade": BELOW_COMMANDS,
    "src/handlers": BELOW_COMMANDS,
    "src/landap": {"src/handlers", "src/util", "src/camera"},
    "src/service": {"src/handlers", "src/landap", "src/upgrade"} | BELOW_COMMANDS,
    "client": {"protocol"},
    "client/commands": {"client", "protocol"},
    "client/settings": {"client", "client/commands", "protocol"},
    "client/session": {"client", "client/commands", "client/settings", "protocol"},
    "client/fleet": {"client", "client/commands", "client/settings", "client/session", "protocol"},
    "qvpctl": CLIENT | {"protocol"},
    "qvpctl/fleet": CLIENT | {"qvpctl", "protocol"},
    "qvpctl/metrics": CLIENT | {"qvpctl", "protocol"},
    "qvpctl/web": CLIENT | {"qvpctl", "qvpctl/fleet", "protocol"},
    "qvpctl/commands": CLIENT | {"qvpctl", "qvpctl/fleet", "qvpctl/metrics", "qvpctl/web", "protocol"},
}
OUTSIDE = {"tests", "virtual-camera", "bench", "build"}  # top folders whose sources are not on a floor
ROOTS = ["", "src", "platform", LINUX]  # what the compiler searches
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def sources(folder):
    return sorted(path for path in folder.iterdir() if path.suffix in (".h", ".c", ".cpp"))


def unknown_folders(top):
    floors = [folder for folder in top.iterdir() if folder.is_dir() and folder.name not in OUTSIDE]
    folders = {path.parent for floor in floors if not floor.name.startswith(".") for path in floor.rglob("*.[ch]*")}
    names = {folder.relative_to(top).as_posix() for folder in folders if sources(folder)}
    return [f"{name} has no floor" for name in sorted(names - MAY_INCLUDE.keys())]


def target(top, source, name):
    for folder in [source.parent] + [top / root for root in ROOTS]:
        if (folder / name).is_file():
            return (folder / name).resolve().parent.relative_to(top).as_posix()
    return None


def main(top):
    faults, count = unknown_folders(top), 0
    for folder, allowed in MAY_INCLUDE.items():
        for source in sources(top / folder):
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
