"""The list of networks: the driver's text, and the datagram that tells of it."""
import io
import re

SIZE = 21844  # of the buffer that holds the text
SLOTS = 20
ENTRY = 36
CONTINUED = 744
LONGEST_LINE = 1023
UNKNOWN = 15
COLUMNS = {"channel": (0, 4), "ssid": (4, 33), "security": (57, 23), "signal": (80, 10), "type": (98, 2)}


def filled(text):
    """The buffer behind a scan; no text leaves it empty."""
    return (text or b"")[: SIZE - 1].ljust(SIZE, b"\0")


def stripped(column):
    """Without its trailing blanks, also those in front of NULs."""
    return re.sub(rb"[ \0]*\Z", b"", column).split(b"\0", 1)[0]


def decimal(text):
    match = re.match(rb"\s*([+-]?[0-9]+)", text)
    return int(match[1]) if match else 0


def cipher(security):
    tkip, aes = b"TKIP" in security, b"AES" in security
    if tkip != aes:
        return 2 if tkip else 3
    return 4


def codes(security):
    """Authentication and cipher."""
    if b"NONE" in security:
        return 0, 0
    if b"WEP" in security:
        return 0, 1
    if b"WPAPSK" in security:
        return 3, cipher(security)
    if b"WPA1PSK" in security:
        return (5, cipher(security)) if b"WPA2PSK" in security else (UNKNOWN, UNKNOWN)
    if b"WPA2PSK" in security:
        return 4, cipher(security)
    return UNKNOWN, UNKNOWN


def entry(line):
    # What a line does not reach of its columns is empty.
    column = {name: stripped(line[at : at + width].split(b"\0", 1)[0]) for name, (at, width) in COLUMNS.items()}
    authentication, ciphers = codes(column["security"])
    other_type = 0 if b"In" in column["type"] else 1
    return column["ssid"][:32].ljust(33, b"\0") + bytes([
        decimal(column["signal"]) & 0xFF,
        other_type | ciphers << 4,
        authentication | (decimal(column["channel"]) << 4 & 0xFF),
    ])  # fmt: skip


def put_list(buffer, reply):
    """The one datagram that the list makes; whether there is anything to tell."""
    lines = io.BytesIO(buffer)
    lines.readline(LONGEST_LINE)  # the heading
    for slot in range(SLOTS):
        line = lines.readline(LONGEST_LINE)
        if not line:
            return slot > 0
        reply.put(22 + ENTRY * slot, entry(line))
    if lines.readline(LONGEST_LINE):
        reply.put(CONTINUED, b"\xff\xff")
    return True
