"""What compiler and linker can do against an overrun is in the executables.

Usage: hardening_test.py EXECUTABLE[:WITHOUT...]...

Each executable must be able to stand anywhere in memory (pie), have its tables read-only once it is linked (relro) and
linked before it starts (now), no executable stack (stack), a guard behind the buffers of its functions (protector), and the C
library's calls that know the size of their buffer (fortify). WITHOUT are those of these words that it cannot have.
"""
import re
import subprocess
import sys

GUARD = {"__stack_chk_fail", "__stack_chk_fail_local"}
CHECKED_CALL = re.compile(r"__(?!stack)\w+_chk$")


def read(executable, option):
    return subprocess.run(["readelf", "--wide", option, executable], check=True, capture_output=True, text=True).stdout


def symbols(executable):
    return {fields[7].split("@")[0] for fields in map(str.split, read(executable, "--symbols").splitlines()) if len(fields) > 7}


def linked_at_start(executable):
    dynamic = read(executable, "--dynamic")
    return "no dynamic section" in dynamic or "BIND_NOW" in dynamic


def found(executable):
    segments = read(executable, "--segments")
    stack = re.search(r"GNU_STACK\s+(?:0x\w+\s+){5}(\w+ ?\w*)", segments)
    names = symbols(executable)
    return {
        "pie": "Type:" in (header := read(executable, "--file-header")) and "DYN (" in header,
        "relro": "GNU_RELRO" in segments,
        "now": linked_at_start(executable),
        "stack": stack is not None and "E" not in stack[1],
        "protector": bool(names & GUARD),
        "fortify": any(CHECKED_CALL.match(name) for name in names),
    }


def main(arguments):
    faults = []
    for argument in arguments:
        executable, *without = argument.split(":")
        has = found(executable)
        print(executable, " ".join(word for word, is_there in has.items() if is_there))
        faults += [f"{executable}: no {word}" for word, is_there in has.items() if not is_there and word not in without]
        faults += [f"{executable}: has {word} after all" for word in without if has[word]]
    print("\n".join(faults))
    return 1 if faults or not arguments else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
