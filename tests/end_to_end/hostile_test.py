"""What no honest tool sends: the daemon takes any bytes, and goes on serving."""
import base64
import random

import pytest
from support.requests import (
    basic_info,
    change_password,
    discovery,
    set_datetime,
    simple_wifi,
    user_verification,
    wifi,
)
from support.wire import BY_MAC, EVERYONE, FAMILIES, LANDAP, PRIMARY, credentials, le16, protected, reply, request

SEED = 62976
ROUNDS = 60
BATCH = 50  # what the socket's buffer holds
REPLY_LENGTHS = {
    0xA2: 38, 0xA3: 26, 0xA4: 38, 0xA5: 262, 0xA6: 547, 0xA7: 38, 0xA8: 274, 0xA9: 38, 0xAB: 38, 0xAC: 122, 0xAD: 38,
    0xAE: 746, 0xAF: 130, 0xB0: 38, 0xB1: 38, 0xC0: 38,
}  # fmt: skip
OPCODES = [0xA1, *REPLY_LENGTHS, 0x103, 0x200]
SCRIPTS = ["llmnr-0", "bonjour-0", "rtmpd-0", "rtspd-0", "httpd-0", "https-0", "ipv4", "ntpc.sh", "userconfig"]


@pytest.fixture
def patient_camera(lan):
    """Its scripts do nothing, quickly."""
    camera = lan.camera()
    for script in [f"/etc/init.d/{name}" for name in SCRIPTS] + ["/usr/sbin/msger", "/usr/sbin/set_passwd",
                                                                 "/usr/sbin/rtcfg", "/var/reboot"]:  # fmt: skip
        camera.replace_script(script, "#!/bin/sh\n")
    return camera


def sound_requests(camera, protocol):
    """One that is accepted for every command."""
    others = {"protocol": protocol}
    yield from (basic_info(camera, **others), change_password(camera, b"admin", **others), wifi(camera, **others),
                simple_wifi(camera, **others), set_datetime(camera, b"20240615123456", **others),
                protected(0xA7, camera, {280: b"\x03", 282: b"user", 346: b"secret", 410: b"host"}, **others))  # fmt: skip
    for opcode in OPCODES:
        yield protected(opcode, camera, length=402, payload_length=128, **others)


def mutate(generator, datagram):
    """Some bytes changed behind the header, some fields filled without an end, cut or drawn out."""
    datagram = bytearray(datagram)
    for _ in range(generator.randrange(1, 6)):
        start = generator.randrange(len(datagram)) if generator.random() < 0.1 else generator.randrange(150, 1024)
        length = generator.choice((1, 1, 2, 4, 64, 300))
        datagram.extend(bytes(max(0, start - len(datagram))))
        filling = generator.choice((b"\xff", b"A", b"\x00", b"%n%s", b"\x80", None))
        data = generator.randbytes(length) if filling is None else (filling * length)[:length]
        datagram[start : start + length] = data
    return bytes(datagram[: generator.choice((1024, 1024, len(datagram), generator.randrange(22, 1025)))])


def without_waiting(datagram):
    """The time is never left to NTP, because that takes eight seconds."""
    if datagram[4:6] != le16(0xAD) or len(datagram) < 170:
        return datagram
    return datagram[:169] + bytes([datagram[169] & 0xFE]) + datagram[170:]


def storm(generator, camera):
    sound = [datagram for protocol in FAMILIES for datagram in sound_requests(camera, protocol)]
    for _ in range(ROUNDS):
        batch = []
        for _ in range(BATCH):
            kind = generator.random()
            if kind < 0.1:
                datagram = generator.randbytes(generator.randrange(0, 1500))
            elif kind < 0.4:
                datagram = request(generator.choice(OPCODES), camera.mac, selector=BY_MAC,
                                   protocol=generator.choice(FAMILIES),
                                   fields={22: generator.randbytes(generator.randrange(1, 1002))})  # fmt: skip
            else:
                datagram = mutate(generator, generator.choice(sound))
            batch.append(without_waiting(datagram))
        yield batch


def drain(tool, camera):
    """Reads all replies up to the one to a question of its own; the reply before must have come from this camera."""
    asked = discovery(camera)
    tool.send(asked, EVERYONE)
    replies = 0
    while True:
        data, sender = tool.receive()
        assert sender == (camera.address, 62976)
        assert data == b"" or (data[:2] == b"\xee\xfe" and data[6:12] == camera.mac), data[:22].hex(" ")
        if data[2:6] == asked[2:6] and len(data) == 505:
            return replies
        replies += 1


def test_a_storm_of_datagrams(tool, patient_camera):
    camera = patient_camera
    factory = camera.store_file.read_bytes()
    generator = random.Random(SEED)
    answered = 0
    for batch in storm(generator, camera):
        for datagram in batch:
            tool.send(datagram, camera.address)
        answered += drain(tool, camera)
        camera.store()  # what was written can be read
        camera.write_store(factory)
    assert answered > ROUNDS * BATCH // 4  # so most of the storm got past the header
    asked = user_verification(camera)
    assert tool.ask(camera, asked) == reply(asked, camera, 26, {22: b"\x01"})


# A user and a password that fill their fields without an end: what is behind the pad does not count.
ENDLESS_CREDENTIALS = base64.b64encode(b"admin").ljust(64, b"=") * 2


def endless(opcode, camera, protocol, filling):
    fields = {22: ENDLESS_CREDENTIALS, 150: (filling * 874)[:874]}
    return request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, sequence=0x0101, payload_length=0x0101,
                   address=b"\x01\x01\x01\x01", fields=fields)  # fmt: skip


@pytest.mark.parametrize("protocol", FAMILIES)
def test_requests_without_a_single_end(tool, patient_camera, protocol):
    camera = patient_camera
    factory = camera.store_file.read_bytes()
    opcodes = REPLY_LENGTHS | ({0x103: 38, 0x200: 150} if protocol == PRIMARY else {})
    for opcode, length in opcodes.items():
        for filling in (b"\x01", b"A", b"\xff", b"\x01\x0b", b"0", b"9"):
            asked = endless(opcode, camera, protocol, filling)
            assert len(asked) == 1024
            data = tool.ask(camera, asked)
            assert (len(data), data[:16]) == (length, reply(asked, camera, length)[:16]), (hex(opcode), filling)
            assert data[16] in (0, 2), (hex(opcode), filling)  # so the credentials were right
            camera.write_store(factory)
        refused = request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, payload_length=0x0101,
                          fields={22: b"A" * 1002})  # fmt: skip
        assert len(tool.ask(camera, refused)) == length


ENDLESS_AND_ACCEPTED = [  # opcode, the bytes that make it acceptable, section, key, where its text starts, its width
    (0xA2, {218: b"\x50\x01", 238: b"\x01"}, "CAMSYSTEM", "CameraName", 150, 63),
    (0xA7, {150: b"\x01", 280: b"\x02"}, "DDNS", "UID", 282, 255),
    (0xA9, {150: b"\x01\x0b", 188: b"\x01\x01\x01"}, "WIRELESS", "SSID", 152, 255),
    (0xAD, {150: b"20240615123456", 166: b"\x33", 168: b"\x01"}, "DATETIME", "NTPServerIP", 170, 255),
]


@pytest.mark.parametrize("protocol", FAMILIES)
def test_texts_without_an_end_are_bounded(tool, patient_camera, protocol):
    camera = patient_camera
    for opcode, fields, section, key, start, width in ENDLESS_AND_ACCEPTED:
        asked = bytearray(endless(opcode, camera, protocol, b"abcdefg"))
        for offset, data in fields.items():
            asked[offset : offset + len(data)] = data
        zeroes = {0xA7: [281], 0xAD: [167, 169]}.get(opcode, [])  # where nothing but zero will do
        for offset in zeroes:
            asked[offset] = 0
        assert tool.ask(camera, bytes(asked))[16:18] == b"\0\0", hex(opcode)
        assert camera.store()[section][key] == asked[start : start + width], hex(opcode)


def test_a_base64_field_is_read_no_further_than_it_is_wide(tool, camera):
    password = b"p" * 48
    assert tool.ask(camera, change_password(camera, password))[16] == 0
    assert camera.store()["USER_ADMIN"]["Password1"] == password
    # The field behind the password goes on in the same alphabet.
    assert tool.ask(camera, protected(0xA2, camera, {150: b"cHBw" * 10, 218: b"\x50", 238: b"\x01"},
                                      password=password))[16:18] == b"\0\0"  # fmt: skip
    longer = request(0xA3, camera.mac, selector=BY_MAC, fields=credentials(b"a" * 48, password))
    assert tool.ask(camera, longer)[16] == 3
