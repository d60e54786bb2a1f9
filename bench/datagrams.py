"""The requests that the bench sends, as hexadecimal text."""
import base64
import struct

PORT = 62976
MAC = bytes.fromhex("025156500001")
EVERYBODY = bytes.fromhex("ffffffffffff")
PRIMARY, LANDAP = 2, 1
DONE, REFUSED = 0, 2


def header(opcode, payload_length=0, protocol=PRIMARY, mac=MAC):
    return struct.pack("<2sHH6s4sHHH", b"\xfd\xfd", 0x4711, opcode, mac, bytes(4), 0, protocol, payload_length)


def protected(opcode, payload=b""):
    account = base64.b64encode(b"admin").ljust(64, b"\0")
    return header(opcode, 128 + len(payload)) + account + account + payload


def discovery(protocol=PRIMARY):
    return header(0x00A1, protocol=protocol, mac=EVERYBODY)


def supported_functions():
    return header(0x00A5)


def alert():
    return header(0x0200)


def get_network():
    return protected(0x00A6)


def get_wireless():
    return protected(0x00A8)


def get_clock():
    return protected(0x00AC)


def set_basic(name, port=80):
    """Camera name, web port and static addressing."""
    address, mask, gateway, dns2 = ("c6120002", "ffffff00", "c6120001", "c6120003")
    addressing = struct.pack("<4sHH4s4s4s4sB", bytes.fromhex(address), port, 0,
                             *map(bytes.fromhex, (mask, gateway, gateway, dns2)), 0)
    return protected(0x00A2, name.encode().ljust(64, b"\0") + addressing)


def set_network(user):
    """UPnP on, and the account of dynamic DNS."""
    texts = b"".join(text.encode().ljust(64, b"\0") for text in (user, "secret", "camera.example.com"))
    return protected(0x00A7, bytes(1 + 64 + 64) + bytes([1, 3, 0]) + texts + bytes(1 + 200))


def status(reply):
    return struct.unpack_from("<H", reply, 16)[0]
