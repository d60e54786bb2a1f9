"""The cameras on the virtual LAN, as their stores have them."""
import os
import socket
import subprocess
import sys
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
sys.path.append(str(TREE / "tests/end_to_end"))

from support.camera import Gate  # noqa: E402

DAEMON = os.environ.get("QVP_DAEMON") or str(TREE / "build/release/qvp")
PATIENCE = 60


def mac(number):
    return f"02:51:56:50:00:{number:02x}"


def root(number):
    return Path(os.environ["QVP_LAN"]) / str(number) / "root"


def stored(number, section, key):
    """A value of the camera's store, as it stands there."""
    found = None
    for line in (root(number) / "etc/qvp/camera.ini").read_text().splitlines():
        if line.startswith("["):
            found = line[1:-1]
        elif found == section and line.startswith(key + "="):
            return line.partition("=")[2]
    return None


class Held:
    """A camera whose network does not come up again after a change before its gate is opened."""

    def __init__(self, number):
        self.root = root(number)
        self.gate = Gate(self, "ipv4")
        script = self.root / "etc/init.d/ipv4"
        self.script, self.board = script, script.rename(script.with_name("ipv4.board"))
        script.write_text(f"#!/bin/sh\nread -r _ <{self.gate.path}\n")
        script.chmod(0o755)

    def release(self):
        """Once somebody has waited at the gate; another change finds it as it was."""
        self.board.rename(self.script)
        self.gate.open()
        self.gate.pipe.unlink()


def report(hardware_address, address, product, firmware, name):
    """Broadcasts a presence report, as a camera that does not exist would."""
    octets = bytes(map(int, address.split(".")))
    parts = {0: b"\xff\xff", 4: b"\xa0\x00", 6: hardware_address, 12: octets, 18: b"\x02\x00\x27\x01", 22: product, 118: firmware,
             150: hardware_address, 220: name, 284: octets, 288: b"\xff\xfe\x00\x00"}
    data = bytearray(317)
    for offset, value in parts.items():
        data[offset:offset + len(value)] = value
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        sender.sendto(data, ("255.255.255.255", 62976))


def end(process):
    process.terminate()
    try:
        process.wait(PATIENCE)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        raise
