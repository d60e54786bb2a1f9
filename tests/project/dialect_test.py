"""What the dialect asks for and clang-tidy cannot tell: a step that is a statement is written i++ and i--.

Usage: dialect_test.py SOURCE_FOLDER
"""
import pathlib
import re
import sys

FOLDERS = ["protocol", "src", "platform", "client", "qvpctl"]
STEP = r"(?:\+\+|--)[\w.>\[\]-]+"
PREFIX = re.compile(rf"(?:^\s*|[;{{}}]\s*|\)\s+){STEP}\s*[;,)]|;[^;]*,\s*{STEP}\s*\)")


def main(top):
    sources = [path for folder in FOLDERS for path in sorted((top / folder).rglob("*.[ch]*"))]
    faults = 0
    for path in sources:
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if PREFIX.search(line.split("//")[0]):
                print(f"{path.relative_to(top)}:{number}: {line.strip()}")
                faults += 1
    print(f"{len(sources)} files")
    return 1 if faults or not sources else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
