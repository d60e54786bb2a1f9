"""No secret in a trace: marked passwords and keys go through every command that carries one, to the store and from it,
and neither the daemon's standard error nor a command of the board shows one, plain or encoded."""
import base64
import fcntl
import os
import re
import signal

import pytest
from support.requests import basic_info, change_password, set_datetime, simple_wifi, wifi
from support.waiting import wait_until
from support.wire import BY_MAC, FAMILIES, credentials, protected, request, text_field

both_families = pytest.mark.parametrize("protocol", FAMILIES)

# Every secret has the mark in it.
MARK = b"MARKED"
OLD, NEW, WRONG, PLAIN = b"MARKED-old", b'MARKED-"new`$(a)\\', b"MARKED-wrong", b"MARKED-plain"
WEP, WEP_HEX = b"MARKED-wep-13", b"MARKED-hex-13".hex().encode()
KEY, KEY_HEX = b"MARKED-pre-shared-key", b"MARKED-hexadecimal-key-of-32-byt".hex().encode()
DDNS, PPPOE = b"MARKED-ddns", b"MARKED-pppoe"
SECRETS = [OLD, NEW, WRONG, PLAIN, WEP, WEP_HEX, KEY, KEY_HEX, DDNS, PPPOE]

OPCODES = [*range(0xA1, 0xAA), *range(0xAB, 0xB2), 0xC0, 0x103, 0x200]
CHANGING = [0xA2, 0xA4, 0xA7, 0xA9, 0xAD, 0xB0]
ENDING = [0x103, 0xAB]  # a reboot and the factory's settings
READING = [opcode for opcode in OPCODES if opcode not in CHANGING + ENDING]

STORE_KEYS = {
    "USER_ADMIN/Password1": OLD,
    "DDNS/PWD": b"MARKED-ddns-of-the-store",
    "WIRELESS/WEPKeyLength": b"1",
    "WIRELESS_REP/SameWithClient": b"1",
    **{f"{section}/{key}": f"MARKED-{key}-of-{section}".encode() for section in ("WIRELESS", "WIRELESS_REP")
       for key in ("WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3", "PreSharedKey")},
}
OPTIONS = ["--reboot-delay", "3600",
           *(word for key, value in STORE_KEYS.items() for word in ("--set", f"{key}={value.decode()}"))]


# What is looked for.

def base64_of(text):
    """The letters of Base64 that stand for the text alone, wherever it begins in what was encoded."""
    for before in range(3):
        encoded = base64.b64encode(bytes(before) + text + bytes(3))
        yield encoded[-(-before * 8 // 6) : (before + len(text)) * 8 // 6]


# A key of hexadecimal digits is a text like any other.
MARK_HEX = MARK.hex().encode()
DIGITS = (MARK_HEX, MARK_HEX.hex().encode())
BASE64 = {*base64_of(MARK), *base64_of(MARK_HEX)}


def shows_a_secret(text):
    digits = re.sub(rb"0x|[^0-9a-z]", b"", text.lower())
    return MARK in text.upper() or any(form in digits for form in DIGITS) or any(form in text for form in BASE64)


ENCODINGS = {
    "plain": lambda secret: secret,
    "in capitals": bytes.upper,
    "base64": base64.b64encode,
    "base64 behind a letter": lambda secret: base64.b64encode(b":" + secret),
    "base64 behind two letters": lambda secret: base64.b64encode(b"p=" + secret),
    "hex": lambda secret: secret.hex().encode(),
    "hex in capitals": lambda secret: secret.hex().upper().encode(),
    "hex with blanks": lambda secret: secret.hex(" ").encode(),
    "hex of a dump": lambda secret: ", ".join(f"0x{byte:02X}" for byte in secret).encode(),
}


@pytest.mark.parametrize("secret", SECRETS)
@pytest.mark.parametrize("encoding", ENCODINGS)
def test_a_secret_would_be_found(secret, encoding):
    assert shows_a_secret(b"[Line: 1] " + ENCODINGS[encoding](secret) + b"\n")
    assert not shows_a_secret(b"[QVP][qvp_function][change_admin_id_pwd][Line: 100] USER_ADMIN/Password1 marke\n")


# The requests.

def network(camera, **others):
    return protected(0xA7, camera, {150: b"\0" + text_field(b"user", 64) + PPPOE, 279: b"\x03\x03\0", 282: b"user",
                                    346: DDNS, 410: b"camera.example.com"}, length=675, **others)  # fmt: skip


LONG_WEP = {188: b"\x10\x10\x00"}
LONG_WEP_HEX = {188: b"\x10\x10\x01", 192: WEP_HEX}
SIMPLE_WEP = {187: b"\x00\x0d\x00\x01"}


def wireless_changes(camera, **login):
    yield wifi(camera, key=KEY, **login)
    yield wifi(camera, key=KEY_HEX, **login)
    yield wifi(camera, LONG_WEP_HEX, **login)
    yield wifi(camera, LONG_WEP | {192: WEP}, **login)
    yield simple_wifi(camera, SIMPLE_WEP, key=WEP, **login)
    yield simple_wifi(camera, key=KEY_HEX, **login)
    yield simple_wifi(camera, key=KEY, **login)


def changes(camera, **login):
    """All that is accepted, but for a new password."""
    yield basic_info(camera, **login)
    yield set_datetime(camera, **login)
    yield network(camera, **login)
    yield from wireless_changes(camera, **login)


def refused(camera, **login):
    """Keys of a wrong length."""
    yield wifi(camera, key=MARK, **login)
    yield wifi(camera, LONG_WEP | {192: MARK}, **login)
    yield simple_wifi(camera, key=MARK, **login)
    yield simple_wifi(camera, SIMPLE_WEP, key=MARK, **login)


def readings(camera, **login):
    return [protected(opcode, camera, payload_length=128, **login) for opcode in READING]


def strangers(camera, protocol):
    """Every command without and with secrets in all its fields, from somebody who does not get in."""
    logins = [credentials(password=WRONG), {22: b"admin", 86: PLAIN}]
    for opcode in OPCODES:
        for login in logins:
            for fields in ({}, {150: (b"MARKED-" * 125)[:874]}):
                yield request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, payload_length=128, length=150,
                              fields=login | fields)  # fmt: skip


# The runs.

def replies(tool, camera, datagram):
    """All of them: none, one or more."""
    behind = request(0xA1, camera.mac, selector=BY_MAC, sequence=0xBEEF)
    tool.send(datagram, camera.address)
    tool.send(behind, camera.address)
    received = []
    while (data := tool.receive()[0])[2:6] != behind[2:6]:
        received.append(data)
    return received


def statuses(tool, camera, datagrams):
    return {data[16] for datagram in datagrams for data in replies(tool, camera, datagram)}


def commands_without_the_password(camera):
    """The one command that has a secret, the administrator's new password: its account's password is set by it."""
    for words in camera.board_log():
        if words[:4] == [b"/usr/sbin/set_passwd", b"-u", b"admin", b"-p"] and words[4] in (OLD, NEW):
            words = words[:4] + words[5:]
        yield b" ".join(words)


def assert_no_secret_is_shown(tool, camera):
    tool.assert_in_step(camera)
    camera.signal(signal.SIGTERM)
    assert camera.wait_for_end() == "0"
    said = (camera.folder / "qvp.log").read_bytes().split(b"\n") + list(commands_without_the_password(camera))
    assert [line for line in said if shows_a_secret(line)] == []


def read_and_change_everything(tool, camera, protocol):
    login = {"password": OLD, "protocol": protocol}
    assert statuses(tool, camera, readings(camera, **login)) == {0}
    assert statuses(tool, camera, strangers(camera, protocol)) == {0, 3}
    assert statuses(tool, camera, refused(camera, **login)) == {2}
    assert statuses(tool, camera, changes(camera, **login)) == {0}
    assert tool.ask(camera, change_password(camera, NEW, old=OLD, protocol=protocol))[16] == 0
    tool.assert_in_step(camera)
    assert [b"/usr/sbin/set_passwd", b"-u", b"admin", b"-p", NEW] in camera.board_log()


@both_families
def test_a_store_that_can_be_written(tool, lan, protocol):
    camera = lan.camera(*OPTIONS)
    read_and_change_everything(tool, camera, protocol)
    sections = camera.store()
    assert sections["USER_ADMIN"]["Password1"] == NEW
    assert sections["DDNS"]["PWD"] == DDNS
    for section in ("WIRELESS", "WIRELESS_REP"):
        assert (sections[section]["WEPKey0"], sections[section]["PreSharedKey"]) == (WEP, KEY)
    login = {"password": NEW, "protocol": protocol}
    assert statuses(tool, camera, readings(camera, **login)) == {0}
    assert statuses(tool, camera, [protected(opcode, camera, **login) for opcode in ENDING]) == {0}
    wait_until(lambda: camera.commands().count("/usr/sbin/msger httpdmgr 0 reset_wifi 0 0") == 7, "the last command")
    assert_no_secret_is_shown(tool, camera)


@both_families
def test_a_store_that_cannot_be_written(tool, lan, protocol):
    camera = lan.camera(*OPTIONS)
    camera.run("sh", "-c", "mount --bind /etc/qvp /etc/qvp && mount -o remount,bind,ro /etc/qvp")
    read_and_change_everything(tool, camera, protocol)
    for key in ("USER_ADMIN/Password1", "DDNS/PWD", "WIRELESS/WEPKey0", "WIRELESS/PreSharedKey", "WIRELESS_REP/WEPKey3",
                "WIRELESS_REP/PreSharedKey"):  # fmt: skip
        assert f"cannot write {key} to /etc/qvp/camera.ini: Read-only file system\n" in camera.trace()
    assert_no_secret_is_shown(tool, camera)


@both_families
def test_a_store_that_another_program_has_locked(tool, lan, protocol):
    """A change waits for the lock, so each has a camera of its own."""
    count = 1 + sum(1 for _ in changes(lan.camera()))
    cameras = lan.cameras(count, dict.fromkeys(range(count), OPTIONS))
    locks = [os.open(camera.store_file.parent, os.O_RDONLY) for camera in cameras]
    for number, (camera, held) in enumerate(zip(cameras, locks)):
        fcntl.flock(held, fcntl.LOCK_EX)
        login = {"password": OLD, "protocol": protocol}
        asked = [change_password(camera, NEW, old=OLD, protocol=protocol), *changes(camera, **login)][number]
        assert statuses(tool, camera, readings(camera, **login)) == {0}
        tool.send(asked, camera.address)
    assert [tool.receive()[0][16] for _ in cameras] == [0] * count
    for camera, held in zip(cameras, locks):
        assert camera.trace().count(": another program keeps it busy\n") == 1
        os.close(held)
        assert_no_secret_is_shown(tool, camera)
    assert "cannot write USER_ADMIN/Password1 to" in cameras[0].trace()


# What an editor may have left of a store: numbers that are secrets, texts that are too long or have no end.
SPOILT = [
    ("WIRELESS", "Channel", KEY),
    ("WIRELESS", "PreSharedKey", b'"' + KEY),
    ("WIRELESS", "WEPKey0", MARK * 100),
    ("WIRELESS", "WEPKey1", b"\\xMARKED"),
    ("WIRELESS", "WEPActiveKey", b"7"),
    ("WIRELESS_REP", "SSID", b'"' + KEY + b'\nMARKED\n[MARKED\n=MARKED'),
    ("DDNS", "Enable", DDNS),
    ("DDNS", "PWD", b'"' + DDNS + b'\\"'),
    ("DATETIME", "Offset", b"MARKED"),
]


@both_families
def test_a_store_that_was_spoilt(tool, lan, protocol):
    camera = lan.camera(*OPTIONS)
    for section, key, text in SPOILT:
        camera.change_store(section, key, text)
    login = {"password": OLD, "protocol": protocol}
    assert statuses(tool, camera, readings(camera, **login)) == {0}
    assert tool.ask(camera, simple_wifi(camera, SIMPLE_WEP, key=WEP, **login))[16] == 0
    assert "the store has no key WIRELESS/WEPKey7\n" in camera.trace()
    assert statuses(tool, camera, changes(camera, **login)) == {0}
    assert_no_secret_is_shown(tool, camera)
