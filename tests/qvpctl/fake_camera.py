"""A camera that answers, or broadcasts, whatever a test gives it.

Run inside a camera's namespace with a script of one JSON object on standard input:
  {"answers": [HEX...], "ignore": N}   answer every request but the first N with these datagrams; 'SSSS' in them stands
                                       for the request's sequence, 'WWWW' for another one
  {"broadcasts": [HEX...]}             broadcast these, once
and in either "interface": the one interface the camera serves.
It prints "ready" once it listens, then each request in hexadecimal once it is answered; it ends when its standard input is closed.
"""
import json
import select
import socket
import sys

PORT = 62976


def with_sequence(answer, request):
    right, wrong = request[2:4].hex(), bytes([request[2] ^ 1, request[3]]).hex()
    return bytes.fromhex(answer.replace("SSSS", right).replace("WWWW", wrong))


def main():
    script = json.loads(sys.stdin.readline())
    server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    server.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
    server.bind(("0.0.0.0", PORT))
    server.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, script["interface"].encode())
    for datagram in script.get("broadcasts", []):
        server.sendto(bytes.fromhex(datagram), ("255.255.255.255", PORT))
    print("ready", flush=True)
    left_to_ignore = script.get("ignore", 0)
    while True:
        readable, _, _ = select.select([server, sys.stdin], [], [])
        if sys.stdin in readable:
            return
        request, sender = server.recvfrom(2048)
        answers = script.get("answers", []) if left_to_ignore == 0 else []
        left_to_ignore = max(0, left_to_ignore - 1)
        for answer in answers:
            server.sendto(with_sequence(answer, request), sender)
        print(request.hex(), flush=True)


main()
