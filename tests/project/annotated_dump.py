"""A datagram field by field: where it stands, its bytes, its name, and what they say."""
import base64
import re

ROW_BYTES = 16
WIDTH = 3 * ROW_BYTES + 2
LONG_RUN = 4  # zeros at a field's end, from that many on counted instead of shown
BASE64 = ("user", "password", "new_password")
IN_HEX = ("opcode", "status", "mode_encryption", "auth_key_length", "key_format_active", "type_cipher", "authentication_channel")


class Field:
    def __init__(self, offset, name, kind, data, width):
        self.offset, self.name, self.kind, self.data = offset, name, kind, data
        self.width = width  # of the layout: a datagram may end within its last text

    def tokens(self, masked):
        """The first `masked` bytes as dots."""
        shown = len(self.data.rstrip(b"\0"))
        shown += shown % 2 if self.kind == "Le16" else 0
        zeros = len(self.data) - shown
        if zeros < LONG_RUN:
            shown, zeros = len(self.data), 0
        tokens = [f"{byte:02x}" for byte in self.data[:shown]] + [f"00*{zeros}"] * (zeros > 0)
        return [".."] * masked + tokens[masked:]

    def meaning(self):
        """Of numbers, addresses and texts; empty for other bytes."""
        if self.kind == "Mac":
            return self.data.hex(":")
        if self.kind == "Ipv4":
            return ".".join(str(byte) for byte in self.data)
        if self.kind in ("Le16", "Le32", "Be16", "Be32"):
            if len(self.data) > int(self.kind[2:]) // 8:
                codes = (int.from_bytes(self.data[i : i + 2], "little") for i in range(0, len(self.data), 2))
                return " ".join(f"{code:04x}" for code in codes if code)
            number = int.from_bytes(self.data, "little" if self.kind.startswith("Le") else "big")
            return f"0x{number:04X}" if self.name in IN_HEX else str(number)
        if self.width == 1:
            return f"0x{self.data[0]:02X}" if self.name.split(".")[-1] in IN_HEX else str(self.data[0])
        return self._text() if len(self.data) >= 14 else ""

    def _text(self):
        text = self.data.rstrip(b"\0").decode(errors="replace")
        if not text or not text.isprintable():
            return ""
        if self.name in BASE64:
            return f'"{text}", Base64 of "{base64.b64decode(text).decode()}"'
        return f'"{text}"'


def fields_of(layouts, struct, data, offset=0, prefix=""):
    """The leaves of a layout, as far as the datagram reaches."""
    for kind, name, dimensions, _ in layouts.structs[struct]:
        count = 1
        width = layouts.size(kind)
        if dimensions and (kind in layouts.structs or len(dimensions) > 1):
            count, dimensions = dimensions[0], dimensions[1:]
        for number in dimensions:
            width *= number
        for index in range(count):
            part = data[offset : offset + width]
            full = f"{prefix}{name}" + (f"[{index}]" if count > 1 else "")
            if kind in layouts.structs:
                opens = f"{full}." if count > 1 else prefix
                yield from fields_of(layouts, kind, data, offset, opens)
            elif part:
                yield Field(offset, full, kind, part, width)
            offset += width


def lines_of(field, mask):
    masked, note = mask or (0, field.meaning())
    tokens = field.tokens(masked)
    rows = [tokens[i : i + ROW_BYTES] for i in range(0, len(tokens), ROW_BYTES)]
    for index, row in enumerate(rows):
        label = f"{field.name}  {note}" if index == 0 else ""
        yield f"{field.offset + index * ROW_BYTES:4}  {' '.join(row):<{WIDTH - 1}} {label}".rstrip()


def header_in_short(data):
    return [f"   0  {data[:ROW_BYTES].hex(' '):<{WIDTH}}the header", f"  16  {data[ROW_BYTES:22].hex(' ')}"]


def same_entries(fields):
    """The fields without the entries of a list that are the same as the ones before, and how many those are."""
    entries = {}
    for field in fields:
        if entry := re.match(r"entries\[(\d+)\]\.", field.name):
            entries.setdefault(int(entry.group(1)), []).append(field)
    content = {index: [field.data for field in entry] for index, entry in entries.items()}
    repeated = [index for index in content if index and content[index] == content[index - 1]]
    left_out = [field for index in repeated for field in entries[index]]
    return [field for field in fields if field not in left_out], repeated


def annotated(layouts, struct, data, masks, open_header=False):
    """The lines of a datagram; `masks` has, by field, how many of its bytes differ from run to run, and what they are."""
    fields, repeated = same_entries(list(fields_of(layouts, struct, data)))
    lines = [] if open_header else header_in_short(data)
    for field in fields:
        if field.offset < 22 and not open_header:
            continue
        if repeated and field.name == "reserved":  # what stands behind the entries
            lines.append(f"      the same in entries {repeated[0]} to {repeated[-1]}")
        lines += lines_of(field, masks.get(field.name))
    return lines
