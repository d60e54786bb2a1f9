"""Broadcasts discovery requests until COUNT devices have answered; prints each reply as its sender and its bytes.

broadcast_discovery.py COUNT [SECONDS [LEAST]]

Where fewer than COUNT will answer, SECONDS is how long to hear whether one more does, and LEAST how many are waited for
beyond that.
"""
import socket
import sys
import time

REQUEST = (b"\xfd\xfd" b"\x34\x12" b"\xa1\x00" b"\xff\xff\xff\xff\xff\xff" b"\x00\x00\x00\x00"
           b"\x00\x00" b"\x02\x00" b"\x00\x00")


PATIENCE = 60


def main(count, seconds=PATIENCE, least=0):
    replies = {}
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as tool:
        tool.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        tool.settimeout(0.5)
        start = time.monotonic()
        while len(replies) < count and time.monotonic() < start + (PATIENCE if len(replies) < least else seconds):
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
