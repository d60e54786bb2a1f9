"""A configuration tool's sockets on the LAN."""
import socket

from support.waiting import PATIENCE
from support.wire import BY_MAC, EVERYONE, PORT, request

ADDRESS = "198.18.0.1"


class Tool:
    """Sends from a port of its own, so that what comes back was sent to that port."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
        self.socket.bind((ADDRESS, 0))
        self.socket.settimeout(PATIENCE)

    def close(self):
        self.socket.close()

    def send(self, datagram, to=EVERYONE):
        self.socket.sendto(datagram, (to, PORT))

    def receive(self):
        data, sender = self.socket.recvfrom(2048)
        return data, sender

    def ask(self, camera, datagram, to=None):
        """The next datagram that comes back; it has to come from the camera's own port, and to carry the request's
        sequence and opcode."""
        self.send(datagram, to or camera.address)
        data, sender = self.receive()
        assert sender == (camera.address, PORT)
        assert data[2:6] == datagram[2:6], f"a reply to something else: {data[:22].hex(' ')}"
        return data

    def hears_nothing_of(self, camera, *datagrams, to=None):
        """Sends them, and behind them a request that is answered: requests are served one after the other, so an
        answer to an earlier one would come first."""
        for datagram in datagrams:
            self.send(datagram, to or camera.address)
        self.assert_in_step(camera)

    def assert_in_step(self, camera):
        """Nothing is on its way but what is asked for now."""
        self.ask(camera, request(0x00A1, camera.mac, selector=BY_MAC, sequence=0xBEEF))

    def has_reply(self):
        """Whether a datagram has arrived by now."""
        self.socket.setblocking(False)
        try:
            return bool(self.socket.recv(2048, socket.MSG_PEEK))
        except BlockingIOError:
            return False
        finally:
            self.socket.settimeout(PATIENCE)


class Listener:
    """A tool that only listens to what cameras broadcast."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
        self.socket.bind(("", PORT))
        self.socket.settimeout(PATIENCE)
        self.passed_over = []

    def close(self):
        self.socket.close()

    def report(self, *cameras):
        """The next report, of one of `cameras` if any are given; all else on this port are requests of tools."""
        wanted = {camera.mac for camera in cameras}
        for data in self.passed_over:
            if not wanted or data[6:12] in wanted:
                self.passed_over.remove(data)
                return data
        while True:
            data, sender = self.socket.recvfrom(2048)
            if data[:2] != b"\xff\xff":
                continue
            assert sender[1] == PORT
            if not wanted or data[6:12] in wanted:
                return data
            self.passed_over.append(data)
