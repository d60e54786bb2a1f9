"""Each check of platform_conformance finds the library that it is there for.

Usage: broken_test.py PROGRAM PROGRAM_WITHOUT_REQUESTS SOURCE_FOLDER

To be run by on_a_board. A library breaks the one promise that QVP_FAULT names; the operation has to be reported for it,
and a library that breaks none passes. In the end every complaint that the checks can make has been made.
"""
import os
import pathlib
import re
import subprocess
import sys

CHANGING = ["--changing"]
COMMON = ["--gateway", "198.18.0.1", "--dns", "198.18.0.2", "--dns2", "198.18.0.3", "--administrator", "admin",
          "--folder", "/run"]  # fmt: skip
INTERFACE = ["behind", "touches", "result", "invents", "long name", "reversed", "none", "leaks"]
FAULTS = {
    "requestBegins": ["early", "stale"],
    "cfgRead": ["behind", "before", "touches", "result", "invents", "any section", "unterminated", "cuts", "7 bits",
                "16 bits", "8 bits", "truth", "wide short", "wide flag", "leaks", "dies", "exits", "hangs"],
    "cfgWrite": ["memory", "one section", "spills", "accepts", "result", "leaks"],
    "CfgEnumSec": ["reversed", "shared", "cuts", "unterminated", "few", "phantom", "leaks"],
    "CfgEnumField": ["reversed", "shared", "cuts", "unterminated", "few", "phantom", "leaks"],
    "ListFree": ["leaks", "null", "greedy"],
    "net_get_ifaddr": INTERFACE,
    "net_get_netmask": INTERFACE,
    "net_get_gateway": INTERFACE,
    "net_get_dns": ["behind", "result", "reversed", "none", "leaks"],
    "net_get_dns2": ["behind", "result", "reversed", "none", "leaks"],
    "net_get_hwaddr": [*INTERFACE, "null"],
    "Base64dec": ["blanks", "padding", "no NUL", "other bytes", "cuts", "beyond", "counts the NUL", "null text",
                  "writes for null", "null target"],
    "usrInit": ["result", "leaks"],
    "usrGetGroupName": ["null", "invents", "first group", "short-lived", "leaks"],
    "SIReadInt": ["behind", "touches", "before", "result", "16 bits", "leaks"],
    "SIWriteInt": ["private", "main thread only", "own threads", "in steps", "alone", "spills", "result", "leaks"],
    "get_oem_timezone_id": ["wide", "two alike", "any id"],
    "get_real_timezone_id": ["two alike", "any id", "none"],
    "set_timezone": ["here alone", "any zone", "refused zone", "refused mode", "always daylight saving", "one zone",
                     "forgets the rule", "refused rule", "result of a rule", "result", "leaks"],
    "getSiteList": ["touches", "size", "no NUL", "columns", "channel", "result", "leaks"],
    "HWMIB_getRegion": ["touches", "behind", "before", "result", "leaks"],
    "VerifyFWCode": ["accepts", "refuses", "changes", "behind", "result"],
    "UpgradeFWCode": ["refuses"],
    "cfgAesDecode": ["behind", "refuses"],
    "unpackCFG": ["refuses"],
}  # fmt: skip
# Faults that show on another operation, by another library, or with further options.
SHOWS_ON = {("cfgWrite", "tail"): "cfgRead"}
WITHOUT_REQUESTS = {("cfgRead", "stale")}
OPTIONS = {
    ("cfgRead", "hangs"): ["--seconds", "1"],
    **{(name, "phantom"): ["--interface", "wire0"] for name in ("net_get_ifaddr", "net_get_netmask")},
    ("net_get_dns2", "phantom"): ["--dns2", "none"],
}
# Complaints about the machine that the checks run on, which no library can make come.
NOT_OF_THE_LIBRARY = {"no thread for it", "cannot run %s", "cannot read %s"}


STORE = pathlib.Path(os.environ["QVP_STORE"])
FRESH = STORE.read_bytes()


def run(program, operation, fault, options):
    STORE.write_bytes(FRESH)  # what is broken may leave anything behind
    environment = os.environ | {"QVP_FAULT": f"{operation} {fault}" if fault else ""}
    only = ["--only", SHOWS_ON.get((operation, fault), operation)] if fault else []
    command = [program, *CHANGING, *COMMON, *only, *options]
    try:
        done = subprocess.run(command, env=environment, text=True, check=False, timeout=300,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)  # fmt: skip
    except subprocess.TimeoutExpired:
        return None, ["does not come to an end"]
    return done.returncode, done.stdout.splitlines()


def complaints(top):
    folder = top / "tests/platform_conformance"
    sources = [folder / "report.cpp", folder / "room.cpp", *sorted((folder / "checks").glob("*.cpp"))]
    text = "".join(path.read_text() for path in sources)
    pieces = re.findall(r'\bfail\(\s*((?:"(?:[^"\\]|\\.)*"\s*)+)', text)
    pieces += re.findall(r'expectRound\([^"]*("(?:[^"\\]|\\.)*")\)', text)
    return {"".join(re.findall(r'"((?:[^"\\]|\\.)*)"', piece)).replace('\\"', '"') for piece in pieces}


def is_of(form, line):
    parts = re.split(r"%(?:l?[du]|zu|s)", form)
    return re.search(": " + ".*".join(re.escape(part) for part in parts) + "$", line) is not None


def main(program, bare, top):
    image = pathlib.Path("/run/image")
    image.write_bytes(b"GOOD" + b"\1" * 100)
    images = ["--firmware", image, "--configuration", image]
    faults, reports = [], []
    for sound in (program, bare):
        status, lines = run(sound, "", "", images)
        if status != 0 or len(lines) != len(FAULTS) + 1 or any(line.startswith("FAIL") for line in lines):
            faults += ["a library without a fault does not pass:", *lines]
    cases = [(name, fault) for name, names in FAULTS.items() for fault in names] + [*SHOWS_ON, *WITHOUT_REQUESTS]
    cases += [case for case in OPTIONS if case not in cases]
    for operation, fault in cases:
        chosen = bare if (operation, fault) in WITHOUT_REQUESTS else program
        status, lines = run(chosen, operation, fault, images + OPTIONS.get((operation, fault), []))
        start = f"FAIL    {SHOWS_ON.get((operation, fault), operation)}: "
        if status != 1 or not any(line.startswith(start) for line in lines):
            faults += [f"is not found: {operation} {fault}", *lines]
        reports += [line for line in lines if line.startswith("FAIL")]
    for mistake in (["--only", "noSuchOperation"], ["--seconds", "soon"], ["--seconds", "0"], ["--seconds", "-1"]):
        status, lines = run(program, "", "", mistake)
        if status != 2 or lines:
            faults += [f"{mistake}: {status}", *lines]
    for interface, is_noted in (("nowhere0", True), ("lo", False)):
        lines = run(program, "", "", ["--only", "usrInit", "--interface", interface])[1]
        if is_noted != any(line.startswith(f"note    there is no interface {interface} ") for line in lines):
            faults += [f"interface {interface}:", *lines]
    known = complaints(top)
    for form in sorted(known - NOT_OF_THE_LIBRARY):
        if not any(is_of(form, line) for line in reports):
            faults.append(f"never said: {form}")
    print(f"{len(cases)} faults, {len(known)} complaints")
    print("\n".join(faults))
    return 1 if faults or len(known) < 40 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])))
