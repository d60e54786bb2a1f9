"""The daemon with the platform that a board's own library starts from: found, asked, set, and still set after a restart.

QVP_DAEMON names that daemon here: build/release/qvp_example.
"""
import signal

import pytest
from support.requests import basic_info, discovery, user_verification
from support.waiting import wait_until
from support.wire import BY_MAC, EVERYONE, LANDAP, ip, le16, protected, reply, request, text_field

STORE = """\
USER_ADMIN/Username1=admin
USER_ADMIN/Password1=admin
INFO/BrandName=Example
System/ModelName=Board%201
System/MainVersion=1
System/FirmwareVersion=7
CAMSYSTEM/CameraName=Before
HTTP/Port=80
DATETIME/TimeZone=610
"""


@pytest.fixture
def board(lan):
    """A camera whose store is the example's."""
    camera = lan.camera("--env", "QVP_STORE=/etc/board.store", "--env", "QVP_SYSINFO=/run/board.sysinfo")
    (camera.root / "etc/board.store").write_text(STORE)
    return camera


def stored(board):
    lines = (board.root / "etc/board.store").read_text().splitlines()
    return dict(line.split("=", 1) for line in lines)


def test_it_is_found(tool, board):
    for asked in (request(0xA1), discovery(board)):
        data = tool.ask(board, asked, to=EVERYONE if asked[6:12] != board.mac else None)
        assert data[:22] == reply(asked, board, 505)[:22]
        assert data[22:86] == text_field(b"Example", 64)
        assert data[150:182] == text_field(b"Board 1", 32)
        assert (data[220:226], data[226:290]) == (board.mac, text_field(b"Before", 64))
        assert data[290:314] == b"".join([ip(board.address), b"\0\x50\0\0", ip("255.254.0.0"), ip("198.18.0.1"),
                                          ip("198.18.0.2"), ip("198.18.0.3")])  # fmt: skip
        assert data[331:333] == le16(61)


def test_who_may_ask(tool, board):
    for password, status in ((b"admin", 0), (b"other", 3)):
        asked = user_verification(board, password)
        assert tool.ask(board, asked) == reply(asked, board, 26, {22: b"\1" if status == 0 else b"\0"}, status=status)
    asked = protected(0xA6, board, protocol=LANDAP)
    assert tool.ask(board, asked)[16:18] == b"\0\0"


def test_what_is_set_outlives_a_restart(tool, board):
    name = b"Yard %41 \xc3\xa4=\n#"
    asked = basic_info(board, name=name, address="198.18.3.77", port=8081)
    assert tool.ask(board, asked) == reply(asked, board, 38, {26: b"\x02\0\0\0\x10\x27\0\0"})
    asked = user_verification(board, b"admin")
    assert tool.ask(board, asked)[16:18] == b"\0\0"
    board.signal(signal.SIGTERM)
    assert board.wait_for_end() == "0"
    run = board.start_daemon("eth0").wait_for_start()
    data = tool.ask(board, discovery(board))
    assert (data[226:290], data[294:296], data[314]) == (text_field(name, 64), b"\x1f\x91", 0)
    assert stored(board) == dict(line.split("=", 1) for line in STORE.splitlines()) | {
        "CAMSYSTEM/CameraName": "Yard%20%2541%20%C3%A4=%0A#",
        "HTTP/Port": "8081",
        "NETWORK_V4/BootProto": "0",
        "NETWORK_V4/IP": "198.18.3.77",
        "NETWORK_V4/SubnetMask": "255.254.0.0",
        "NETWORK_V4/Gateway": "198.18.0.1",
        "NETWORK_V4/DNS0": "198.18.0.2",
        "NETWORK_V4/DNS1": "198.18.0.3",
    }
    run.signal(signal.SIGTERM)
    wait_until(lambda: run.process.poll() is not None, "the daemon's end")


def test_an_upgrade_that_runs_holds_back_a_reboot(tool, board):
    folder = board.root / "run/board.sysinfo"
    folder.mkdir()
    (folder / "4").write_text("1\n")
    tool.ask(board, protected(0x103, board))
    tool.assert_in_step(board)
    assert board.commands() == []
    (folder / "4").write_text("2\n")
    tool.ask(board, protected(0x103, board))
    wait_until(lambda: board.commands() == ["/var/reboot -d 5"], "the reboot")
