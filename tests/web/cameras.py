"""The cameras on the virtual LAN, as their stores have them."""
import os
import subprocess
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
DAEMON = os.environ.get("QVP_DAEMON") or str(TREE / "build/release/qvp")
PATIENCE = 20


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


def end(process):
    process.terminate()
    try:
        process.wait(PATIENCE)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        raise
