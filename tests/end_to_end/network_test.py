"""Advanced network settings: PPPoE, UPnP and DDNS, as they are read and as they are set."""
import pytest
from support.wire import FAMILIES, protected, reply

both_families = pytest.mark.parametrize("protocol", FAMILIES)


def read(tool, camera, protocol):
    asked = protected(0xA6, camera, protocol=protocol)
    return asked, tool.ask(camera, asked)


def provider(data):
    """The one provider's host name with the semicolon behind it; which one it is, is a matter of taste."""
    name = data[347 : data.index(b"\0", 347)]
    assert len(name) == 18 and name.endswith(b";") and b"." in name
    return name


@both_families
def test_reading(tool, camera, protocol):
    asked, data = read(tool, camera, protocol)
    assert data == reply(asked, camera, 547, {151: b"\x01\x01\x01", 346: b"\x01" + provider(data)})
    for section, key, text in [
        ("NETWORK_V4", "PPPoEUID", b"u" * 70), ("NETWORK_V4", "PPPoEEnable", b"1"), ("UPnP", "Enable", b"0"),
        ("DDNS", "Enable", b"1"), ("DDNS", "UID", b"user"), ("DDNS", "PWD", b"p" * 64), ("DDNS", "HOST", b"h" * 63),
    ]:  # fmt: skip
        camera.change_store(section, key, text)
    asked, data = read(tool, camera, protocol)
    assert data == reply(asked, camera, 547, {
        23: b"u" * 63,
        87: b"u" * 63,  # not the password
        151: b"\x02\x02\x01",
        154: b"user",
        218: b"p" * 63,
        282: b"h" * 63,
        346: b"\x01" + provider(data),
    })  # fmt: skip


SERVICE_BITS = [(b"0", b"0", 0), (b"1", b"0", 1), (b"0", b"1", 2), (b"1", b"1", 3), (b"4", b"3", 6)]  # UPnP, PPPoE


def test_the_bits_of_the_services(tool, camera):
    for upnp, pppoe, bits in SERVICE_BITS:
        camera.change_store("UPnP", "Enable", upnp)
        camera.change_store("NETWORK_V4", "PPPoEEnable", pppoe)
        assert read(tool, camera, 2)[1][151:154] == bytes([bits, bits, 1])


def settings(camera, values, mask, lead=0, flag=0, user=b"user", password=b"secret", host=b"cam.example.com",
             protocol=2):  # fmt: skip
    return protected(0xA7, camera, {150: bytes([lead]), 279: bytes([values, mask, flag]), 282: user, 346: password,
                                    410: host}, length=675, protocol=protocol)  # fmt: skip


ACCOUNT = {"PROVIDER": b"4", "UID": b"user", "PWD": b"secret", "HOST": b"cam.example.com"}
MASKS = [  # values, mask, UPnP's Enable (it was 7), DDNS's section (None: as it was)
    (0x03, 0x00, b"7", None),
    (0xFF, 0xFC, b"7", None),
    (0x01, 0x01, b"1", None),
    (0xFE, 0x01, b"0", None),
    (0x03, 0x02, b"7", {"Enable": b"0"} | ACCOUNT),
    (0x01, 0x03, b"1", {"Enable": b"1"} | ACCOUNT),
    (0x02, 0x03, b"0", {"Enable": b"0"} | ACCOUNT),
]


@both_families
def test_setting(tool, camera, protocol):
    camera.change_store("UPnP", "Enable", b"7")
    camera.change_store("DDNS", "PROVIDER", b"9")
    before, sections = camera.store_file.read_bytes(), camera.store()
    for values, mask, upnp, ddns in MASKS:
        camera.write_store(before)
        asked = settings(camera, values, mask, protocol=protocol)
        assert tool.ask(camera, asked) == reply(asked, camera, 38)
        assert camera.store() == sections | {"UPnP": {"Enable": upnp}, "DDNS": ddns or sections["DDNS"]}, (values, mask)
    assert camera.commands() == []


REFUSALS = [(2, 0, b""), (255, 0, b""), (2, 1, b""), (0, 1, b"\x30\x01\0\0"), (1, 255, b"\x30\x01\0\0")]  # lead, flag


@both_families
def test_settings_that_are_refused(tool, camera, protocol):
    before = camera.store_file.read_bytes()
    for lead, flag, code in REFUSALS:
        asked = settings(camera, 3, 3, lead, flag, protocol=protocol)
        assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: code}, status=2)
    block = read(tool, camera, protocol)[1][22:547]  # what was read is not taken back
    asked = protected(0xA7, camera, {150: block}, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: b"\x30\x01\0\0"}, status=2)
    assert camera.store_file.read_bytes() == before


def test_texts_are_taken_up_to_their_end(tool, camera):
    """They are not cut at their fields, but at 255 bytes and at the datagram's end."""
    asked = settings(camera, 0, 2, user=b"u" * 64, password=b"p" * 64, host=b"h" * 614)
    assert len(asked) == 1024
    assert tool.ask(camera, asked)[16:18] == b"\0\0"
    ddns = camera.store()["DDNS"]
    assert ddns["UID"] == (b"u" * 64 + b"p" * 64 + b"h" * 614)[:255]
    assert ddns["PWD"] == (b"p" * 64 + b"h" * 614)[:255]
    assert ddns["HOST"] == b"h" * 255
    assert tool.ask(camera, protected(0xA6, camera))[282:346] == b"h" * 63 + b"\0"
    near_the_end = protected(0xA7, camera, {280: b"\x02", 410: b"h" * 100})[:500]
    assert tool.ask(camera, near_the_end)[16:18] == b"\0\0"
    assert camera.store()["DDNS"]["HOST"] == b"h" * 90
