"""What can go wrong on a wire, made of datagrams that real cameras and a tool have sent."""
from capture import PORT, icmp_port_unreachable, udp_packet
from support.wire import LANDAP, PRIMARY, le16

REQUEST, REPLY, REPORT = b"\xfd\xfd", b"\xee\xfe", b"\xff\xff"
CAMERA = "198.18.1.1"
TOOL = "198.18.0.1"
STRANGER = bytes.fromhex("025156500099")
EVERYONE = b"\xff" * 6


def spoiled(datagram, fields):
    """With other bytes at some offsets."""
    data = bytearray(datagram)
    for offset, content in fields.items():
        data[offset : offset + len(content)] = content
    return bytes(data)


class Oddities:
    """The frames of each case are in `cases`; each case has a port of the tool to itself."""

    def __init__(self, session):
        self.session = session
        self.capture = session.capture
        self.cases = {}
        self.port = 41000
        self.exchanges()
        self.requests_for_nobody()
        self.reports()
        self.lengths()
        self.contents()
        self.parts_of_datagrams()

    def real(self, magic, opcode, family=PRIMARY):
        """The first of its kind in the session: one that was accepted."""
        wanted = magic, le16(opcode), le16(family)
        return next(data for kind, data in self.session.kinds.items() if kind[:3] == wanted)

    def begin(self, case):
        self.port += 1
        self.frames = self.cases.setdefault(case, [])

    def ask(self, datagram, **options):
        self.frames.append(self.capture.udp((TOOL, self.port), (CAMERA, PORT), datagram, **options))

    def answer(self, datagram, source=CAMERA, **options):
        self.frames.append(self.capture.udp((source, PORT), (TOOL, self.port), datagram, **options))

    def exchanges(self):
        asked, answered = self.real(REQUEST, 0x00AC), self.real(REPLY, 0x00AC)
        self.begin("retransmission, both answered")
        self.ask(asked)
        self.ask(asked, after=1000)
        self.answer(answered, after=20)
        self.answer(answered)
        self.begin("retransmission, the first answered late")
        self.ask(asked)
        self.ask(asked, after=1000)
        self.answer(spoiled(answered, {22: b"20301231235959"}), after=3000)
        self.answer(answered)
        self.begin("the same request again")
        self.ask(asked)
        self.answer(answered)
        self.ask(asked, after=1000)
        self.answer(answered)
        self.begin("no answer")
        self.ask(spoiled(asked, {6: STRANGER}))
        self.ask(spoiled(asked, {6: STRANGER}), after=1000)
        self.begin("an answer from another camera than was asked")
        self.ask(asked)
        self.answer(spoiled(answered, {6: STRANGER}), source="198.18.1.153")
        self.begin("an answer to nothing")
        self.answer(answered)
        self.begin("two requests under one sequence")
        self.ask(asked)
        self.ask(spoiled(asked, {86: b"YQ==\0\0\0\0\0"}))
        self.answer(answered)

    def requests_for_nobody(self):
        asked, everyone = self.real(REQUEST, 0x00AC), self.real(REQUEST, 0x00A1)
        for case, datagram in {
            "an unknown command": spoiled(asked, {4: le16(0x00AA)}),
            "an unknown family": spoiled(asked, {18: le16(3)}),
            "a command that landap lacks": spoiled(asked, {4: le16(0x0103), 18: le16(LANDAP)}),
            "a protected request to everyone": spoiled(asked, {6: EVERYONE}),
            "an unknown selector": spoiled(everyone, {16: le16(1)}),
            "everyone by MAC": spoiled(everyone, {16: le16(0x7777)}),
            "everyone at an address": spoiled(everyone, {12: b"\x01\x02\x03\x04"}),
        }.items():
            self.begin(case)
            self.ask(datagram)

    def reports(self):
        report = spoiled(self.real(REPORT, 0x00A0), {6: STRANGER, 150: STRANGER})
        self.begin("reports: first, next, two missing, twice, starts anew")
        for sequence, after in ((0, 1), (1, 30_000), (4, 90_000), (4, 1), (0, 20_000), (0, 20_000), (0, 1)):
            self.answer(spoiled(report, {2: le16(sequence)}), after=after)
        self.begin("reports: the counter wraps, and is lower after a start that was not heard")
        for sequence in (0xFFFF, 0, 1000, 3, 40000, 0):
            self.answer(spoiled(report, {2: le16(sequence), 6: STRANGER[::-1]}), after=30_000)

    def lengths(self):
        asked, answered = self.real(REQUEST, 0x00AC), self.real(REPLY, 0x00AC)
        self.begin("lengths: another one declared")
        self.ask(spoiled(asked, {20: le16(0)}))
        self.answer(spoiled(answered, {20: le16(101)}))
        self.begin("lengths: bytes missing in a request, a reply, a report and a header")
        self.ask(spoiled(asked[:149], {20: le16(127)}))
        self.answer(spoiled(answered[:-1], {20: le16(99)}))
        self.answer(spoiled(self.real(REPORT, 0x00A0)[:300], {20: le16(278), 6: STRANGER[1:] + b"\1"}))
        self.answer(answered[:21])
        self.begin("lengths: bytes behind the end")
        self.ask(spoiled(asked + b"12345", {20: le16(133)}))
        self.answer(spoiled(answered + b"1", {20: le16(101)}))
        self.begin("lengths: more than a camera takes")
        self.ask(spoiled(self.real(REQUEST, 0x00AD), {20: le16(1003)}).ljust(1025, b"x"))

    def contents(self):
        asked, answered = self.real(REQUEST, 0x00AC), self.real(REPLY, 0x00A7)
        self.begin("credentials that are not Base64")
        self.ask(spoiled(asked, {22: b"admin", 86: b"=Orchid77-old"}))
        self.begin("credentials without an end")
        self.ask(spoiled(asked, {22: b"YWRtaW4h" * 16}))
        self.begin("names of control characters and bytes that are no UTF-8")
        self.answer(spoiled(self.real(REPLY, 0x00A1), {226: b"\x1b[31m\xff\xc3\x28\0"}))
        for case, fields in {
            "refused without a reason": {16: le16(2)},
            "refused for an unknown reason": {16: le16(2), 22: le16(999)},
            "an unknown status": {16: le16(9)},
        }.items():
            self.begin(case)
            self.answer(spoiled(answered, fields))

    def parts_of_datagrams(self):
        asked, answered = self.real(REQUEST, 0x00A1), self.real(REPLY, 0x00A1)
        self.begin("cut by the capture, within a field and within the header")
        self.ask(asked)
        self.answer(answered, captured=28 + 100)
        self.answer(answered, captured=28 + 10)
        self.begin("quoted by an ICMP error")
        self.ask(asked)
        self.answer(answered)
        packet = udp_packet((CAMERA, PORT), (TOOL, self.port), spoiled(answered, {16: le16(2)}))
        self.frames.append(self.capture.add(icmp_port_unreachable(TOOL, CAMERA, packet[:200])))
