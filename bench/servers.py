"""What is measured: the floor, the daemon with each of its commands, and two well-known daemons beside it."""
import os
import socket
import struct
import subprocess
from dataclasses import dataclass

import datagrams
from lab import BUILD, INTERFACE, SERVER_ADDRESS, STATE, TREE, Server, wait_until

FLOOR_PORT = 9
DAEMON_SETTLES = 3.2  # a file that was changed less than three seconds ago is read anew by every request
PEERS = TREE / "build/bench/peers/usr/sbin"
DISCOVERY_BYTES = 505


@dataclass
class Row:
    key: str
    name: str
    server: Server
    program: str
    goal: str = ""  # a row of the goals
    counted: int = 100  # requests whose calls and instructions are counted


def floor(reply_bytes, *options, port=FLOOR_PORT):
    command = [BUILD / "bench_floor", *options, port, reply_bytes]
    return Server(command, port, [datagrams.discovery()])


def floor_alone(when):
    return Row(f"floor_alone_{when}", f"floor, {when}", floor(DISCOVERY_BYTES, port=10), "floor")


def floors():
    return [floor_alone("first"),
            Row("floor_traces", "floor, two traces", floor(DISCOVERY_BYTES, "-t", port=10), "floor"),
            Row("floor_queries", "floor, two traces, three queries",
                floor(DISCOVERY_BYTES, "-t", "-q", INTERFACE, port=10), "floor")]


def make_store(folder, size):
    """The factory store, padded to a size with sections that the daemon does not know."""
    folder.mkdir(exist_ok=True)
    text = (TREE / "virtual-camera/factory.ini").read_text()
    padding = ""
    while len(text) + len(padding) < size:
        line = f"Key{len(padding)}=a value of the board's own\n"
        padding += line if len(padding) % 1000 else f"[BOARD{len(padding)}]\n" + line
    (folder / "camera.ini").write_text(padding[:max(0, size - len(text) - 1)] + "\n" * bool(padding) + text)
    (folder / "sysinfo").mkdir(exist_ok=True)


def daemon(*requests, folder=STATE / "camera", store_size=0, status=datagrams.DONE):
    """Each start finds the same store."""
    environment = {"QVP_STORE": str(folder / "camera.ini"), "QVP_SYSINFO": str(folder / "sysinfo")}
    return Server([BUILD / "qvp", INTERFACE], datagrams.PORT, requests, environment,
                  before_start=lambda: make_store(folder, store_size),
                  is_right=lambda reply: datagrams.status(reply) == status, settles=DAEMON_SETTLES)


def daemon_rows():
    d = datagrams
    rows = [("supported", "supported functions", "header-only", [d.supported_functions()]),
            ("alert", "alert information", "header-only", [d.alert()]),
            ("discovery", "discovery", "discovery", [d.discovery()]),
            ("discovery_landap", "discovery, landap", "discovery", [d.discovery(d.LANDAP)]),
            ("get_wireless", "get wireless", "authenticated get", [d.get_wireless()]),
            ("get_clock", "get date and time", "authenticated get", [d.get_clock()]),
            ("get_network", "get advanced network", "authenticated get", [d.get_network()]),
            ("set_network", "set advanced network, 6 keys", "", [d.set_network("one"), d.set_network("two")]),
            ("set_name", "set name and address, 8 keys", "", [d.set_basic("One"), d.set_basic("Two")])]
    made = [Row(key, name, daemon(*requests), "qvp", goal) for key, name, goal, requests in rows]
    made[-1].counted = 20  # four commands are run for each
    refused = daemon(d.set_basic("Camera", port=0), status=d.REFUSED)
    return [*made[:-2], Row("set_refused", "set, refused", refused, "qvp"), *made[-2:]]


def chronyd():
    """Its monitoring port; -x: it leaves the clock alone."""
    folder = STATE / "chrony"
    folder.mkdir()
    (folder / "chrony.conf").write_text(f"""port 0
cmdport 323
bindcmdaddress 0.0.0.0
bindcmdaddress {folder}/chronyd.sock
cmdallow all
pidfile {folder}/pid
""")
    tracking = struct.pack(">BBBBHHIII", 6, 1, 0, 0, 33, 0, 0x4711, 0, 0).ljust(104, b"\0")
    command = [PEERS / "chronyd", "-d", "-x", "-u", "root", "-f", folder / "chrony.conf"]
    return Server(command, 323, [tracking])


def minissdpd():
    """It answers searches for devices that have been made known to it on its local socket."""
    folder = STATE / "minissdpd"
    folder.mkdir()
    wanted, address = "upnp:rootdevice", folder / "socket"

    def register():
        wait_until(address.exists, "minissdpd's socket")
        texts = [wanted, f"uuid:02515650-0001::{wanted}", "Example/1.0 UPnP/1.0", f"http://{SERVER_ADDRESS}/device.xml"]
        with socket.socket(socket.AF_UNIX) as client:
            client.connect(str(address))
            client.send(b"\x04" + b"".join(bytes([len(text)]) + text.encode() for text in texts))
            client.send(b"\x01" + bytes([len(wanted)]) + wanted.encode())  # which devices it knows: once it knows one
            client.recv(1024)
        address.unlink()

    search = "\r\n".join(["M-SEARCH * HTTP/1.1", "HOST: 239.255.255.250:1900", 'MAN: "ssdp:discover"', "MX: 1",
                          f"ST: {wanted}", "", ""])
    command = [PEERS / "minissdpd", "-i", INTERFACE, "-s", address, "-p", folder / "pid"]
    return Server(command, 1900, [search.encode()], on_start=register, pid_file=folder / "pid")


def why_absent(name):
    """Empty for a peer that can be started."""
    program = PEERS / name
    if not os.access(program, os.X_OK):
        return "it could not be fetched"
    needed = subprocess.run(["ldd", program], stdout=subprocess.PIPE, text=True, check=False).stdout
    missing = [line.split()[0] for line in needed.splitlines() if "not found" in line]
    return f"this machine has no {', '.join(missing)}" if missing else ""


def peer_rows():
    """The rows, and a line for each peer that is left out."""
    rows, left_out = [], []
    for key, name, make in (("chronyd", "chronyd, tracking", chronyd), ("minissdpd", "minissdpd, search", minissdpd)):
        reason = why_absent(key)
        if reason:
            left_out.append(f"{key} is left out: {reason}")
        else:
            rows.append(Row(key, name, make(), key))
    return rows, left_out


def built(preset):
    """The daemon of a preset, where there is one."""
    path = BUILD.parent / preset / "qvp"
    return path if path.exists() else None
