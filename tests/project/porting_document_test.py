"""The key table of docs/porting.md is the list of keys in platform/store_keys.h.

Usage: porting_document_test.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

TYPES = {"TEXT": "text", "NUMBER": "number", "SHORT": "short number", "FLAG": "flag"}
ROW = re.compile(r'^ +([A-Z]+) *\(k\w+, *"(\w+)", *"(\w+)"\)', re.M)


def main(top):
    code = (top / "platform/store_keys.h").read_text()
    document = (top / "docs/porting.md").read_text()
    known = [(section, key, TYPES[kind]) for kind, section, key in ROW.findall(code)]
    told = re.findall(r"^\| `(\w+)` \| `(\w+)` \| ([\w ]+) \|$", document, re.M)
    for row in sorted(set(known) ^ set(told)):
        print("only in the", "code:" if row in known else "document:", *row)
    print(f"{len(known)} keys")
    return 0 if known and known == told else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
