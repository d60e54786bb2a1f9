"""Datagrams that are not of this protocol, though they have something of it; and those that are, on other ports."""
from capture import PORT
from oddities import EVERYONE, REPLY, REPORT, REQUEST, STRANGER, spoiled
from support.wire import LANDAP, le16

HERE, THERE = "198.18.0.7", "198.18.0.8"


def strangers():
    """On the protocol's own port."""
    yield 53, b"\xfd\xfd\x81\x80\0\1\0\0\0\0\0\0\7example\3com\0\0\1\0\1"  # a name server's answer to that port
    yield 40000, b"\xff\xff\xff\xff\x54Source Engine Query\0"
    yield 40000, b"\x80\x60" + bytes(170)
    yield 40000, b"\xfe\xee" + bytes(483)
    yield 40000, b"\xff\xff\xa0\0" + bytes(300)
    yield 40000, b"\xfd"
    yield 40000, b"\xff\xff\0\0\xa0"
    yield 40000, b""


def sound(odd):
    """What is recognised on every port."""
    for magic, opcodes in {REQUEST: (0x00A1, 0x00A2, 0x00A4, 0x00A5, 0x00A9, 0x00AC, 0x00AD, 0x0103),
                           REPLY: (0x00A1, 0x00A2, 0x00A5, 0x00A8, 0x00AC, 0x00AE, 0x0200), REPORT: (0x00A0,)}.items():
        for opcode in opcodes:
            yield odd.real(magic, opcode)
    yield odd.real(REQUEST, 0x00A1, LANDAP)
    yield odd.real(REPLY, 0x00A1, LANDAP)
    yield odd.real(REQUEST, 0x00A5, LANDAP)
    yield spoiled(odd.real(REQUEST, 0x00AC), {20: le16(0)})  # cameras do not look at it


def unsound(odd):
    """On any other port one wrong field is enough."""
    asked, answered, report = odd.real(REQUEST, 0x00AC), odd.real(REPLY, 0x00AC), odd.real(REPORT, 0x00A0)
    everyone = odd.real(REQUEST, 0x00A1)
    for datagram in (asked, answered, report):
        yield spoiled(datagram, {0: b"\xfd\xfe"})
        yield spoiled(datagram, {4: le16(0x00AA)})
        yield spoiled(datagram, {16: le16(5)})
        yield spoiled(datagram, {18: le16(3)})
        yield spoiled(datagram, {20: le16(5)})
        yield spoiled(datagram, {6: bytes(6)})
        length = len(datagram) - 22
        yield datagram[:-1]
        yield datagram + b"\0"
        yield spoiled(datagram[:-1], {20: le16(length - 1)})
        yield spoiled(datagram + b"\0", {20: le16(length + 1)})
    yield spoiled(answered, {6: EVERYONE})
    yield spoiled(report, {18: le16(LANDAP)})
    yield spoiled(report, {16: le16(2)})
    yield spoiled(asked, {6: EVERYONE})
    yield spoiled(everyone, {12: STRANGER[:4]})
    yield spoiled(everyone, {16: le16(0x7777)})
    yield spoiled(odd.real(REQUEST, 0x0103), {18: le16(LANDAP)})
    yield everyone[:21]


class LookAlikes:
    def __init__(self, capture, odd):
        self.strangers = [capture.udp((HERE, port), (THERE, PORT), payload) for port, payload in strangers()]
        # Each on a port of its own: what some protocol takes for its own once, it is given from then on.
        self.sound = [capture.udp((HERE, port), (THERE, 40000), data) for port, data in enumerate(sound(odd), 42000)]
        self.unsound = [capture.udp((HERE, port), (THERE, 40000), data) for port, data in enumerate(unsound(odd), 43000)]
