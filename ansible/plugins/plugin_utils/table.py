"""The table of a site: what each of its cameras is to become, in the form that `qvpctl apply` takes."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

import csv
import io
import re

from ansible_collections.qvp.cameras.plugins.plugin_utils.discovery import MAC

ESCAPE = re.compile(r"\\(?:(\\)|x([0-9A-Fa-f]{2})|u\{([0-9A-Fa-f]{1,6})\})")


class TableError(Exception):
    """What is wrong, and in which line."""


def plain(text):
    """What a cell stands for: a quote in front guards a formula, and a backslash begins an escape."""
    if re.match(r"'[=+@-]", text):
        text = text[1:]

    def character(match):
        return match.group(1) or chr(int(match.group(2) or match.group(3), 16))
    return ESCAPE.sub(character, text)


def dialect_of(text):
    """Spreadsheets save with commas, or with semicolons where the comma is in numbers."""
    heading = text.split("\n", 1)[0]
    return ";" if heading.count(";") > heading.count(",") else ","


def refuse_twins(line, kind, value, seen):
    if value and value in seen:
        raise TableError("line %d: %s %s stands in line %d already" % (line, kind, value, seen[value]))
    seen[value] = line


def parse(content):
    """{mac: {key: text}} of the cells that are not empty. Throws TableError."""
    text = content.decode("utf-8-sig")
    rows = csv.reader(io.StringIO(text, newline=""), delimiter=dialect_of(text), strict=True)
    heading = [name.strip() for name in next(rows, [])]
    if "mac" not in heading:
        raise TableError("line 1: no column is named mac")
    table, macs, addresses = {}, {}, {}
    for row in rows:
        cells = {name: plain(value) for name, value in zip(heading, row) if value}
        if not cells:
            continue
        mac = cells.pop("mac", "").strip().lower().replace("-", ":")
        if not MAC.match(mac) or len(row) > len(heading):
            raise TableError("line %d: %s" % (rows.line_num, "a cell has no heading" if MAC.match(mac) else
                                              "mac must be of the form 02:00:5e:10:00:01"))
        refuse_twins(rows.line_num, "mac", mac, macs)
        refuse_twins(rows.line_num, "ipv4.address", cells.get("ipv4.address", "").split("/")[0], addresses)
        table[mac] = cells
    return table


def read(path):
    try:
        with open(path, "rb") as file:
            return parse(file.read())
    except OSError as error:
        raise TableError("cannot be read: %s" % error.strerror)
    except UnicodeDecodeError:
        raise TableError("is not UTF-8")
    except csv.Error as error:
        raise TableError(str(error))
