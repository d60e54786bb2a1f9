"""Random requests: sound ones of every command in both families, sound ones that are then spoiled, and mere bytes."""
import base64
import struct

import draw
from camera import COMMANDS
from wire import BY_MAC, LANDAP, PRIMARY, le16

EVERYBODY = b"\xff" * 6
UNKNOWN_OPCODES = (0x00A0, 0x00AA, 0x00B2, 0x00BF, 0x00C1, 0x0100, 0x0102, 0x0104, 0x01A1, 0x0201, 0xA100, 0xFFFF)
EDGES = (0, 1, 2, 3, 5, 127, 128, 254, 255)
LENGTHS = (0, 1, 18, 20, 21, 22, 23, 85, 86, 149, 150, 151, 213, 218, 219, 220, 239, 281, 282, 1023, 1024, 1025, 1400)
TURNS = ((1970, 1, 1), (2024, 3, 31), (2024, 10, 27), (2024, 11, 3), (2050, 4, 3))
TEXT_OF_36 = (0, 1, 34, 35, 36, 60, 255, 300)
TEXT_OF_64 = (0, 1, 7, 62, 63, 64, 65, 128, 255, 300)


class Requests:
    def __init__(self, random, camera):
        self.random = random
        self.camera = camera
        self.usual = {0xA2: self.basic_info, 0xA4: self.password, 0xA7: self.network, 0xA9: self.wifi,
                      0xAD: self.datetime, 0xB0: self.simple_wifi}  # fmt: skip

    def often(self, probability):
        return draw.often(self.random, probability)

    def next(self):
        if self.often(0.01):
            return self.random.randbytes(self.random.choice(LENGTHS))
        opcode = self.random.choice(list(COMMANDS))
        family = PRIMARY if self.often(0.5) else LANDAP
        datagram = self.sound(opcode, family)
        return self.spoiled(datagram) if self.often(0.4) else bytes(datagram)

    def sound(self, opcode, family):
        datagram = bytearray(22)
        broadcast = opcode in (0xA1, 0xA5) and self.often(0.5)
        mac = EVERYBODY if broadcast else self.camera.board.mac
        selector = 0 if broadcast else self.random.choice((0, BY_MAC))
        struct.pack_into("<2sHH6s4sHHH", datagram, 0, b"\xfd\xfd", self.random.getrandbits(16), opcode, mac, bytes(4),
                         selector, family, 0)
        if COMMANDS[opcode].protected or self.often(0.2):
            datagram += self.credentials()
            datagram[20:22] = le16(128)
        fields = self.usual.get(opcode, dict)()
        for at, data in sorted(fields.items()):
            if len(datagram) < at + len(data):
                datagram += bytes(at + len(data) - len(datagram))
            datagram[at : at + len(data)] = data
        return datagram

    # Fields.

    def byte(self, *usual):
        """One of the usual values, or now and then any."""
        return bytes([draw.number(self.random, usual, EDGES)])

    def base64(self, text):
        encoded = base64.b64encode(text[:48])
        if self.often(0.05):
            encoded = encoded.rstrip(b"=")
        if self.often(0.03):
            encoded += self.random.choice((b"=", b"\n", b"!A", b"AA"))
        return encoded[:64].ljust(64, b"\0")

    def credentials(self):
        settings = self.camera.settings
        user, password = (settings.text("USER_ADMIN", key) for key in ("Username1", "Password1"))
        if self.often(0.04):
            user = self.random.choice((b"", user.upper(), user + b"x", user[:-1], b"admin"))
        if self.often(0.04):
            password = self.random.choice((b"", password.swapcase(), password + b"x", password[:-1], b"admin"))
        return self.base64(user) + self.base64(password)

    def text(self, lengths, alphabet=None):
        """With its NUL, or now and then without one."""
        return draw.text(self.random, lengths, alphabet) + (b"" if self.often(0.05) else b"\0")

    def basic_info(self):
        port = draw.number(self.random, (80, 8080, 65535, 1, 8087, 8089, 256), (0, 8088))
        return {150: self.text(TEXT_OF_64)[:64], 214: self.random.randbytes(24), 218: le16(port), 238: self.byte(0, 1)}

    def password(self):
        new = draw.text(self.random, (0, 1, 5, 44, 45, 46, 47, 48))
        if self.often(0.1):
            new += b"\0hidden"
        return {150: self.random.randbytes(64), 214: self.base64(new)}

    def network(self):
        return {
            151: self.random.randbytes(128),
            150: self.byte(0, 1),
            279: self.random.randbytes(1),
            280: self.byte(0, 1, 2, 3, 3),
            281: self.byte(0),
            282: self.text(TEXT_OF_64),
            346: self.text(TEXT_OF_64),
            410: self.text(TEXT_OF_64),
        }  # fmt: skip

    def key(self, encryption):
        if encryption == 1:
            return self.text((0, 5, 10, 13, 26), self.random.choice((draw.HEXADECIMAL, draw.PRINTABLE)))
        alphabet = self.random.choice((draw.HEXADECIMAL, draw.PRINTABLE, draw.PRINTABLE, draw.ANY))
        return self.text((7, 8, 9, 62, 63, 64, 65), alphabet)

    def fitting_key(self, key_format, length):
        """A WEP key that is one, most of the time."""
        wanted = {(0, 0): 5, (0, 1): 13, (1, 0): 10, (1, 1): 26}.get((key_format, length), 5) + self.often(0.05)
        alphabet = draw.HEXADECIMAL if key_format else draw.PRINTABLE
        if self.often(0.15):
            alphabet = self.random.choice((draw.PRINTABLE, draw.ANY))
        return bytes(self.random.choices(alphabet, k=wanted)) + b"\0"

    def nibbles(self, *values):
        low, high = (draw.number(self.random, usual, range(16)) for usual in values)
        return low, high, bytes([low | high << 4])

    def channel(self):
        """Mostly one of the region's."""
        region = str(self.camera.settings.number("HWMIB", "Region"))
        return self.byte(*(self.camera.board.channels.get(region) or (1, 6)))

    def wifi(self):
        _, encryption, modes = self.nibbles((0, 1), range(5))
        _, length, codes = self.nibbles((0, 1, 3, 4, 5), (0, 1))
        key_format, active, keys = self.nibbles((0, 1), range(4))
        fields = {192 + 32 * index: self.key(1)[:32] for index in range(4) if self.often(0.3)}
        fields |= {150: self.byte(1), 151: self.channel(), 152: self.text(TEXT_OF_36), 320: self.key(4),
                   188: modes + codes + keys}  # fmt: skip
        if encryption == 1 and active < 4:
            fields[192 + 32 * active] = self.fitting_key(key_format, length)
        if self.often(0.7):
            fields[152] = fields[152][:36]
        return fields

    def simple_wifi(self):
        settings = self.camera.settings
        encryption = draw.number(self.random, range(5), range(16))
        key = self.key(encryption)
        if encryption == 1 and self.often(0.8):
            key = self.fitting_key(settings.number("WIRELESS", "WEPKeyFormat"),
                                   settings.number("WIRELESS", "WEPKeyLength"))
        return {150: self.byte(1), 151: self.text(TEXT_OF_36)[:36], 187: self.byte(0, 1), 188: self.byte(0, 1, 6, 36),
                189: self.byte(0, 1, 3, 4, 5), 190: bytes([encryption]), 191: key}  # fmt: skip

    def datetime(self):
        zones = list(self.camera.zones.stored)
        zone = draw.number(self.random, zones, (0, 149, 255, 256, 257, 0x3300, 0xFFFF))
        return {150: self.time(), 166: le16(zone), 168: self.byte(0, 1), 169: self.byte(0, 1, 0),
                170: self.text(TEXT_OF_64)}  # fmt: skip

    def time(self):
        if self.often(0.3):
            return b"0" * 14
        ranges = ((1970, 2100), (1, 12), (1, 31), (1, 23), (1, 59), (1, 59))
        numbers = [self.random.randint(*bounds) for bounds in ranges]
        if self.often(0.3):
            at = self.random.randrange(6)
            numbers[at] = self.random.choice((ranges[at][0] - 1, *ranges[at], ranges[at][1] + 1, 0))
        if self.often(0.1):  # where the clock begins, or is put back and forth
            numbers[:3] = self.random.choice(TURNS)
            numbers[3] = self.random.randint(1, 3)
        text = b"%04d%02d%02d%02d%02d%02d" % tuple(numbers)
        if self.often(0.05):
            text = self.random.choice((text[:13], text[:12], b"", b"yesterday", text + b"9", text + b"99"))
        if self.often(0.05) and text:
            at = self.random.randrange(len(text))
            text = text[:at] + bytes(self.random.choices(b"+-x:/\xff 9", k=1)) + text[at + 1 :]
        return text[:16]

    # What is wrong with a request.

    def spoiled(self, datagram):
        ways = (self.cut, self.lengthened, self.changed, self.changed, self.in_the_header, self.in_the_header,
                self.unaddressed, self.overwritten)  # fmt: skip
        for _ in range(self.random.choice((1, 1, 1, 2, 3))):
            self.random.choice(ways)(datagram)
        return bytes(datagram)

    def cut(self, datagram):
        length = self.random.choice(LENGTHS) if self.often(0.5) else self.random.randint(0, len(datagram))
        del datagram[length:]

    def lengthened(self, datagram):
        to = self.random.choice((*LENGTHS, 1024, 1025, 1400))
        if to > len(datagram):
            datagram += self.random.randbytes(to - len(datagram))

    def changed(self, datagram):
        for _ in range(self.random.randint(1, 4)):
            if datagram:
                at = self.random.randrange(len(datagram))
                datagram[at] = self.random.choice((*EDGES, self.random.randrange(256)))

    def in_the_header(self, datagram):
        at, data = self.random.choice((
            (0, self.random.choice((b"\xfe\xfd", b"\xfd\xfe", b"\xee\xfe", b"\xff\xff", b"\0\0"))),
            (4, le16(self.random.choice((*UNKNOWN_OPCODES, *COMMANDS)))),
            (5, self.random.randbytes(1)),
            (16, le16(self.random.choice((0, 1, BY_MAC, 0x7776, 0x7700, 0x0077)))),
            (18, le16(self.random.choice((0, 1, 2, 3, 0x0102, 0x0201, 0x0100, 0x0200)))),
            (20, le16(self.random.choice((0, 1, 128, 0x0100, 0xFFFF)))),
        ))  # fmt: skip
        if len(datagram) >= at + len(data):
            datagram[at : at + len(data)] = data

    def unaddressed(self, datagram):
        if len(datagram) < 18:
            return
        mac = self.camera.board.mac
        at = self.random.randrange(6)
        other = mac[:at] + bytes([mac[at] ^ 1 << self.random.randrange(8)]) + mac[at + 1 :]
        datagram[6:12] = self.random.choice((EVERYBODY, other, mac, b"\xff" * 5 + b"\xfe", bytes(6)))
        datagram[12:16] = self.random.choice((bytes(4), bytes(4), self.camera.board.address, b"\0\0\0\1", b"\1\0\0\0"))

    def overwritten(self, datagram):
        """A part that is mere bytes."""
        if len(datagram) > 22:
            at = self.random.randrange(22, len(datagram))
            length = self.random.choice((1, 2, 16, 64, 200))
            part = self.random.randbytes(len(datagram[at : at + length]))
            datagram[at : at + length] = part
