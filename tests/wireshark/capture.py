"""Captures of the virtual LAN: datagrams heard there, or made, each with who sent it to whom, as a pcap file.

Times are the capture's own, a millisecond from one datagram to the next, so that what is shown of it is the same on
every machine.
"""
import select
import socket
import struct

PORT = 62976
ALL_PROTOCOLS = 0x0003
LINKTYPE_IPV4 = 228


def ip(text):
    return socket.inet_aton(text)


def udp_packet(source, target, payload):
    """An IPv4 packet; source and target are (address, port)."""
    udp = struct.pack(">HHHH", source[1], target[1], 8 + len(payload), 0) + payload
    return ipv4_packet(source[0], target[0], 17, udp)


def icmp_port_unreachable(source, target, packet):
    """What `source` says to a packet for a port where nobody listens; checksums stay zero, and nobody looks at them."""
    return ipv4_packet(source, target, 1, struct.pack(">BBHI", 3, 3, 0, 0) + packet)


def ipv4_packet(source, target, protocol, content):
    header = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(content), 0, 0, 64, protocol, 0, ip(source), ip(target))
    return header + content


class Capture:
    """Packets in their order; each has its number, as Wireshark counts them."""

    def __init__(self):
        self.packets = []
        self.time = 0

    def add(self, packet, captured=None, after=1):
        """`captured`: how many bytes of it the capture keeps; `after`: milliseconds since the one before."""
        self.time += after
        self.packets.append((self.time, packet[:captured], len(packet)))
        return len(self.packets)

    def udp(self, source, target, payload, **options):
        return self.add(udp_packet(source, target, payload), **options)

    def write(self, path):
        with open(path, "wb") as file:
            file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, LINKTYPE_IPV4))
            for time, packet, length in self.packets:
                file.write(struct.pack("<IIII", 1_800_000_000 + time // 1000, time % 1000 * 1000, len(packet), length))
                file.write(packet)


class Ear:
    """Hears what passes the LAN's interface on the protocol's port, from the moment it is made."""

    def __init__(self, interface="lan0"):
        self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_DGRAM, socket.htons(ALL_PROTOCOLS))
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 22)
        self.socket.bind((interface, 0))

    def close(self):
        self.socket.close()

    def heard(self):
        """All UDP datagrams since the last call: (source, target, payload)."""
        datagrams = []
        while select.select([self.socket], [], [], 0)[0]:
            packet = self.socket.recv(4096)
            if packet[0] != 0x45 or packet[9] != 17:
                continue
            ports = struct.unpack(">HH", packet[20:24])
            if PORT in ports:
                addresses = socket.inet_ntoa(packet[12:16]), socket.inet_ntoa(packet[16:20])
                length = struct.unpack(">H", packet[24:26])[0]
                datagrams.append(((addresses[0], ports[0]), (addresses[1], ports[1]), packet[28 : 20 + length]))
        return datagrams
