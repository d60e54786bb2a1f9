"""What the dissector in wireshark/ knows of the protocol, as a Lua table: layouts and constants from the headers of
protocol/, commands and refusals in the words of docs/protocol.md, time zones as the tool numbers them."""
import re
import sys

CONSTANT = re.compile(r"^constexpr (?:uint\d+_t|size_t)\s+(k\w+)\s*= (\w+);", re.M)
ZONE = re.compile(r'^    \{(\d+), +"([^"]+)", +"[^"]+" *\},', re.M)
HEADING = """\
-- What the dissector knows of the protocol. Made by `scripts/describe_protocol.py --update wireshark/qvp/tables.lua` from
-- protocol/, docs/protocol.md and client/time_zones.cpp, and compared with them by a test: not to be edited by hand.
"""


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def constants_of(path):
    return {name: int(value, 0) for name, value in CONSTANT.findall(path.read_text())}


def column_table(document, *wanted):
    """The rows of the document's one table that has the wanted columns, each a dict."""
    tables = re.findall(r"(?:^\|.*\n)+", document, re.M)
    for lines in map(str.splitlines, tables):
        heading, _, *rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]
        if set(wanted) <= set(heading):
            return [dict(zip(heading, row)) for row in rows]
    sys.exit(f"no table with the columns {', '.join(wanted)}")


def display_kind(kind, name, dimensions, comment):
    """How a field is shown: what its type says, or for bytes what their comment says."""
    if kind != "uint8_t":
        return kind
    if not dimensions and not name.startswith("reserved"):
        return "byte"
    return "base64" if "Base64" in comment else "text" if re.search(r"\btext\b", comment) else "bytes"


def layout_lines(layouts, struct):
    yield f"        {struct} = {{"
    yield f"            size = {layouts.size(struct)},"
    for field in layouts.structs[struct]:
        kind, name, dimensions, comment = field
        shown = display_kind(kind, name, dimensions, comment)
        count = dimensions[0] if dimensions and (kind != "uint8_t" or len(dimensions) > 1) else 1
        offset, width = layouts.offset(struct, name), layouts.width(field) // count
        row = [str(offset), str(width), quoted(name), quoted(shown), quoted(comment), *([str(count)] if count > 1 else [])]
        yield f"            {{{', '.join(row)}}},"
    yield "        },"


def layout_name(cell):
    found = re.search(r"`([A-Z]\w+)`", cell)
    return quoted(found[1]) if found else "nil"


def command_lines(document, opcodes):
    rows = column_table(document, "Opcode", "Command", "Protected", "Request", "Reply", "landap")
    told = {int(row["Opcode"], 0) for row in rows}
    if missing := set(opcodes.values()) - told - {opcodes["kPresenceReport"]}:
        sys.exit(f"no command with the opcodes {sorted(missing)} in the document")
    for row in rows:
        reply, landap = layout_name(row["Reply"]), layout_name(row["landap"])
        yield f"        [{int(row['Opcode'], 0):#06x}] = {{"
        yield f"            title = {quoted(row['Command'])},"
        yield f"            request = {layout_name(row['Request'])},"
        yield f"            reply = {reply},"
        yield f"            landap_reply = {'nil' if row['landap'] == '-' else reply if landap == 'nil' else landap},"
        yield "        },"


def refusal_lines(document, codes):
    rows = column_table(document, "Result", "Refused because")
    if {int(row["Result"]) for row in rows} != set(codes.values()) - {0}:
        sys.exit("the document and result_codes.h have different result codes")
    for row in rows:
        yield f"        [{row['Result']}] = {quoted(row['Refused because'])},"


def block(name, lines):
    return [f"    {name} = {{", *lines, "    },"]


def dissector_tables(layouts, top):
    document = (top / "docs/protocol.md").read_text()
    header = constants_of(top / "protocol/packet_header.h")
    opcodes = constants_of(top / "protocol/opcodes.h")
    refusals = constants_of(top / "protocol/result_codes.h")
    zones = ZONE.findall((top / "client/time_zones.cpp").read_text())
    lines = [
        *block("constants", [f"        {name} = {value:#x}," for name, value in (header | opcodes).items()]),
        *block("order", [f"        {quoted(struct)}," for struct in layouts.structs]),
        *block("layouts", [line for struct in layouts.structs for line in layout_lines(layouts, struct)]),
        *block("commands", command_lines(document, opcodes)),
        *block("refusals", refusal_lines(document, refusals)),
        *block("zones", [f"        [{number}] = {quoted(name)}," for number, name in zones]),
    ]
    return HEADING + "return {\n" + "\n".join(lines) + "\n}\n"
