#!/usr/bin/env python3
"""Keeps the tables of docs/reference/ the same as the code that they tell of.

    scripts/describe_reference.py --update build/release/qvpctl    rewrite every table in place
    scripts/describe_reference.py --check build/release/qvpctl     exit 1 and show the lines that differ

A table stands in a page between the lines "<!-- table NAME [WORD] -->" and "<!-- end -->".
"""
import argparse
import difflib
import json
import pathlib
import re
import subprocess
import sys

from handler_code import Commands
from store_key_uses import READ, WRITE, Uses

TOP = pathlib.Path(__file__).resolve().parent.parent
BLOCK = re.compile(r"(<!-- table ([\w-]+)(?: ([\w-]+))? -->\n).*?(<!-- end -->)", re.S)


def table(headings, rows):
    cells = [headings, ["---"] * len(headings), *rows]
    return "".join("| " + " | ".join(str(cell).replace("|", "\\|") for cell in row) + " |\n" for row in cells)


def source(path):
    return (TOP / path).read_text()


# --- Store keys ---


def in_short(names):
    """ "get X, set X" as "get and set X"."""
    short = []
    for name in names:
        if name.startswith("set ") and "get " + name[4:] in short:
            short[short.index("get " + name[4:])] = "get and set " + name[4:]
        else:
            short.append(name)
    return ", ".join(short) or "-"


def store_keys(_tool, _word):
    uses = Uses(TOP)
    found = uses.by_key()
    return table(["Section", "Key", "Type", "Read by", "Written by"],
                 [[f"`{section}`", f"`{key}`", kind, in_short(found[name][READ]), in_short(found[name][WRITE])]
                  for name, (section, key, kind) in uses.keys.items()])  # fmt: skip


# --- Time zones ---


def time_zones(_tool, _word):
    names = dict(re.findall(r'^    \{(\d+), +"([^"]+)", +"[^"]+" *\},', source("client/time_zones.cpp"), re.M))
    rows = re.findall(r'^    \{(\d+), +(\d+), +"[^"]+", +"([^"]+)" *\},', source("platform/linux/time_zone/zone_table.cpp"), re.M)
    return table(["Number", "Name", "Places", "In the store"],
                 [[wire, f"`{names[wire]}`", places, stored] for stored, wire, places in rows])


# --- The tool's settings ---


def groups():
    """By group: its name and effect, how long it takes the camera away, and what reads and writes it on the wire."""
    commands, session, change = Commands(TOP), source("client/session/session.cpp"), source("client/settings/change.cpp")
    order = re.search(r"enum class Group \{ ([^}]+) \}", source("client/settings/setting.h")).group(1).split(", ")
    facts = re.findall(r'^    \{"([^"]+)", +"([^"]+)", +std::chrono::seconds\((\d+)\) *\},', source("client/settings/setting.cpp"), re.M)
    reads = dict(re.findall(r"case Group::(\w+):\n +state\.\w+ = \w+\(ask\(opcode::(\w+)", session))
    writes = dict(re.findall(r"case Group::(\w+):\n +return \{opcode::(\w+)", change))
    writes["Basic"] = re.search(r"\n    return \{opcode::(\w+), encodeBasic", change).group(1)
    reads["Basic"] = re.search(r"identify\(\).*?ask\(opcode::(\w+)", session, re.S).group(1)
    tell = lambda opcode: f"{commands.name[opcode]} (0x{commands.number[opcode]:04X})"  # noqa: E731
    return {group: (*fact, tell(reads[group]) if group in reads else None, tell(writes[group])) for group, fact in zip(order, facts)}


def kinds():
    """By setting: its group, and whether it is read only or a secret."""
    found = {}
    for path in sorted((TOP / "client/settings").glob("*_rows.cpp")):
        for row in re.split(r"^    \{(?=\.key)", path.read_text(), flags=re.M)[1:]:
            key, group = re.search(r'\.key = "([^"]+)"', row).group(1), re.search(r"Group::(\w+)", row).group(1)
            found[key] = (group, "secret" if ".setSecret" in row else "" if ".set = " in row else "read only")
    return found


def settings(tool, _word):
    told = re.findall(r"^  (\S+) +(.*)\n {24}(.*)\n(?: {24}\((.*)\)\n)?", help_text(tool, "settings"), re.M)
    found, facts, rows = kinds(), groups(), {}
    assert sorted(found) == sorted(key for key, *_ in told), "the tool lists others"
    for key, summary, values, quirk in told:
        group, kind = found[key]
        rows.setdefault(group, []).append([f"`{key}`", summary, values, "; ".join(note for note in (kind, quirk) if note)])
    page = ""
    for group, lines in rows.items():
        name, effect, away, read, write = facts[group]
        reading = f"Read by {read}. " if read else "No camera tells it. "
        waiting = f" That may take {away} seconds; `set` waits up to {3 * int(away)}." if int(away) else ""
        page += f"\n## {name.capitalize()}\n\n{reading}Written by {write}: the camera {effect}.{waiting}\n\n"
        page += table(["Setting", "What it is", "Values", "Note"], lines)
    return page.lstrip("\n")


# --- How the tool ends, and its JSON ---


def help_text(tool, topic):
    return subprocess.run([tool, "help", topic], capture_output=True, text=True, check=True).stdout


def exit_statuses(tool, _word):
    code = source("qvpctl/exit_code.cpp")
    numbers = dict(re.findall(r"^    (k\w+) = (\d),", source("qvpctl/exit_code.h"), re.M))
    words = {"2": ["usage"]}
    for constant, word in re.findall(r'return \{(k\w+), "([\w-]+)"\};\n(?!\})', code):
        words.setdefault(numbers[constant], []).append(word)
    return table(["Status", "Meaning", "`code` in JSON"],
                 [[status, meaning, ", ".join(f"`{word}`" for word in words.get(status, [])) or "-"]
                  for status, meaning in re.findall(r"^  (\d)  (.*)", help_text(tool, "exit-status"), re.M)])  # fmt: skip


WHOLE_SCHEMA = json.loads(source("docs/qvpctl.schema.json"))
SCHEMA = WHOLE_SCHEMA["$defs"]
KNOWN = {"mac": "MAC", "address": "IPv4 address", "number16": "number, 0 to 65535", "opcode": "text, `0x` and four digits",
         "key": "name of a setting", "header": "object, see [the header](#the-header)"}  # fmt: skip


def resolved(form):
    while "$ref" in form:
        form = SCHEMA[form["$ref"].removeprefix("#/$defs/")]
    return form


def type_of(form):
    if "$ref" in form:
        return KNOWN.get(form["$ref"].removeprefix("#/$defs/")) or type_of(resolved(form))
    if "properties" in form:
        return "object of " + ", ".join(f"`{name}`" for name in form["properties"])
    if "oneOf" in form:
        return " or ".join(type_of(one) for one in form["oneOf"])
    if "enum" in form:
        return ", ".join("null" if word is None else f"`{word}`" for word in form["enum"])
    names = {"string": "text", "integer": "number", "boolean": "true or false", "null": "null", "object": "object"}
    kinds = form["type"] if isinstance(form["type"], list) else [form["type"]]
    texts = [f"list of: {type_of(form['items'])}" if kind == "array" else names[kind] for kind in kinds]
    if "maximum" in form:
        texts[0] += f", {form['minimum']} to {form['maximum']}"
    return " or ".join(texts)


def field_rows(form, prefix=""):
    """Objects inside are opened; of several kinds of line, one after the other."""
    if "oneOf" in form:
        for one in form["oneOf"]:
            yield from field_rows(resolved(one), prefix)
        return
    for name, field in form["properties"].items():
        if "properties" in field:
            yield from field_rows(field, f"{prefix}{name}.")
        else:
            yield [f"`{prefix}{name}`", type_of(field), field.get("description", "")]


def fields(_tool, command):
    return table(["Field", "Type", "What it says"], field_rows(resolved(SCHEMA[command])))


TABLES = {"store-keys": store_keys, "time-zones": time_zones, "settings": settings, "exit-statuses": exit_statuses, "fields": fields}


def described(text, tool, shown):
    def render(match):
        shown.add((match.group(2), match.group(3)))
        return match.group(1) + TABLES[match.group(2)](tool, match.group(3)) + match.group(4)

    return BLOCK.sub(render, text)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--update", action="store_true", help="rewrite the tables")
    action.add_argument("--check", action="store_true", help="compare the tables")
    parser.add_argument("--pages", type=pathlib.Path, default=TOP / "docs/reference", help="the folder of the pages")
    parser.add_argument("tool", help="the qvpctl that was built")
    options = parser.parse_args()
    shown, differs = set(), False
    for page in sorted(options.pages.glob("*.md")):
        before = page.read_text()
        after = described(before, options.tool, shown)
        if options.update:
            page.write_text(after)
        elif before != after:
            differs = True
            print("\n".join(difflib.unified_diff(before.splitlines(), after.splitlines(), page.name, "the code", lineterm="")))
    commands = {line["$ref"].removeprefix("#/$defs/") for line in WHOLE_SCHEMA["anyOf"]} | {"header"}
    missing = {(name, None) for name in TABLES if name != "fields"} | {("fields", command) for command in commands}
    missing -= shown
    print(f"{len(shown)} tables;", *(["without one:", *sorted(str(one) for one in missing)] if missing else []))
    return 1 if differs or missing else 0


if __name__ == "__main__":
    sys.exit(main())
