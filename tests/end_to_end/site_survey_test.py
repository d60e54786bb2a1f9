"""The survey of networks near by: scanning, and fetching what was found."""
import pytest
from support.requests import basic_info
from support.wire import FAMILIES, LANDAP, PRIMARY, protected, reply

both_families = pytest.mark.parametrize("protocol", FAMILIES)

PADDING = bytes(33) + b"\x00\xf1\x0f"
MORE = b"\xff\xff"
HEADING = "Ch  SSID                             BSSID               Security               Signal    Mode    NT\n"


def entry(ssid, signal, type_and_cipher, authentication_and_channel):
    return ssid.ljust(33, b"\0") + bytes([signal, type_and_cipher, authentication_and_channel])


def row(channel=1, ssid="net", security="NONE", signal=50, network="In"):
    return f"{channel:<4}{ssid:<33}{'02:00:5e:00:00:09':<20}{security:<23}{signal:<10}{'11b/g/n':<8}{network}\n"


BOARD = [  # the networks of the board's own list
    entry(b"Workshop", 81, 0x30, 0x64),
    entry(b"Reception", 64, 0x40, 0x15),
    entry(b"Warehouse", 52, 0x20, 0xB3),
    entry("Café upstairs".encode(), 47, 0x00, 0x40),
    entry(b"Old printer", 33, 0x11, 0x30),
    entry(b"", 20, 0x40, 0x94),
]


def scan(tool, camera, protocol=PRIMARY):
    asked = protected(0xB1, camera, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, {26: b"\x02\0\0\0\x20\x4e\0\0"})
    tool.assert_in_step(camera)  # the list is read behind the reply


def expect_list(tool, camera, entries, mark=MORE, protocol=PRIMARY):
    """One datagram, and no second one."""
    asked = protected(0xAE, camera, protocol=protocol)
    entries = b"".join((entries + [PADDING] * 20)[:20])
    assert tool.ask(camera, asked) == reply(asked, camera, 746, {22: entries, 744: mark})
    tool.assert_in_step(camera)


@both_families
def test_scan_and_fetch(tool, camera, protocol):
    expect_list(tool, camera, [], protocol=protocol)  # nothing was scanned yet
    scan(tool, camera, protocol)
    for family in FAMILIES:  # it is one list
        expect_list(tool, camera, BOARD, protocol=family)
    assert camera.commands() == []


@pytest.mark.parametrize("variable", [[], ["--env", "QVP_SITE_LIST="]], ids=["unset", "empty"])
def test_the_radio_is_asked_where_there_is_no_list(tool, lan, variable):
    camera = lan.camera("--wireless", "iw", *variable)
    scan(tool, camera)
    assert camera.commands() == ["/usr/sbin/iw dev wlan0 scan"]
    expect_list(tool, camera, [
        entry(b"Rooftop", 84, 0x30, 0x64),
        entry(b"Loading dock", 58, 0x20, 0x13),
        entry("Café".encode(), 34, 0x00, 0x40),
    ])  # fmt: skip


def test_a_list_stays_until_the_next_scan(tool, camera):
    file = camera.root / "etc/qvp/site_list.txt"
    scan(tool, camera)
    file.write_text(HEADING + row(ssid="other"))
    expect_list(tool, camera, BOARD)
    scan(tool, camera, LANDAP)
    expect_list(tool, camera, [entry(b"other", 50, 0x00, 0x10)])
    file.unlink()
    scan(tool, camera)
    expect_list(tool, camera, [])  # a scan that finds nothing leaves nothing


SECURITY = [("NONE", 0, 0), ("WEP", 1, 0), ("WPAPSK/TKIP", 2, 3), ("WPAPSK/AES", 3, 3), ("WPAPSK", 4, 3),
            ("WPA1PSKWPA2PSK/TKIPAES", 4, 5), ("WPA1PSKWPA2PSK/AES", 3, 5), ("WPA1PSK/AES", 15, 15),
            ("WPA2PSK/AES", 3, 4), ("WPA2PSK/TKIP", 2, 4), ("WPA2PSK/TKIPAES", 4, 4), ("OWE", 15, 15), ("", 15, 15),
            ("NONE WEP", 0, 0)]  # fmt: skip


def lists():
    yield "nothing", "", [], MORE
    yield "a heading", HEADING, [], MORE
    for count in (1, 3, 19, 20, 21, 25):
        rows = [row(i % 14 + 1, f"net {i}", signal=i) for i in range(count)]
        entries = [entry(b"net %d" % i, i, 0, (i % 14 + 1) << 4 & 0xFF) for i in range(count)]
        yield f"{count} networks", HEADING + "".join(rows), entries, MORE
    yield "security", HEADING + "".join(row(6, "s", text) for text, _, _ in SECURITY), [
        entry(b"s", 50, cipher << 4, 0x60 | authentication) for _, cipher, authentication in SECURITY], MORE  # fmt: skip
    yield "an SSID of 33", HEADING + row(36, "x" * 33, network="Ad"), [entry(b"x" * 32, 50, 0x01, 0x40)], MORE
    yield "short lines", HEADING + "6\n6   name\n\n", [
        entry(b"", 0, 0xF1, 0x6F), entry(b"name\n", 0, 0xF1, 0x6F), entry(b"", 0, 0xF1, 0x0F)], MORE  # fmt: skip
    yield "a full buffer", (HEADING + row() * 300)[:21843], [entry(b"net", 50, 0, 0x10)] * 20, MORE
    yield "a longer one", HEADING + row() * 1000, [entry(b"net", 50, 0, 0x10)] * 20, MORE


def test_lists_of_every_length(tool, camera):
    file = camera.root / "etc/qvp/site_list.txt"
    for name, text, entries, mark in lists():
        file.write_text(text)
        print(name)
        scan(tool, camera)
        expect_list(tool, camera, entries, mark)


@both_families
def test_strangers_neither_scan_nor_fetch(tool, camera, protocol):
    scan(tool, camera)
    (camera.root / "etc/qvp/site_list.txt").write_text(HEADING)
    asked = protected(0xB1, camera, password=b"wrong", protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, status=3)
    asked = protected(0xAE, camera, password=b"wrong", protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 746, status=3)
    expect_list(tool, camera, BOARD)


def test_a_fetch_among_other_requests(tool, camera):
    """What others have set off runs once, behind their own replies."""
    scan(tool, camera)
    tool.ask(camera, basic_info(camera))
    for _ in range(3):
        expect_list(tool, camera, BOARD)
    assert len(camera.commands()) == 4
