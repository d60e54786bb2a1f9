"""How every command that speaks to a camera ends when it goes wrong: its exit status and its words, plain and in JSON.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/statuses_test.py
"""
import signal

import pytest
from cameras import assert_fails, mac, qvpctl

# Everything behind the camera's name.
OPEN = {"get": ["name"], "open": ["--print"], "supported": [], "alert": [], "raw": ["--opcode", "0xa1"]}
PROTECTED = {"show": [], "get": ["wifi.ssid"], "set": ["upnp=off"], "passwd": ["--new", "env:NEW"], "verify": [], "scan": [],
             "reboot": [], "factory-reset": ["--yes"], "commit": []}
COMMANDS = {**OPEN, **PROTECTED}
COMMANDS_OF_EACH = pytest.mark.parametrize("command", COMMANDS)


@COMMANDS_OF_EACH
def test_no_such_camera_is_1(lan, command):
    assert_fails(1, command, "Nobody", *COMMANDS[command], "--wait", "0.2", NEW="new", words="no camera Nobody answered")


@COMMANDS_OF_EACH
def test_no_camera_named_is_2(lan, command):
    plain, form = qvpctl(command), qvpctl(command, "--json")
    assert (plain.status, plain.out) == (2, "")
    assert plain.err == f"qvpctl: CAMERA is required\nTry 'qvpctl {command} --help'.\n"
    assert (form.status, form.out, form.error) == (2, "", {"code": "usage", "message": "CAMERA is required"})


@COMMANDS_OF_EACH
def test_no_such_interface_is_3(lan, command):
    assert_fails(3, command, "Nobody", *COMMANDS[command], "-i", "nope0", NEW="new", words="interface nope0: no such interface")


@pytest.mark.parametrize("command", PROTECTED)
def test_a_wrong_password_is_4(camera, command):
    store = camera.store()
    assert_fails(4, command, mac(camera), *PROTECTED[command], password="wrong", NEW="new",
                 words="the camera refused the user name or the password")
    assert (camera.store(), camera.board_log()) == (store, [])


@pytest.mark.parametrize("command", OPEN)
def test_some_commands_need_no_password(camera, command):
    result = qvpctl(command, mac(camera), *OPEN[command], password=None)
    assert (result.status, result.err) == (0, "")


@pytest.mark.parametrize("command", ["reboot", "factory-reset"])
def test_a_camera_that_does_not_come_back_is_6(camera, command):
    camera.replace_script("/var/reboot", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    camera.replace_script("/etc/init.d/userconfig", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    options = ["--yes"] if command == "factory-reset" else []
    result = qvpctl(command, mac(camera), *options, "--timeout", "1", "--json")
    assert (result.status, result.error["code"], result.records) == (6, "unverified", [])
    assert "has not come back within 1 s" in result.error["message"]


def test_a_command_that_nobody_hears_is_1(camera):
    camera.signal(signal.SIGSTOP)
    try:
        assert_fails(1, "verify", mac(camera), "--wait", "0.2", "--retries", "0", words=f"no camera {mac(camera)} answered")
    finally:
        camera.signal(signal.SIGCONT)
