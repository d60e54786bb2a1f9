"""docs/porting.md tells the truth: its key table is the list of platform/store_keys.h, its number of functions platform.h's,
and its table of functions has each of them with the files of src/ that call it. platform_conformance checks them all.

Usage: porting_document_test.py SOURCE_FOLDER
"""
import pathlib
import re
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


def main(top):
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
    print("\n".join(faults))
    return 0 if known and known == told and counted and functions and not faults else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
