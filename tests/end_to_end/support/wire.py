"""Datagrams, byte by byte. Every offset counts from the datagram's first byte."""
import base64
import itertools
import struct

PORT = 62976
EVERYONE = "255.255.255.255"
BROADCAST_MAC = b"\xff" * 6
BY_MAC = 0x7777  # the selector of a request to one camera
PRIMARY = 2
LANDAP = 1
FAMILIES = (PRIMARY, LANDAP)

_sequence = itertools.count(0x0102)


def le16(number):
    return struct.pack("<H", number)


def le32(number):
    return struct.pack("<I", number)


def compose(length, fields):
    """`length` zero bytes with each of `fields`, {offset: bytes}, put in its place."""
    datagram = bytearray(length)
    for offset, data in fields.items():
        assert offset + len(data) <= length, f"{len(data)} bytes at {offset} do not fit into {length}"
        datagram[offset : offset + len(data)] = data
    return bytes(datagram)


def request(opcode, mac=BROADCAST_MAC, *, protocol=PRIMARY, selector=0, address=bytes(4), magic=b"\xfd\xfd",
            sequence=None, payload_length=0, length=22, fields=None):
    """A request: the header, the `fields` behind it, and as many zero bytes as `length` asks for."""
    header = {
        0: magic,
        2: le16(next(_sequence) & 0xFFFF if sequence is None else sequence),
        4: le16(opcode),
        6: mac,
        12: address,
        16: le16(selector),
        18: le16(protocol),
        20: le16(payload_length),
    }
    fields = fields or {}
    ends = (offset + len(data) for offset, data in fields.items())
    return compose(max(length, 22, *ends), header | fields)


def text_field(text, width):
    assert len(text) <= width
    return text.ljust(width, b"\0")


def credentials(user=b"admin", password=b"admin"):
    """The two fields of a protected request."""
    return {22: text_field(base64.b64encode(user), 64), 86: text_field(base64.b64encode(password), 64)}


def protected(opcode, camera, fields=None, *, protocol=PRIMARY, password=b"admin", **others):
    """A request to one camera with the administrator's credentials."""
    return request(opcode, camera.mac, selector=BY_MAC, protocol=protocol,
                   fields=credentials(password=password) | (fields or {}), **others)


def reply(asked, camera, length, fields=None, status=0, address=None):
    """The whole reply that `asked` has to get: its header, `fields`, and zero bytes."""
    header = {
        0: b"\xee\xfe",
        2: asked[2:6],
        6: camera.mac,
        12: ip(camera.address if address is None else address),
        16: le16(status),
        18: asked[18:20],
        20: le16(length - 22),
    }
    return compose(length, header | (fields or {}))


def ip(text):
    return bytes(int(part) for part in text.split("."))
