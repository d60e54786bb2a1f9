"""Changing the administrator's password: the store, the system's account, the services, and the next login."""
import random

import pytest
from support.requests import change_password, user_verification
from support.wire import FAMILIES, reply

SERVICES = [
    "/etc/init.d/rtmpd-0 stop",
    "/etc/init.d/rtspd-0 stop",
    "/etc/init.d/httpd-0 reload",
    "/etc/init.d/https-0 reload",
    "/etc/init.d/rtspd-0 start",
    "/etc/init.d/rtmpd-0 start",
]
SEED = 20_240_615


def login_status(tool, camera, password):
    return tool.ask(camera, user_verification(camera, password))[16]


@pytest.mark.parametrize("protocol", FAMILIES)
def test_a_change_of_password(tool, camera, protocol):
    asked = change_password(camera, b'a"b$c', protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    tool.assert_in_step(camera)
    assert camera.store()["USER_ADMIN"] == {"Username1": b"admin", "Password1": b'a"b$c'}
    assert camera.commands() == ['/usr/sbin/set_passwd -u admin -p a"b$c', *SERVICES]
    assert login_status(tool, camera, b"admin") == 3
    assert login_status(tool, camera, b'a"b$c') == 0
    asked = change_password(camera, b"other", old=b"admin", protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, status=3)
    assert camera.store()["USER_ADMIN"]["Password1"] == b'a"b$c'


def test_the_account_is_changed_before_the_reply_and_the_services_after_it(tool, camera):
    gate = camera.gate("/etc/init.d/httpd-0")
    tool.ask(camera, change_password(camera, b"new"))
    assert camera.commands()[0] == "/usr/sbin/set_passwd -u admin -p new"
    gate.wait()
    assert camera.commands()[1:] == SERVICES[:3]
    gate.open()
    tool.assert_in_step(camera)
    assert camera.commands()[1:] == SERVICES


def test_the_field_of_the_new_name_is_ignored(tool, camera):
    asked = bytearray(change_password(camera, b"new"))
    asked[150:214] = b"cm9vdA==".ljust(64, b"\xff")
    assert tool.ask(camera, bytes(asked))[16] == 0
    assert camera.store()["USER_ADMIN"] == {"Username1": b"admin", "Password1": b"new"}
    assert camera.board_log()[0][1:] == [b"-u", b"admin", b"-p", b"new"]


def test_an_empty_password(tool, camera):
    assert tool.ask(camera, change_password(camera, b""))[16] == 0
    assert camera.store()["USER_ADMIN"]["Password1"] == b""
    assert camera.board_log()[0] == [b"/usr/sbin/set_passwd", b"-u", b"admin", b"-p", b""]
    assert login_status(tool, camera, b"") == 0


def passwords():
    """48 bytes are what 64 characters of Base64 hold."""
    yield from (bytes(range(start, min(start + 48, 256))) for start in range(1, 256, 48))
    yield from (
        b"\\" * 48, b'"' * 48, b"`" * 48, b"$" * 48, b"\\$" * 24, b'$(id)`id`${HOME}$HOME\\"', b"a\\", b"'", b"%s%n%d",
        b"\n", b"\n\n", b" ", b"\t a \t", b"!!", b"~", b"*", b"-u", b"--", b";reboot;", b"a\r\nb", b"\xff" * 48, b"\x01",
    )  # fmt: skip
    generator = random.Random(SEED)
    for _ in range(40):
        yield bytes(generator.randrange(1, 256) for _ in range(generator.randrange(1, 49)))
    for _ in range(20):
        yield bytes(generator.choice(b"\\\"`$'!a \n") for _ in range(generator.randrange(1, 49)))


def test_any_password_reaches_the_account_byte_for_byte(tool, camera):
    for script in {command.split()[0] for command in SERVICES}:  # none of their affair
        camera.replace_script(script, "#!/bin/sh\n")
    old = b"admin"
    for new in passwords():
        assert tool.ask(camera, change_password(camera, new, old))[16:18] == b"\0\0"
        assert camera.board_log() == [[b"/usr/sbin/set_passwd", b"-u", b"admin", b"-p", new]]
        assert camera.store()["USER_ADMIN"]["Password1"] == new
        assert login_status(tool, camera, new) == 0
        assert login_status(tool, camera, new[:-1]) == 3
        camera.forget_commands()
        old = new
