"""The key table of docs/porting.md is that of the reference platform's store.

Usage: porting_document_test.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

TYPES = {"kText": "text", "kInt32": "number", "kUint16": "short number", "kFlag": "flag"}


def main(top):
    code = (top / "platform/linux/store_keys.cpp").read_text()
    document = (top / "docs/porting.md").read_text()
    known = [(section, key, TYPES[kind]) for section, key, kind in re.findall(r'\{"(\w+)",\s*"(\w+)",\s*(k\w+)\s*\}', code)]
    told = re.findall(r"^\| `(\w+)` \| `(\w+)` \| ([\w ]+) \|$", document, re.M)
    for row in sorted(set(known) ^ set(told)):
        print("only in the", "code:" if row in known else "document:", *row)
    print(f"{len(known)} keys")
    return 0 if known and known == told else 1


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
