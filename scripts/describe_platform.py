#!/usr/bin/env python3
"""Makes the manual page of platform/platform.h: its declarations, and its comments as the text between them.

    scripts/describe_platform.py --update docs/man/qvp-platform.3
    scripts/describe_platform.py --check docs/man/qvp-platform.3     exit 1 and show the lines that differ
"""
import argparse
import difflib
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
HEADER = TOP / "platform/platform.h"
SECTION = re.compile(r"^// --- (.*?) -+$")
FUNCTION = re.compile(r"^[a-z].*\w\(.*\);")

HEAD = """\
.\\" Made by scripts/describe_platform.py from platform/platform.h.
.TH QVP\\-PLATFORM 3
.SH NAME
qvp\\-platform \\- what the camera daemon asks of the camera it runs on
.SH SYNOPSIS
.nf
.B #include <platform.h>
"""
FOOT = """\
.SH SEE ALSO
.BR qvp (8)
"""


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("…", "\\&...")
    return "\\&" + text if text.startswith((".", "'")) else text


def blocks(lines):
    """("title", text), ("text", lines) and ("code", lines) in the order of the header; what is for the compiler alone is left out."""
    for title, part in sections(lines):
        if title:
            yield "title", title
        for paragraph in re.split(r"\n{2,}", "\n".join(part).strip("\n")):
            rows = paragraph.splitlines()
            comments = [row for row in rows if row.startswith("//")]
            text = [row.removeprefix("//").removeprefix(" ") for row in rows[: len(comments)]]
            assert comments == rows[: len(comments)], f"a comment between declarations: {paragraph}"
            while text and text[0] == "":
                text.pop(0)
            if text:
                yield "text", text
            if rows[len(comments) :]:
                yield "code", rows[len(comments) :]


def sections(lines):
    title, part = "", []
    for line in lines:
        if heading := SECTION.match(line):
            yield title, part
            title, part = heading.group(1), []
        else:
            part.append(line)
    yield title, part


def for_readers(text):
    """Without the guards and the C linkage."""
    text = re.sub(r"^#ifdef __cplusplus\n.*?^#endif\n?", "", text, flags=re.M | re.S)
    return [line for line in text.splitlines() if not line.startswith(("#pragma", "#include"))]


def paragraphs(text):
    """Comment lines; those that are indented keep their form."""
    kept, out = False, []
    for line in text:
        indented = line.startswith("  ")
        if indented != kept:
            out.append(".RS\n.nf" if indented else ".fi\n.RE")
            kept = indented
        out.append(".PP" if line == "" else roff(line.strip()))
    return out + ([".fi\n.RE"] if kept else [])


def page():
    found = list(blocks(for_readers(HEADER.read_text())))
    out, code = [HEAD.rstrip("\n")], [line for kind, lines in found if kind == "code" for line in lines]
    out += [f".B {roff(re.sub(r' *//.*', '', line))}" for line in code if FUNCTION.match(line)]
    out += [".fi", ".SH DESCRIPTION"]
    opens = True
    for kind, content in found:
        if kind == "title":
            out.append(f".SS {content}")
        else:
            out += [] if opens else [".PP"]
            out += paragraphs(content) if kind == "text" else [".nf", *(roff(line) if line.strip() else "" for line in content), ".fi"]
        opens = kind == "title"
    return "\n".join(out) + "\n" + FOOT


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--update", action="store_true")
    action.add_argument("--check", action="store_true")
    parser.add_argument("page", type=pathlib.Path)
    options = parser.parse_args()
    made, before = page(), options.page.read_text() if options.page.exists() else ""
    if options.update:
        options.page.write_text(made)
    elif made != before:
        print("\n".join(difflib.unified_diff(before.splitlines(), made.splitlines(), "the page", "the header", lineterm="")))
    return 1 if options.check and made != before else 0


if __name__ == "__main__":
    sys.exit(main())
