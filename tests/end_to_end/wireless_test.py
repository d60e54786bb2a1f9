"""Wireless settings in both forms: read, set, refused, and copied to the repeater's section."""
import pytest
from support.requests import simple_wifi, wifi
from support.wire import FAMILIES, le32, protected, reply

both_families = pytest.mark.parametrize("protocol", FAMILIES)

ACCEPTED = {26: b"\x02\0\0\0\x88\x13\0\0"}
RESET = "/usr/sbin/msger httpdmgr 0 reset_wifi 0 0"
CAPABILITIES = b"\xff\x00\x00\x00\x03\x0f\x1b\x03\x03\x0f"
MIRRORED = ("SSID", "Channel", "Authentication", "Encryption", "WEPKeyFormat", "WEPKeyLength", "WEPActiveKey",
            "WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3", "PreSharedKey")  # fmt: skip


def change(camera, **values):
    for key, text in values.items():
        camera.change_store("WIRELESS", key, text)


@both_families
def test_reading(tool, camera, protocol):
    asked = protected(0xA8, camera, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 274, {
        22: b"\x01\x06Workshop",
        60: b"\x30\x04\x00",  # mode 0 and AES, WPA2, no WEP
        192: b"correct horse battery",
        260: CAPABILITIES,
    })  # fmt: skip
    change(camera, Enable=b"0", SSID=b"s" * 40, Channel=b"300", Mode=b"1", Authentication=b"2", Encryption=b"1",
           WEPKeyFormat=b"1", WEPKeyLength=b"1", WEPActiveKey=b"3", WEPKey0=b"0" * 40, WEPKey1=b"one", WEPKey2=b"two",
           WEPKey3=b"3" * 31, PreSharedKey=b"k" * 70)  # fmt: skip
    asked = protected(0xA8, camera, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 274, {
        22: b"\x00\x2c" + b"s" * 35,
        60: b"\x11\x13\x31",
        64: b"0" * 31,
        96: b"one",
        128: b"two",
        160: b"3" * 31,
        192: b"k" * 67,
        260: CAPABILITIES,
    })  # fmt: skip


AUTHENTICATIONS = [(b"0", 0), (b"1", 1), (b"2", 3), (b"3", 4), (b"4", 5), (b"5", 0), (b"-1", 0), (b"256", 0)]


@both_families
def test_reading_the_simple_form(tool, camera, protocol):
    def read():
        asked = protected(0xAF, camera, protocol=protocol)
        return asked, tool.ask(camera, asked)

    asked, data = read()
    assert data == reply(asked, camera, 130, {22: b"\x01Workshop", 59: b"\x00\x06\x04\x03correct horse battery",
                                              128: b"\x0f\x1b"})  # fmt: skip
    for stored, wire in AUTHENTICATIONS:
        change(camera, Authentication=stored)
        assert read()[1][61] == wire
    change(camera, SSID=b"s" * 36, PreSharedKey=b"k" * 65, WEPKey0=b"zero", WEPKey2=b"w" * 64)
    assert read()[1][23:59] == b"s" * 35 + b"\0"
    for encryption, active, key in [(b"4", b"0", b"k" * 64), (b"1", b"0", b"zero"), (b"1", b"2", b"w" * 64),
                                    (b"1", b"7", b""), (b"0", b"0", b""), (b"5", b"0", b"")]:  # fmt: skip
        change(camera, Encryption=encryption, WEPActiveKey=active)
        asked, data = read()
        assert data[62] == int(encryption)
        assert data[63:130] == key.ljust(65, b"\0") + b"\x0f\x1b", (encryption, active)


def accepted(tool, camera, asked):
    """The section after a request that is accepted, and its commands."""
    camera.forget_commands()
    assert tool.ask(camera, asked) == reply(asked, camera, 38, ACCEPTED)
    camera.wait_for_command(RESET)
    assert camera.commands() == [RESET]
    return camera.store()


@both_families
def test_setting(tool, camera, protocol):
    before = camera.store()
    after = accepted(tool, camera, wifi(camera, protocol=protocol))
    assert after == before | {"WIRELESS": before["WIRELESS"] | {
        "SSID": b"Workshop 2", "Channel": b"11", "PreSharedKey": b"a new long secret"}}  # fmt: skip
    assert tool.ask(camera, protected(0xA8, camera))[22:34] == b"\x01\x0bWorkshop 2"
    # No encryption: the keys stay.
    after = accepted(tool, camera, wifi(camera, {188: b"\x01\x01\x31", 192: b"other"}, protocol=protocol))
    assert after["WIRELESS"] == before["WIRELESS"] | {
        "SSID": b"Workshop 2", "Channel": b"11", "PreSharedKey": b"a new long secret", "Mode": b"1",
        "Authentication": b"1", "Encryption": b"0", "WEPKeyFormat": b"1", "WEPActiveKey": b"3"}  # fmt: skip
    # WEP: only the active key is looked at and written.
    wep = {188: b"\x10\x10\x20", 192: b"\x01", 224: b"ignored", 256: b"thirteen char"}
    after = accepted(tool, camera, wifi(camera, wep, protocol=protocol))
    assert after["WIRELESS"] == before["WIRELESS"] | {
        "SSID": b"Workshop 2", "Channel": b"11", "PreSharedKey": b"a new long secret", "Authentication": b"0",
        "Encryption": b"1", "WEPKeyLength": b"1", "WEPActiveKey": b"2", "WEPKey2": b"thirteen char"}  # fmt: skip
    assert after["WIRELESS_REP"] == before["WIRELESS_REP"]


@both_families
def test_setting_the_simple_form(tool, camera, protocol):
    change(camera, WEPKeyLength=b"1", WEPActiveKey=b"2")
    before = camera.store()
    after = accepted(tool, camera, simple_wifi(camera, protocol=protocol))
    assert after == before | {"WIRELESS": before["WIRELESS"] | {
        "SSID": b"Workshop 3", "Channel": b"13", "PreSharedKey": b"another secret"}}  # fmt: skip
    # Any channel will do here, and the key goes where the store's own active key is.
    wep = {187: b"\x01\xff\x05\x01", 191: b"thirteen char\0"}
    after = accepted(tool, camera, simple_wifi(camera, wep, protocol=protocol))
    assert after["WIRELESS"] == before["WIRELESS"] | {
        "SSID": b"Workshop 3", "Channel": b"255", "PreSharedKey": b"another secret", "Mode": b"1",
        "Authentication": b"4", "Encryption": b"1", "WEPKey2": b"thirteen char"}  # fmt: skip


@both_families
@pytest.mark.parametrize("make", [wifi, simple_wifi])
def test_the_repeater_follows_the_client_when_it_is_told_to(tool, camera, make, protocol):
    change(camera, WEPKey0=b"aaaaa", WEPKey1=b"b b", WEPKey3=b'"d"', WEPKeyFormat=b"1", Mode=b"1")
    camera.change_store("WIRELESS_REP", "SSID", None)
    untouched = camera.store()["WIRELESS_REP"]
    assert accepted(tool, camera, make(camera, protocol=protocol))["WIRELESS_REP"] == untouched
    camera.change_store("WIRELESS_REP", "SameWithClient", b"1")
    after = accepted(tool, camera, make(camera, protocol=protocol))
    assert after["WIRELESS_REP"] == {"SameWithClient": b"1"} | {key: after["WIRELESS"][key] for key in MIRRORED}
    assert "Mode" not in after["WIRELESS_REP"] and "Enable" not in after["WIRELESS_REP"]


HEX64 = b"0123456789abcdefABCDEF0123456789" * 2
REFUSALS = [  # what is put over a sound request, and the code
    ({150: b"\x00"}, 201),
    ({150: b"\x02"}, 201),
    ({150: b"\x00\x00", 188: b"\xff\xff\xff"}, 201),
    ({151: b"\x00"}, 202),
    ({151: b"\x0e"}, 202),  # allowed in Japan only
    ({151: b"\x24", 188: b"\xff\xff\xff"}, 202),
    ({188: b"\x32\xff\xff"}, 204),
    ({188: b"\x50\xff\xff"}, 205),
    ({188: b"\x30\x02\xff"}, 206),
    ({188: b"\x30\x06\xff"}, 206),
    ({188: b"\x30\xf4\xff"}, 207),
    ({188: b"\x30\x04\xf2"}, 208),
    ({188: b"\x30\x04\x40"}, 212),
    ({188: b"\x10\x00\x00", 192: b"four\0"}, 211),
    ({188: b"\x10\x00\x00", 192: b"sixsix\0"}, 211),
    ({188: b"\x10\x00\x00", 192: b"f\xc3\xa4ve\0"}, 211),
    ({188: b"\x10\x10\x00", 192: b"twelve chars\0"}, 211),
    ({188: b"\x10\x00\x01", 192: b"012345678g\0"}, 211),
    ({188: b"\x10\x10\x31", 288: b"0123456789abcdefABCDEF0123\0", 192: b"00000"}, None),
    ({320: b"seven77\0" + bytes(20)}, 210),
    ({320: b"eight88\x1f" + bytes(20)}, 210),
    ({320: b"\x7f234567~" + bytes(20)}, None),
    ({320: b"p" * 63 + b"\0"}, None),
    ({320: b"p" * 64 + b"\0"}, 210),
    ({320: HEX64 + b"\0"}, None),
    ({320: HEX64 + b"0\0"}, 210),
    ({188: b"\x20\x03\x00"}, None),
    ({188: b"\x40\x05\x00", 320: b"short\0" + bytes(20)}, 210),
]
SIMPLE_REFUSALS = [
    ({150: b"\x00", 187: b"\xff\xff\xff\xff"}, 201),
    ({150: b"\x02"}, 201),
    ({187: b"\x02\x0d\x02\x05"}, 204),
    ({187: b"\x00\x0d\x02\x05"}, 205),
    ({187: b"\x00\x0d\x02\x04"}, 206),
    ({187: b"\x00\x00\x01\x00"}, None),
    ({187: b"\x00\x00\x00\x01", 191: b"fives\0" + bytes(20)}, None),
    ({187: b"\x00\x00\x00\x01", 191: b"sixsix\0" + bytes(20)}, 211),
    ({191: b"seven77\0" + bytes(20)}, 210),
    ({191: HEX64}, None),
    ({191: HEX64 + b"0"}, 210),
    ({191: b"p" * 64}, 210),
    ({191: b"p" * 63}, None),
]


@both_families
@pytest.mark.parametrize("make, rows", [(wifi, REFUSALS), (simple_wifi, SIMPLE_REFUSALS)], ids=["full", "simple"])
def test_what_is_refused_and_what_is_not(tool, camera, make, rows, protocol):
    before = camera.store_file.read_bytes()
    for fields, code in rows:
        asked = make(camera, fields, protocol=protocol)
        if code is None:
            accepted(tool, camera, asked)
            camera.write_store(before)
            camera.forget_commands()
            continue
        assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: le32(code)}, status=2), (fields, code)
        assert camera.store_file.read_bytes() == before, fields
        assert camera.commands() == [], fields


CHANNELS = [  # region of the store, content of the table, channels that it allows, channels that it does not
    (b"2", None, [1, 14], [0, 15, 36]),
    (b"3", None, [13, 36, 48], [14, 52, 255]),
    (b"9", None, [], [1, 6]),
    (b"1", "[1]\n0=1\n6=1\n", [6], [0, 1]),
    (b"1", "[1]\n", [], [0, 1, 6]),
    (b"1", "[0]\n6=1\n[1]\n7=1\n[11]\n8=1\n", [7], [6, 8]),
    (b"1", "", [], [6]),
]


def test_channels_of_the_region(tool, camera):
    table = camera.root / "etc/wifi_channel.ini"
    sound = table.read_text()
    for region, content, allowed, refused in CHANNELS:
        camera.change_store("HWMIB", "Region", region)
        table.write_text(sound if content is None else content)
        for channel in refused:
            data = tool.ask(camera, wifi(camera, {151: bytes([channel])}))
            assert data[16:26] == b"\x02\0\x02\0\x10\0" + le32(202), (region, channel)
        for channel in allowed:
            assert tool.ask(camera, wifi(camera, {151: bytes([channel])}))[16:18] == b"\0\0", (region, channel)
    table.unlink()
    assert tool.ask(camera, wifi(camera))[16] == 2


def test_a_name_without_an_end(tool, camera):
    """It goes on behind its field, up to 255 bytes."""
    asked = wifi(camera, {152: b"S" * 36 + b"\x01\x01\x01" + b"T" * 833})
    assert len(asked) == 1024
    assert accepted(tool, camera, asked)["WIRELESS"]["SSID"] == b"S" * 36 + b"\x01\x01\x01" + b"T" * 216
