"""Broadcasts discovery requests until COUNT devices have answered; prints each reply as its sender and its bytes.

broadcast_discovery.py COUNT [SECONDS]
"""
import socket
import sys
import time

REQUEST = (b"\xfd\xfd" b"\x34\x12" b"\xa1\x00" b"\xff\xff\xff\xff\xff\xff" b"\x00\x00\x00\x00"
           b"\x00\x00" b"\x02\x00" b"\x00\x00")


def main(count, patience=20):
    replies = {}
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as tool:
        tool.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        tool.settimeout(0.5)
        deadline = time.monotonic() + patience
        while len(replies) < count and time.monotonic() < deadline:
            tool.sendto(REQUEST, ("255.255.255.255", 62976))
            try:
                while len(replies) < count:
                    data, (address, _) = tool.recvfrom(2048)
                    replies[address] = data
            except TimeoutError:
                pass
    for address, data in sorted(replies.items()):
        print(address, data.hex())


main(*map(int, sys.argv[1:]))
