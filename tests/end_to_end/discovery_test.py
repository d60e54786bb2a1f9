"""Finding cameras: every byte of the reply, who is addressed, and the store as it stands at that moment."""
import time

import pytest
from support.clock import now
from support.wire import BROADCAST_MAC, BY_MAC, EVERYONE, LANDAP, PRIMARY, ip, le16, reply, request

OPCODE = 0x00A1
NOBODY = bytes.fromhex("0251565fffff")


def discovery_fields(camera, when, **changes):
    """What the camera's own factory store and addresses give, at their places in the reply."""
    fields = {
        22: b"Example",
        86: [b"VC-1000", b"VC-2000", b"VC-3000"][camera.number % 3],
        150: [b"VC-1000", b"VC-2000", b"VC-3000"][camera.number % 3] + b"-%dA" % camera.number,
        182: b"1.%02d" % (camera.number % 100),
        214: b"\x03\x00\x01",
        220: camera.mac,
        226: b"Camera %d" % camera.number,
        290: ip(camera.address),
        294: b"\x00\x50",
        298: b"\xff\xfe\x00\x00",
        302: ip("198.18.0.1"),
        306: ip("198.18.0.2"),
        310: ip("198.18.0.3"),
        315: when,
        331: le16(51),
        366: b"A1",
    }
    return fields | {int(offset[1:]): data for offset, data in changes.items()}


def landap_fields(fields):
    return {offset: data for offset, data in fields.items() if offset < 334} | {214: b"\x01\x00\x01"}


def clock(seconds):
    return time.strftime("%Y%m%d%H%M%S", time.gmtime(seconds)).encode()


def discover(tool, camera, protocol=PRIMARY):
    """A reply and the request it answers; the clock in it is that of the moment."""
    asked = request(OPCODE, camera.mac, selector=BY_MAC, protocol=protocol)
    before = now()
    data = tool.ask(camera, asked)
    assert clock(before) <= data[315:329] <= clock(time.time())
    return asked, data


def expect_discovery(tool, camera, **changes):
    asked, data = discover(tool, camera)
    fields = discovery_fields(camera, data[315:329], **changes)
    assert data == reply(asked, camera, 505, fields)
    asked, data = discover(tool, camera, LANDAP)
    assert data == reply(asked, camera, 334, landap_fields(fields | {315: data[315:329]}))


def test_every_byte_of_the_factory_store(tool, camera):
    expect_discovery(tool, camera)


def test_every_byte_of_a_store_with_fields_that_are_full(tool, lan):
    camera = lan.camera(
        "--set", "INFO/BrandName=" + "B" * 64, "--set", "INFO/Product=" + "p" * 70,
        "--set", "System/ModelName=" + "M" * 33, "--set", "System/MainVersion=2",
        "--set", "System/FirmwareVersion=123", "--set", "CAMSYSTEM/CameraName=" + "Ä" * 40,
        "--set", "HTTP/Port=8080", "--set", "DATETIME/DayLightSaving=1", "--set", "INFO/HWVersion=" + "h" * 32)  # fmt: skip
    camera.change_store("NETWORK_V4", "BootProto", b"1")  # and no boot, which would ask for another address
    expect_discovery(
        tool, camera, _22=b"B" * 64, _86=b"p" * 64, _150=b"M" * 32, _182=b"2.123", _226="Ä".encode() * 32,
        _294=b"\x1f\x90", _314=b"\x01", _333=b"\x01", _366=b"h" * 32)  # fmt: skip


def test_every_byte_of_an_empty_store(tool, camera):
    camera.write_store(b"")
    expect_discovery(tool, camera, _22=b"", _86=b"", _150=b"", _182=b"0.00", _226=b"", _294=b"\0\0", _331=b"\0\0",
                     _366=b"")


FIELD_STARTS = (22, 86, 150, 182, 214, 220, 226, 290, 294, 296, 314, 315, 331, 333, 334, 366, 398)

STORED = [  # section, key, its text, where it shows, the bytes there
    ("System", "MainVersion", b"2", 182, b"2.01"),
    ("System", "MainVersion", b"65535", 182, b"65535.01"),
    ("System", "MainVersion", b"65536", 182, b"0.01"),  # no 16-bit number, so there is none
    ("System", "FirmwareVersion", b"0", 182, b"1.00"),
    ("System", "FirmwareVersion", b"123", 182, b"1.123"),
    ("NETWORK_V4", "BootProto", b"1", 314, b"\x01"),
    ("NETWORK_V4", "BootProto", b"2", 314, b"\x00"),
    ("HTTP", "Port", b"65535", 294, b"\xff\xff"),
    ("HTTP", "Port", b"65537", 294, b"\x00\x01"),
    ("HTTP", "Port", b"eighty", 294, b"\x00\x00"),
    ("HTTP", "Port", None, 294, b"\x00\x00"),
    ("DATETIME", "TimeZone", b"10", 331, b"\x01\x00"),
    ("DATETIME", "TimeZone", b"5", 331, b"\x00\x00"),
    ("DATETIME", "DayLightSaving", b"255", 333, b"\xff"),
    ("CAMSYSTEM", "CameraName", b'"a \\"b\\" \\\\ \\t\\x01\\n;"', 226, b'a "b" \\ \t\x01\n;'),
    ("CAMSYSTEM", "CameraName", None, 226, bytes(64)),
    ("INFO", "BrandName", b"B" * 64, 22, b"B" * 64),
    ("INFO", "BrandName", b"B" * 255, 22, b"B" * 64),
    ("INFO", "BrandName", b"B" * 5000, 22, b"B" * 64),
]


def without_clock(data):
    return data[:315] + bytes(14) + data[329:]


def changed_at(found, whole):
    return [offset for offset in range(22, 505) if found[offset] != whole[offset]]


def test_what_another_program_writes_is_in_the_next_reply(tool, lan):
    camera = lan.camera("--set", "System/FirmwareVersion=1")
    factory = camera.store_file.read_bytes()
    ask = lambda: without_clock(tool.ask(camera, request(OPCODE, camera.mac, selector=BY_MAC)))  # noqa: E731
    whole = ask()
    for section, key, text, offset, data in STORED:
        camera.change_store(section, key, text)
        found = ask()
        row = f"{section}/{key}={text}"
        end = next(start for start in FIELD_STARTS if start > offset)
        assert found[offset:end] == data.ljust(end - offset, b"\0"), row
        assert all(offset <= place < end for place in changed_at(found, whole)), row
        camera.write_store(factory)
    assert ask()[22:] == whole[22:]


def damaged_stores(whole):
    yield "cut in a key", whole[: whole.index(b"CameraName=Cam") + 5]
    yield "cut in a value", whole[: whole.index(b"CameraName=Cam") + 14]
    yield "an open quotation mark", whole.replace(b"CameraName=", b'CameraName="')
    yield "a backslash at the end", whole[: whole.index(b"CameraName=") + 11] + b'"abc\\'
    yield "no line ends", whole.replace(b"\n", b" ")
    yield "an open heading", b"[INFO\nBrandName=Example\n"
    yield "NUL bytes", whole.replace(b"\n", b"\0\n")
    yield "all bytes", bytes(range(256)) * 40
    yield "one endless line", b"[INFO]\nBrandName=" + b"x" * 3_000_000
    yield "nothing but headings", b"[" * 5000 + b"]\n" * 5000


def test_a_damaged_store_is_read_as_far_as_it_can_be(tool, camera):
    whole = camera.store_file.read_bytes()
    for damage, content in damaged_stores(whole):
        camera.write_store(content)
        data = tool.ask(camera, request(OPCODE, camera.mac, selector=BY_MAC))
        assert (len(data), data[220:226], data[290:294]) == (505, camera.mac, ip(camera.address)), damage
        if damage.startswith("cut"):
            assert data[22:86].rstrip(b"\0") == b"Example", damage
            assert data[226:290].rstrip(b"\0") in (b"", b"Cam"), damage
            assert data[366:368] == b"A1", damage
    camera.store_file.unlink()
    asked = request(OPCODE, camera.mac, selector=BY_MAC)
    assert tool.ask(camera, asked)[182:186] == b"0.00"
    camera.write_store(whole)
    expect_discovery(tool, camera)


def test_a_store_that_cannot_be_read_stops_nobody(tool, camera):
    camera.store_file.unlink()
    camera.store_file.mkdir()
    assert tool.ask(camera, request(OPCODE, camera.mac, selector=BY_MAC))[22:86] == bytes(64)


ADDRESSING = [  # selector, MAC (None: the camera's), address, whether it is answered
    (0x7777, None, "0.0.0.0", True),
    (0x7777, None, "1.2.3.4", True),
    (0x7777, BROADCAST_MAC, "0.0.0.0", False),
    (0x7777, NOBODY, "0.0.0.0", False),
    (0x0000, BROADCAST_MAC, "0.0.0.0", True),
    (0x0000, BROADCAST_MAC, "1.2.3.4", False),
    (0x0000, BROADCAST_MAC, "0.0.0.1", False),
    (0x0000, None, "0.0.0.0", True),
    (0x0000, None, "1.2.3.4", True),
    (0x0000, NOBODY, "0.0.0.0", False),
    (0x0000, bytes(6), "0.0.0.0", False),
    (0x0001, None, "0.0.0.0", False),
    (0x0001, BROADCAST_MAC, "0.0.0.0", False),
    (0x7700, None, "0.0.0.0", False),
    (0x0077, None, "0.0.0.0", False),
    (0xFFFF, BROADCAST_MAC, "0.0.0.0", False),
]


@pytest.mark.parametrize("opcode, protocol, length", [(0xA1, PRIMARY, 505), (0xA1, LANDAP, 334), (0xA5, PRIMARY, 262)])
def test_who_is_addressed(tool, camera, opcode, protocol, length):
    for to in (camera.address, EVERYONE):
        for selector, mac, address, answered in ADDRESSING:
            asked = request(opcode, camera.mac if mac is None else mac, protocol=protocol, selector=selector,
                            address=ip(address))  # fmt: skip
            if answered:
                data = tool.ask(camera, asked, to)
                assert (len(data), data[:22]) == (length, reply(asked, camera, length)[:22]), (selector, mac, address)
            else:
                tool.hears_nothing_of(camera, asked, to=to)


def test_twenty_cameras_are_found_by_one_datagram(tool, lan):
    cameras = lan.cameras(20)
    asked = request(OPCODE)
    tool.send(asked, EVERYONE)
    replies = {sender[0]: data for data, sender in [tool.receive() for _ in cameras]}
    assert set(replies) == {camera.address for camera in cameras}
    for camera in cameras:
        data = replies[camera.address]
        assert data == reply(asked, camera, 505, discovery_fields(camera, data[315:329]))
    for camera in cameras:  # and none has answered twice
        tool.assert_in_step(camera)


def test_a_camera_without_an_address_says_so(tool, camera):
    # The reply leaves with an address that another interface lends; the one that is served has none.
    camera.run("sh", "-c", "ip address flush dev eth0 && ip address add 198.18.77.1/32 dev lo &&"
               " ip route add 198.18.0.1 dev eth0")  # fmt: skip
    asked = request(OPCODE)
    tool.send(asked, EVERYONE)
    data, sender = tool.receive()
    assert sender == ("198.18.77.1", 62976)
    assert data == reply(asked, camera, 505, address="0.0.0.0", fields=discovery_fields(
        camera, data[315:329], _290=bytes(4), _298=bytes(4), _302=bytes(4)))  # fmt: skip


def test_an_interface_that_goes_down_comes_back(tool, camera):
    route = "ip route replace default via 198.18.0.1 dev eth0"
    camera.run("ip", "link", "set", "eth0", "down")
    camera.signal(14)  # SIGALRM: a report that cannot leave
    camera.wait_for_trace("[general_report]", 2)
    camera.run("sh", "-c", f"ip link set eth0 up && {route}")
    camera.plug_in()
    expect_discovery(tool, camera)
    camera.run("ip", "address", "flush", "dev", "eth0")
    camera.signal(14)
    camera.wait_for_trace("[general_report]", 3)
    camera.run("sh", "-c", f"ip address add {camera.address}/15 broadcast + dev eth0 && {route}")
    expect_discovery(tool, camera)
