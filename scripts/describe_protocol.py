#!/usr/bin/env python3
"""Keeps the tables of docs/protocol.md the same as the layouts of protocol/.

    scripts/describe_protocol.py --update docs/protocol.md    rewrite every table in place
    scripts/describe_protocol.py --check docs/protocol.md     exit 1 and name the tables that differ

The same makes and checks the tables of the Wireshark dissector, which are a file by themselves:

    scripts/describe_protocol.py --update wireshark/qvp/tables.lua

A table stands in the document between the lines "<!-- layout NAME [from OFFSET] -->" and "<!-- end -->": one row a field
of the struct NAME, with its offset counted from OFFSET (0 if not given), its width, its name and the comment behind it.
"""
import argparse
import difflib
import pathlib
import re
import sys

from dissector_tables import dissector_tables

PRIMITIVES = {"uint8_t": 1, "Le16": 2, "Le32": 4, "Be16": 2, "Be32": 4, "Ipv4": 4, "Mac": 6}
KINDS = {"Le16": "little-endian", "Le32": "little-endian", "Be16": "big-endian", "Be32": "big-endian"}

STRUCT = re.compile(r"^struct (\w+) \{\n(.*?)^\};", re.M | re.S)
FIELD = re.compile(r"^\s*(\w+)\s+(\w+)((?:\[\d+\])*);\s*(?://\s*(.*))?$")
SIZE = re.compile(r"static_assert\(sizeof\((\w+)\) == (\d+)\)")
OFFSET = re.compile(r"static_assert\(offsetof\((\w+), (\w+)\) == (\d+)\)")
BLOCK = re.compile(r"(<!-- layout (\w+)(?: from (\d+))? -->\n).*?(<!-- end -->)", re.S)


class Layouts:
    """The structs of a folder of headers, each a list of (type, name, dimensions, comment)."""

    def __init__(self, folder):
        texts = [path.read_text() for path in sorted(folder.glob("*.h"))]
        self.structs = {}
        for text in texts:
            for name, body in STRUCT.findall(text):
                if name not in PRIMITIVES:
                    self.structs[name] = [self._field(name, line) for line in body.splitlines() if line.strip()]
        for text in texts:
            self._prove(text)

    @staticmethod
    def _field(struct, line):
        match = FIELD.match(line)
        if not match:
            sys.exit(f"{struct}: not a field: {line.strip()}")
        kind, name, dimensions, comment = match.groups()
        return kind, name, [int(number) for number in re.findall(r"\d+", dimensions)], comment or ""

    def _prove(self, text):
        for name, size in SIZE.findall(text):
            if self.size(name) != int(size):
                sys.exit(f"{name}: read as {self.size(name)} bytes, asserted {size}")
        for name, field, offset in OFFSET.findall(text):
            if self.offset(name, field) != int(offset):
                sys.exit(f"{name}.{field}: read at {self.offset(name, field)}, asserted {offset}")

    def size(self, kind):
        if kind in PRIMITIVES:
            return PRIMITIVES[kind]
        return sum(self.width(field) for field in self.structs[kind])

    def width(self, field):
        kind, _, dimensions, _ = field
        width = self.size(kind)
        for count in dimensions:
            width *= count
        return width

    def offset(self, struct, wanted):
        offset = 0
        for field in self.structs[struct]:
            if field[1] == wanted:
                return offset
            offset += self.width(field)
        sys.exit(f"{struct} has no field {wanted}")

    def rows(self, struct, start):
        """(offset, width, name, meaning) of every field; structs inside are opened, but for the header."""
        offset = start
        for field in self.structs[struct]:
            kind, name, dimensions, comment = field
            nested = kind in self.structs and not dimensions
            if nested and kind != "PacketHeader":
                yield from self.rows(kind, offset)
            else:
                note = KINDS.get(kind)
                meaning = "as in every datagram" if kind == "PacketHeader" else comment
                yield offset, self.width(field), name, f"{note}; {meaning}" if note else meaning
            offset += self.width(field)


def table(layouts, struct, start):
    lines = ["| Offset | Width | Field | Content |", "|---:|---:|---|---|"]
    for offset, width, name, meaning in layouts.rows(struct, start):
        lines.append(f"| {offset} | {width} | `{name}` | {meaning.replace('|', chr(92) + '|')} |")
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--update", action="store_true", help="rewrite the tables")
    action.add_argument("--check", action="store_true", help="compare the tables")
    parser.add_argument("document", type=pathlib.Path)
    options = parser.parse_args()

    top = pathlib.Path(__file__).resolve().parent.parent
    layouts = Layouts(top / "protocol")
    before = options.document.read_text() if options.document.exists() else ""
    shown = set()

    def render(match):
        shown.add(match.group(2))
        return match.group(1) + table(layouts, match.group(2), int(match.group(3) or 0)) + match.group(4)

    if options.document.suffix == ".lua":
        after, missing = dissector_tables(layouts, top), []
    else:
        after = BLOCK.sub(render, before)
        missing = sorted(name for name in layouts.structs if name not in shown)
    if options.update:
        options.document.write_text(after)
    differences = difflib.unified_diff(before.splitlines(), after.splitlines(), "the document", "the layouts", lineterm="")
    if options.check and before != after:
        print("\n".join(differences))
        return 1
    if missing:
        print("layouts without a table:", ", ".join(missing))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
