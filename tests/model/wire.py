"""Datagrams as the document of the protocol lays them out. Offsets count from the datagram's first byte."""
import struct

HEADER = 22
MOST = 1024  # what is received of a datagram
LONGEST_TEXT = 255  # of a request's texts that do not end with their field
MAGIC_OF_REQUESTS = b"\xfd\xfd"
MAGIC_OF_REPLIES = b"\xee\xfe"
BY_MAC = 0x7777
PRIMARY = 2
LANDAP = 1
DONE, REFUSED, NOT_ALLOWED = 0, 2, 3


def le16(number):
    return struct.pack("<H", number & 0xFFFF)


def le32(number):
    return struct.pack("<I", number & 0xFFFFFFFF)


class Request:
    """A received datagram. What it does not reach is zero."""

    def __init__(self, datagram):
        self.bytes = datagram[:MOST].ljust(MOST, b"\0")
        self.magic = self.bytes[0:2]
        self.opcode = self.number(4)
        self.mac = self.bytes[6:12]
        self.address = self.bytes[12:16]
        self.selector = self.number(16)
        self.protocol = self.number(18)
        self.payload_length = self.number(20)

    def __getitem__(self, at):
        return self.bytes[at]

    def number(self, at):
        return struct.unpack_from("<H", self.bytes, at)[0]

    def text(self, at, most=LONGEST_TEXT):
        """Up to the first NUL, or `most` bytes."""
        return self.bytes[at : at + most].split(b"\0", 1)[0]

    def dotted(self, at):
        return b"%d.%d.%d.%d" % tuple(self.bytes[at : at + 4])


class Reply:
    """A reply whose every byte is zero but what is put there."""

    def __init__(self, request, length, mac, address):
        self.bytes = bytearray(length)
        self.put(0, MAGIC_OF_REPLIES)
        self.put(2, request.bytes[2:6])
        self.put(6, mac)
        self.put(12, address)
        self.put(18, request.bytes[18:20])
        self.put(20, le16(length - HEADER))

    def put(self, at, data):
        assert at + len(data) <= len(self.bytes)
        self.bytes[at : at + len(data)] = data

    def put_text(self, at, text, most):
        self.put(at, text[:most])

    def status(self, status):
        self.put(16, le16(status))
