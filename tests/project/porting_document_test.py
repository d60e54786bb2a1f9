"""docs/porting.md tells the truth: its key table is the list of platform/store_keys.h, its number of functions platform.h's.

Usage: porting_document_test.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

TYPES = {"TEXT": "text", "NUMBER": "number", "SHORT": "short number", "FLAG": "flag"}
ROW = re.compile(r'^ +([A-Z]+) *\(k\w+, *"(\w+)", *"(\w+)"\)', re.M)
FUNCTION = re.compile(r"^(?:int|void|const char\*|struct ListNode\*) +\w+\(", re.M)


def main(top):
    code = (top / "platform/store_keys.h").read_text()
    document = (top / "docs/porting.md").read_text()
    known = [(section, key, TYPES[kind]) for kind, section, key in ROW.findall(code)]
    told = re.findall(r"^\| `(\w+)` \| `(\w+)` \| ([\w ]+) \|$", document, re.M)
    for row in sorted(set(known) ^ set(told)):
        print("only in the", "code:" if row in known else "document:", *row)
    functions = len(FUNCTION.findall((top / "platform/platform.h").read_text()))
    counted = f"{functions} C functions" in document
    print(f"{len(known)} keys, {functions} functions{'' if counted else ', which the document does not say'}")
    return 0 if known and known == told and counted else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
