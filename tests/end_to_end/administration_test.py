"""Identity and administration: basic information, accounts, supported functions, reset, reboot, commit, alerts."""
import pytest
from support.requests import (
    BASIC_INFO_COMMANDS,
    basic_info,
    discovery,
    user_verification,
)
from support.store import edit, parse
from support.waiting import wait_until
from support.wire import BY_MAC, FAMILIES, LANDAP, PRIMARY, credentials, ip, le16, le32, protected, reply, request

both_families = pytest.mark.parametrize("protocol", FAMILIES)
ACCEPTED = {26: b"\x02\0\0\0\x10\x27\0\0"}
REBOOT = "/var/reboot -d 5"


def changed(content, changes):
    """`content` with the lines of (section, key, text) replaced."""
    for section, key, text in changes:
        content = edit(content, section, key, text)
    return content


@both_families
def test_basic_information(tool, camera, protocol):
    before = camera.store_file.read_bytes()
    camera.let_its_address_change()
    new = f"198.18.200.{camera.number}"
    asked = basic_info(camera, name=b"Front door", address=new, port=8081, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, ACCEPTED)
    wait_until(lambda: f" {new}/15 " in camera.run("ip", "-4", "address"), "the new address")
    camera.address = new
    # The address that it was given is its own from now on, and has become so by the board's own script.
    data = tool.ask(camera, discovery(camera))
    assert data[12:16] == data[290:294] == ip(camera.address)
    assert data[226:290] == b"Front door".ljust(64, b"\0")
    assert data[294:296] == b"\x1f\x91"
    assert camera.store_file.read_bytes() == changed(before, [
        ("CAMSYSTEM", "CameraName", b"Front door"),
        ("HTTP", "Port", b"8081"),
        ("NETWORK_V4", "IP", camera.address.encode()),
    ])  # fmt: skip
    assert (camera.folder / "board.log").read_text() == (
        "'/etc/init.d/llmnr-0' 'restart'\n"
        "'/etc/init.d/bonjour-0' 'restart'\n"
        "'/usr/sbin/msger' 'httpdmgr' '0' 'hrestart' '0' '0'\n"
        "'/etc/init.d/ipv4' 'restart'\n"
    )


BASIC_INFO_REFUSALS = [(0, 0, 3), (8088, 0, 3), (8088, 2, 3), (0, 255, 3), (80, 2, 8), (80, 255, 8)]  # port, mode, code


@both_families
def test_basic_information_that_is_refused(tool, camera, protocol):
    before = camera.store_file.read_bytes()
    for port, mode, code in BASIC_INFO_REFUSALS:
        asked = basic_info(camera, name=b"Other", port=port, mode=mode, protocol=protocol)
        assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: le32(code)}, status=2)
    assert camera.store_file.read_bytes() == before
    assert camera.commands() == []


@both_families
def test_basic_information_with_dhcp_leaves_the_addresses(tool, camera, protocol):
    before = camera.store_file.read_bytes()
    asked = basic_info(camera, name=b"", address="1.2.3.4", port=65535, mode=1, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, ACCEPTED)
    data = tool.ask(camera, discovery(camera))
    assert (data[226:290], data[294:296], data[314]) == (bytes(64), b"\xff\xff", 1)
    assert camera.store_file.read_bytes() == changed(before, [
        ("CAMSYSTEM", "CameraName", b""),
        ("HTTP", "Port", b"65535"),
        ("NETWORK_V4", "BootProto", b"1"),
    ])  # fmt: skip
    assert camera.commands() == BASIC_INFO_COMMANDS


def test_addresses_are_written_as_they_stand(tool, camera):
    asked = basic_info(camera, address="0.0.0.0", gateway="255.254.253.252", port=256)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, ACCEPTED)
    network = camera.store()["NETWORK_V4"]
    assert [network[key] for key in ("BootProto", "IP", "SubnetMask", "Gateway", "DNS0", "DNS1")] == [
        b"0", b"0.0.0.0", b"255.254.0.0", b"255.254.253.252", b"198.18.0.2", b"198.18.0.3"]  # fmt: skip
    assert camera.store()["HTTP"]["Port"] == b"256"  # least significant byte first in the request


NAMES = [
    b"n" * 63,
    b'a "quoted" name\\',
    b" blanks \t at both ends ",
    b"line\nPort=1\n[USER_ADMIN]\nPassword1=x\n",
    bytes(range(1, 64)),
    bytes(range(64, 127)),
    bytes(range(127, 190)),
    bytes(range(190, 253)),
    b"\xfd\xfe\xff",
    b"# no comment",
    b"[INFO]",
    b"$(reboot) `reboot` %s%n",
]


def test_any_name_comes_back_byte_for_byte(tool, camera):
    for name in NAMES:
        tool.ask(camera, basic_info(camera, name=name))
        assert tool.ask(camera, discovery(camera))[226:290] == name.ljust(64, b"\0")
        assert camera.store()["CAMSYSTEM"] == {"CameraName": name}
    assert camera.store() == parse(camera.root.joinpath("etc/qvp/factory.ini").read_bytes()) | {
        "CAMSYSTEM": {"CameraName": NAMES[-1]}}  # fmt: skip
    assert camera.commands() == BASIC_INFO_COMMANDS * len(NAMES)


def test_a_name_without_an_end_is_cut_at_63(tool, camera):
    tool.ask(camera, basic_info(camera, name=b"x" * 64))
    assert camera.store()["CAMSYSTEM"]["CameraName"] == b"x" * 63


@both_families
def test_user_verification(tool, camera, protocol):
    def user_class():
        asked = user_verification(camera, protocol=protocol)
        data = tool.ask(camera, asked)
        assert data == reply(asked, camera, 26, {22: data[22:23]})
        return data[22]

    assert user_class() == 1
    groups = camera.root / "etc/group"
    for name in ("administrators", "adm", "Admin", "users"):
        groups.write_text(f"root:x:0:\n{name}:x:1000:\n")
        assert user_class() == 2, name
    groups.write_text("admin:x:1000:\n")
    assert user_class() == 1
    (camera.root / "etc/passwd").write_text("root:x:0:0:root:/root:/bin/sh\n")
    assert user_class() == 2  # of a user that the system does not know


SUPPORTED = [0xA6, 0xA7, 0xA8, 0xA9, 0xAE, 0xAF, 0xB0, 0xB1, 0xC0]
SUPPORTED_LANDAP = [0xA6, 0xA7, 0xA8, 0xA9, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF, 0xB0, 0xB1, 0xC0]


def opcode_list(opcodes):
    return {22: b"".join(le16(opcode) for opcode in opcodes)}


def test_supported_functions(tool, camera):
    for fields in ({}, credentials(), credentials(password=b"wrong")):
        asked = request(0xA5, camera.mac, selector=BY_MAC, payload_length=128, fields=fields)
        assert tool.ask(camera, asked) == reply(asked, camera, 262, opcode_list(SUPPORTED))


LANDAP_QUERIES = [  # payload_length, credentials, status
    (0, {}, 0),
    (0, credentials(password=b"wrong"), 0),
    (128, credentials(), 0),
    (1, {}, 3),
    (256, credentials(password=b"wrong"), 3),
]


def test_supported_functions_of_the_second_family(tool, camera):
    for payload_length, fields, status in LANDAP_QUERIES:
        for selector in (BY_MAC, 0, 1):
            asked = request(0xA5, camera.mac, selector=selector, protocol=LANDAP, payload_length=payload_length,
                            fields=fields)  # fmt: skip
            expected = reply(asked, camera, 262, {} if status else opcode_list(SUPPORTED_LANDAP), status=status)
            assert tool.ask(camera, asked) == expected
    tool.hears_nothing_of(camera, request(0xA5, protocol=LANDAP))


def test_alert_information(tool, camera):
    for selector in (BY_MAC, 0, 1, 0xFFFF):
        for length in (22, 1024):
            asked = request(0x200, camera.mac, selector=selector, length=length, fields={20: b"\xff\xff"})
            assert tool.ask(camera, asked) == reply(asked, camera, 150)
    tool.hears_nothing_of(camera, request(0x200), request(0x200, camera.mac[::-1], selector=BY_MAC))


@both_families
def test_commit(tool, camera, protocol):
    before = camera.store_file.stat()
    asked = protected(0xC0, camera, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    tool.assert_in_step(camera)
    assert camera.commands() == []
    assert camera.store_file.stat().st_mtime_ns == before.st_mtime_ns


def test_reboot(tool, listener, lan):
    camera = lan.camera("--reboot-delay", "0")
    assert listener.report(camera)[2:4] == b"\0\0"
    pid = camera.daemon_pid()
    asked = protected(0x103, camera)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    camera.wait_for_trace("QVP Client Start", 2)
    assert camera.daemon_pid() != pid
    assert listener.report(camera)[2:4] == b"\0\0"
    assert camera.commands() == [REBOOT]
    assert "QVP Client Stop" in camera.trace()


@both_families
def test_factory_reset(tool, listener, lan, protocol):
    camera = lan.camera("--reboot-delay", "0")
    factory = camera.store_file.read_bytes()
    camera.change_store("CAMSYSTEM", "CameraName", b"Spoilt")
    pid = camera.daemon_pid()
    asked = protected(0xAB, camera, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    camera.wait_for_trace("QVP Client Start", 2)
    assert camera.daemon_pid() != pid
    assert camera.commands() == ["/etc/init.d/userconfig reset", REBOOT]
    assert camera.store_file.read_bytes() == factory
    assert tool.ask(camera, discovery(camera))[226:290].rstrip(b"\0") == b"Camera %d" % camera.number


SLOT_TEXTS = [(b"1", True), (b"1\n", True), (b"0\n", False), (b"2", False), (b"3\n", False), (b"-1", False),
              (b"11", False), (b"yes", False), (b"", False), (None, False)]  # fmt: skip


@pytest.mark.parametrize("opcode, protocol", [(0x103, PRIMARY), (0xAB, PRIMARY), (0xAB, LANDAP)])
def test_an_upgrade_blocks_reboot_and_reset_without_a_word(tool, lan, opcode, protocol):
    """Slot 4 of the system's integers says 1 while an upgrade goes on."""
    camera = lan.camera("--reboot-delay", "3600", "--env", "QVP_STORE=", "--env", "QVP_SYSINFO=")  # empty is unset
    expected = [REBOOT] if opcode == 0x103 else ["/etc/init.d/userconfig reset", REBOOT]
    slot = camera.root / "run/qvp/sysinfo/4"
    for text, blocks in SLOT_TEXTS:
        slot.unlink(missing_ok=True)
        if text is not None:
            slot.write_bytes(text)
        camera.forget_commands()
        asked = protected(opcode, camera, protocol=protocol)
        assert tool.ask(camera, asked) == reply(asked, camera, 38)
        tool.assert_in_step(camera)
        if blocks:
            tool.ask(camera, basic_info(camera))
            tool.assert_in_step(camera)
            assert camera.commands() == BASIC_INFO_COMMANDS, text
        else:
            wait_until(lambda: len(camera.commands()) == len(expected), f"the commands of slot {text}")
            assert camera.commands() == expected, text
