"""Datagrams of every size, family and command: what is answered, and what is met with silence."""
import pytest
from support.requests import basic_info, discovery
from support.tool import Tool
from support.wire import BY_MAC, EVERYONE, FAMILIES, LANDAP, PRIMARY, credentials, le16, reply, request

RECEIVED = "[QVP][qvp][main][Line: 343]: QVP Client receive command from [198.18.0.1]"

PROTECTED = {  # the length of the reply
    0xA2: 38, 0xA3: 26, 0xA4: 38, 0xA6: 547, 0xA7: 38, 0xA8: 274, 0xA9: 38, 0xAB: 38, 0xAC: 122, 0xAD: 38, 0xAE: 746,
    0xAF: 130, 0xB0: 38, 0xB1: 38, 0xC0: 38,
}  # fmt: skip


def commands():
    for opcode, length in PROTECTED.items():
        for protocol in FAMILIES:
            yield opcode, protocol, length
    yield 0x103, PRIMARY, 38


def test_sizes(tool, camera):
    """22 bytes are the least; what is behind byte 1024 is cut off; no size of the rest makes a difference."""
    tool.assert_in_step(camera)
    traced = camera.trace().count(RECEIVED)
    whole = request(0x00A1, camera.mac, selector=BY_MAC, length=1500)
    for size in (0, 1, 21):
        tool.send(whole[:size], camera.address)
    tool.assert_in_step(camera)
    assert camera.trace().count(RECEIVED) == traced + 1
    for size in (22, 23, 150, 1023, 1024, 1025, 1472, 1500):
        assert len(tool.ask(camera, whole[:size])) == 505, size
    assert camera.trace().count(RECEIVED) == traced + 9


def test_a_request_that_ends_early_is_read_as_if_zeros_followed(tool, camera):
    asked = basic_info(camera)[:220]
    assert tool.ask(camera, asked) == reply(asked, camera, 38, {26: b"\x02\0\0\0\x10\x27\0\0"})
    tool.assert_in_step(camera)
    network = camera.store()["NETWORK_V4"]
    expected = [b"0", camera.address.encode(), b"0.0.0.0", b"0.0.0.0"]
    assert [network[key] for key in ("BootProto", "IP", "SubnetMask", "Gateway")] == expected
    asked = basic_info(camera)[:218]
    assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: b"\x03"}, status=2)


def test_families(tool, camera):
    for protocol in (0, 3, 0x0100, 0x0102, 0x0201, 0xFF02, 0xFFFF):
        for opcode in (0xA1, 0xA5, 0x103, 0x200):
            tool.hears_nothing_of(camera, request(opcode, camera.mac, selector=BY_MAC, protocol=protocol,
                                                  fields=credentials()))  # fmt: skip
    traced = camera.trace().count(RECEIVED)
    tool.hears_nothing_of(camera, request(0xA1, camera.mac, selector=BY_MAC, protocol=3))
    assert camera.trace().count(RECEIVED) == traced + 2  # it is traced, though


@pytest.mark.parametrize("protocol", FAMILIES)
def test_opcodes_that_no_command_has(tool, camera, protocol):
    store = camera.store_file.read_bytes()
    opcodes = [0x0000, 0x0001, 0x00A0, 0x00AA, *range(0xB2, 0xC0), 0x00C1, 0x00FF, 0x0100, 0x0102, 0x0104, 0x01A1,
               0x01FF, 0x0201, 0xA100, 0xA1A1, 0xFFFF]  # fmt: skip
    if protocol == LANDAP:
        opcodes += [0x0103, 0x0200]
    for opcode in opcodes:
        tool.send(request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, fields=credentials()),
                  camera.address)  # fmt: skip
    tool.assert_in_step(camera)
    assert camera.commands() == []
    assert camera.store_file.read_bytes() == store


def test_magic_bytes(tool, camera):
    for magic in (b"\xfe\xfd", b"\xfd\xfe", b"\xee\xfe", b"\xff\xff", b"\0\0"):
        for protocol in FAMILIES:
            for opcode in (0xA1, 0xA5, 0xA3, 0xAE, 0x200):
                tool.send(request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, magic=magic,
                                  fields=credentials()), camera.address)  # fmt: skip
    tool.assert_in_step(camera)


def test_the_reply_carries_sequence_opcode_and_family_of_the_request(tool, camera):
    for sequence in (0x0000, 0x0001, 0x0100, 0x7F80, 0xFFFF):
        for protocol in FAMILIES:
            asked = request(0xA1, camera.mac, selector=BY_MAC, protocol=protocol, sequence=sequence,
                            payload_length=0xFFFF)  # fmt: skip
            data = tool.ask(camera, asked)
            assert data[:22] == reply(asked, camera, 505 if protocol == PRIMARY else 334)[:22]
            assert data[2:4] == le16(sequence)


def test_a_broadcast_is_answered_to_the_port_it_came_from(camera):
    tools = [Tool() for _ in range(3)]  # their sockets have one address of this machine, and get no broadcasts
    asked = request(0xA1)
    tools[1].send(asked, EVERYONE)
    data, sender = tools[1].receive()
    assert sender == (camera.address, 62976)
    assert data[2:6] == asked[2:6]
    for tool in tools:
        tool.assert_in_step(camera)
        tool.close()


STRANGERS = [
    credentials(password=b"Admin"),
    credentials(password=b""),
    credentials(b"Admin"),
    credentials(b"", b""),
    credentials(b"viewer"),
    credentials(b"admin\0", b"admin2"),
    {22: b"admin", 86: b"admin"},
    {22: b"\xff" * 128},
]


def test_protected_commands_refuse_strangers(tool, camera):
    store = camera.store_file.read_bytes()
    for opcode, protocol, length in commands():
        for stranger in STRANGERS:
            asked = request(opcode, camera.mac, selector=BY_MAC, protocol=protocol, fields=stranger)
            assert tool.ask(camera, asked) == reply(asked, camera, length, status=3), (hex(opcode), stranger)
        # What is meant for other cameras, or for all of them, is not even refused.
        tool.hears_nothing_of(
            camera,
            request(opcode, b"\x02\x51\x56\x50\xff\xfe", selector=BY_MAC, protocol=protocol, fields=credentials()),
            request(opcode, protocol=protocol, fields=credentials()),
        )
    assert camera.commands() == []
    assert camera.store_file.read_bytes() == store


def test_a_camera_without_an_administrator_lets_empty_credentials_in(tool, camera):
    camera.change_store("USER_ADMIN", "Username1", None)
    camera.change_store("USER_ADMIN", "Password1", None)
    asked = request(0xA3, camera.mac, selector=BY_MAC)
    assert tool.ask(camera, asked)[16:23] == b"\0\0\x02\0\x04\0\x02"
    asked = request(0xA3, camera.mac, selector=BY_MAC, fields=credentials())
    assert tool.ask(camera, asked) == reply(asked, camera, 26, status=3)
