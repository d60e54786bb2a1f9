"""No manual page has a fault that groff or mandoc sees.

Usage: manual_pages_test.py SOURCE_FOLDER
"""
import pathlib
import re
import subprocess
import sys

# A page has no date of its own: it goes with a release. Lines of the source may be as long as those of other files.
KNOWN = re.compile(r"WARNING: missing date|STYLE: input text line longer than 80 bytes")


def said(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=False, env={"LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin"})
    return (done.stdout + done.stderr).splitlines()


def faults(page):
    yield from said("groff", "-ww", "-man", "-Tutf8", "-z", str(page))
    yield from (line for line in said("mandoc", "-T", "lint", str(page)) if not KNOWN.search(line))
    header = re.search(r"^\.TH (\S+) (\d)", page.read_text(), re.M)
    if not header or f"{header.group(1)}.{header.group(2)}".replace("\\", "").lower() != page.name.lower():
        yield f"{page}: is not called what it says"


def main(top):
    pages = sorted(page for folder in ("docs", "docs/man") for page in (top / folder).glob("*.[1-8]"))
    found = [fault for page in pages for fault in faults(page)]
    print(f"{len(pages)} pages")
    print("\n".join(found))
    return 1 if found or not pages else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
