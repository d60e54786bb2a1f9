"""What a board is told and gets when it brings a platform library of its own.

Usage: configure_test.py SOURCE_FOLDER LIBRARY
"""
import subprocess
import sys
import tempfile


def configure(top, library, build):
    options = ["-DQVP_DAEMON_ONLY=ON", f"-DQVP_PLATFORM_LIBRARY={library}"]
    return subprocess.run(["cmake", "-G", "Ninja", "-S", top, "-B", build, *options], capture_output=True, text=True, check=False)


def targets(top, library, faults):
    with tempfile.TemporaryDirectory() as build:
        done = configure(top, library, build)
        if done.returncode != 0:
            faults.append(f"does not configure with {library!r}: {done.stderr}")
            return set()
        listing = subprocess.run(["ninja", "-C", build, "-t", "targets", "all"], capture_output=True, text=True, check=True)
        return {line.split(":")[0] for line in listing.stdout.splitlines()}


def check_library(top, library, faults):
    """A board's library is checked by ctest, without a change to the machine."""
    with tempfile.TemporaryDirectory() as build:
        configure(top, library, build)
        for command in (["ninja", "platform_conformance"], ["ctest", "--verbose"]):
            done = subprocess.run(command, cwd=build, capture_output=True, text=True, check=False)
            if done.returncode != 0:
                faults.append(f"{command}: {done.stdout}")
        if "skipped cfgWrite: it changes the store (--store)" not in done.stdout:
            faults.append(f"the checks do not say what they leave out: {done.stdout}")


def main(top, library):
    faults = []
    with tempfile.TemporaryDirectory() as build:
        missing = configure(top, "/nowhere/libboard.a", build)
    if missing.returncode == 0 or "there is no file /nowhere/libboard.a" not in missing.stderr:
        faults.append(f"a library that is not there is not told:\n{missing.stderr}")
    if "platform_linux" not in targets(top, "", faults):
        faults.append("the reference platform is not the default")
    if {"platform_linux", "qvp", "platform_conformance"} & targets(top, library, faults) != {"qvp", "platform_conformance"}:
        faults.append("a board that brings its own platform does not get the daemon and the checks, and nothing else")
    check_library(top, library, faults)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
