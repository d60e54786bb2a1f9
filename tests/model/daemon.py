"""The real daemon in a virtual camera, on a board that only writes down what it is asked for."""
import os
import shutil
import signal
import socket
import struct
from pathlib import Path

from settings import ini
from support.tool import ADDRESS
from support.waiting import PATIENCE
from wire import BY_MAC, PRIMARY

PORT = 62976
EVERYBODY = "255.255.255.255"
LIBRARY = "/usr/lib/recording_board.so"
ADMINISTRATORS = b"root:x:0:\nadmin:x:1000:%s\nusers:x:1001:\n"


def udp_socket(address, port):
    udp = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    udp.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    udp.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
    udp.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
    udp.bind((address, port))
    udp.settimeout(PATIENCE)
    return udp


class Daemon:
    def __init__(self, camera, library):
        self.camera = camera
        self.root = Path(f"/proc/{camera.pid}/root")
        shutil.copy(library, self.root / LIBRARY[1:])
        (self.root / "var/lib/record").write_bytes(b"")
        self.record = os.open(self.root / "var/lib/record", os.O_RDWR)
        self.tool = udp_socket(ADDRESS, 0)
        self.listener = udp_socket("", PORT)
        self.folder_of_store = os.open(self.root / "etc/qvp", os.O_DIRECTORY)
        self.run = None

    def close(self):
        os.close(self.record)
        os.close(self.folder_of_store)
        self.tool.close()
        self.listener.close()

    # The board's state, each file put into the place of the old one.

    def put(self, path, content):
        file = self.root / path
        if content is None:
            file.unlink(missing_ok=True)
            return
        file.with_suffix(".new").write_bytes(content)
        file.with_suffix(".new").rename(file)

    def put_store(self, sections):
        self.put("etc/qvp/camera.ini", ini(sections))

    def put_board(self, board):
        servers = (b"nameserver %d.%d.%d.%d\n" % tuple(server) for server in board.name_servers)
        channels = (f"[{region}]\n" + "".join(f"{channel}=1\n" for channel in channels)
                    for region, channels in board.channels.items())
        self.put("etc/resolv.conf", b"".join(servers))
        self.put("etc/wifi_channel.ini", "".join(channels).encode())
        self.put("etc/qvp/site_list.txt", board.site_list)
        others = [name for name in board.administrators if name != b"admin"]
        self.put("etc/group", ADMINISTRATORS % b",".join(others))
        state = board.upgrade_state
        self.put("run/qvp/sysinfo/4", None if state is None else b"%d" % state)

    def put_clock(self, seconds):
        """A time in UTC; no daemon may be running."""
        (self.root / "var/lib/time").write_bytes(struct.pack("=q", seconds))
        for file in ("etc/TZ", "etc/localtime"):
            self.put(file, None)

    # A run.

    def start(self):
        self.run = self.camera.start_daemon("eth0", prefix=("env", f"LD_PRELOAD={LIBRARY}"))

    def stop(self):
        run, self.run = self.run, None
        if run:
            run.signal(signal.SIGTERM)
            assert run.exit_status() == 0, run.trace()
            run.log.unlink()
            self.camera.runs.remove(run)

    def report(self):
        """The next presence report."""
        while True:
            data, sender = self.listener.recvfrom(2048)
            if sender == (self.camera.address, PORT):  # this port hears what the tool broadcasts, too
                return data

    def ask_for_report(self):
        self.run.signal(signal.SIGALRM)
        return self.report()

    def ask(self, datagram, to):
        """What comes back before the answer to a question that is asked behind it: requests are served one after the
        other, and what the board is asked for is done before the next one."""
        sequence = bytes(byte ^ 0x55 for byte in datagram[2:4].ljust(2, b"\0"))
        fence = struct.pack("<2s2sH6s4xHHH", b"\xfd\xfd", sequence, 0xA5, self.camera.mac, BY_MAC, PRIMARY, 0)
        self.tool.sendto(datagram, (to, PORT))
        self.tool.sendto(fence, (self.camera.address, PORT))
        replies = []
        while True:
            data = self.tool.recv(2048)
            if data[:6] == b"\xee\xfe" + sequence + b"\xa5\0" and data[18] == PRIMARY:
                return replies
            replies.append(data)

    def events(self):
        """What the board was asked for since the last time."""
        size = os.fstat(self.record).st_size
        if size == 0:
            return []
        content = os.pread(self.record, size, 0)
        os.ftruncate(self.record, 0)
        return content.decode("latin-1").split("\0")[:-1]

    def store_content(self):
        file = os.open("camera.ini", os.O_RDONLY, dir_fd=self.folder_of_store)
        try:
            return os.read(file, 1 << 20)
        finally:
            os.close(file)
