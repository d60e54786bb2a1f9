"""docs/porting.md tells the truth: its key table is the list of platform/store_keys.h, its number of functions platform.h's,
and its table of functions has each of them with the files of src/ that call it. platform_conformance checks them all. Its
figures of memory are those of the executables, to a tenth.

Usage: porting_document_test.py SOURCE_FOLDER [PLATFORM PROGRAM]...    such as: linux build/release/qvp
"""
import pathlib
import platform
import re
import subprocess
import sys

TYPES = {"TEXT": "text", "NUMBER": "number", "SHORT": "short number", "FLAG": "flag"}
ROW = re.compile(r'^ +([A-Z]+) *\(k\w+, *"(\w+)", *"(\w+)"\)', re.M)
FUNCTION = re.compile(r"^(?:int|void|const char\*|struct ListNode\*) +(\w+)\(", re.M)
OPERATION = re.compile(r"^\| (`[^|]+`) +\| [^|]+ \| (`[^|]+`) \|$", re.M)


def names(text):
    return re.findall(r"`(\w+)`", text)


def callers(top, function):
    """The files of src/ that call it, without their endings."""
    call = re.compile(rf"\b{function}\(")
    return {path.stem for path in (top / "src").rglob("*.cpp") if call.search(path.read_text())}


def check_functions(top, document, functions):
    faults, told = [], {}
    table = document.split("## What serves which command", 1)[-1].split("\n## ", 1)[0]
    for served, files in OPERATION.findall(table):
        told |= dict.fromkeys(names(served), set(names(files)))
    for function in functions:
        if told.get(function) != (called := callers(top, function)):
            faults.append(f"{function}: called in {sorted(called)}, the document says {sorted(told.get(function, []))}")
    faults += [f"no function of platform.h: {name}" for name in told if name not in functions]
    checked = re.findall(r'^ +\{"(\w+)",', (top / "tests/platform_conformance/platform_conformance.cpp").read_text(), re.M)
    checked = [name for name in checked if name in functions]
    faults += [f"not checked by platform_conformance: {name}" for name in functions if name not in checked]
    return faults


def check_memory(document, name, program):
    """Of this machine, when the document has figures of its kind."""
    row = re.search(rf"^\| with `platform/{name}/` \| x86-64, `Release` \|([^\n]+)\|$", document, re.M)
    if platform.machine() != "x86_64":
        return []
    told = [int(figure) for figure in re.findall(r"(\d+) KB", row.group(1))] if row else []
    sizes = subprocess.run(["size", program], stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()[1].split()[:3]
    real = [int(size) / 1000 for size in sizes]
    is_right = len(told) == 3 and all(abs(one - other) <= max(other / 10, 1) for one, other in zip(told, real))
    return [] if is_right else [f"platform/{name}/ takes {real} KB, the document says {told}"]


def main(top, *programs):
    code = (top / "platform/store_keys.h").read_text()
    document = (top / "docs/porting.md").read_text()
    known = [(section, key, TYPES[kind]) for kind, section, key in ROW.findall(code)]
    told = re.findall(r"^\| `(\w+)` \| `(\w+)` \| ([\w ]+) \|$", document, re.M)
    for row in sorted(set(known) ^ set(told)):
        print("only in the", "code:" if row in known else "document:", *row)
    functions = FUNCTION.findall((top / "platform/platform.h").read_text())
    counted = f"{len(functions)} C functions" in document
    faults = check_functions(top, document, functions)
    print(f"{len(known)} keys, {len(functions)} functions{'' if counted else ', which the document does not say'}")
    for name, program in zip(programs[::2], programs[1::2]):
        faults += check_memory(document, name, program)
    print("\n".join(faults))
    return 0 if known and known == told and counted and functions and not faults else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), *sys.argv[2:]))
