"""What the tests of the fleet's commands share: files of cameras, and what a run says of each camera."""
import os
import signal
import socket
import subprocess
import threading
from collections import Counter
from contextlib import contextmanager
from pathlib import Path

import cameras
from cameras import mac


# Cameras on this machine answer within milliseconds, and every search waits for all answers; one that runs its commands
# while others do is asked as long as it takes. One that a file names is looked for again if it was too slow; where
# others count, or nothing may be said, there is more time.
PATIENCE = ["--wait", "0.5", "--retries", "11"]
MORE = ["--wait", "2", "--retries", "11"]


def run(form, command, *arguments, **options):
    return cameras.run(form, command, *arguments, *([] if "--wait" in arguments else PATIENCE), **options)


def write(folder, heading, *rows, name="site.csv"):
    """A table; a row is a camera, or its MAC, and its cells."""
    lines = [heading, *(",".join([row[0] if isinstance(row[0], str) else mac(row[0]), *row[1:]]) for row in rows)]
    file = folder / name
    file.write_text("\n".join(lines) + "\n")
    return str(file)


def by_mac(result):
    """{MAC: record} of the cameras, and the summary."""
    *cameras, last = result.records
    assert "summary" in last, result
    return {record["mac"]: record for record in cameras}, last["summary"]


def results(records, of):
    """What came of these cameras, in their order."""
    return [records[mac(camera)]["result"] for camera in of]


def cut_off(site, words, *options, **environment):
    """Kills a run as soon as it says that; all it has said."""
    process = start("apply", site, *options, **environment)
    said = read_until(process, words)
    process.kill()
    process.wait()
    assert process.returncode == -signal.SIGKILL, said
    return said


def start(*arguments, **environment):
    """A run that tells its steps."""
    return subprocess.Popen([cameras.TOOL, *arguments, *PATIENCE], stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                            env={**os.environ, "QVPCTL_PASSWORD": "admin", **environment})


def read_until(process, words):
    """What it says, up to the line with these words."""
    said = ""
    for line in process.stderr:
        said += line
        if words in line:
            return said
    raise AssertionError(f"never said '{words}': {said}")


def keep_answers_back(camera):
    """What the camera sends to the tool gets lost; its broadcasts do not."""
    camera.run("ip", "neighbour", "replace", "198.18.0.1", "lladdr", "02:00:5e:10:00:ff", "dev", "eth0", "nud", "permanent")


def let_answers_through(camera):
    camera.run("ip", "neighbour", "delete", "198.18.0.1", "dev", "eth0")


def is_refusal(datagram):
    """By the status of its header."""
    return datagram[:2] == b"\xee\xfe" and datagram[16] == 3


@contextmanager
def datagrams_kept():
    """All of the protocol that pass the LAN meanwhile, in their order; there afterwards."""
    kept = []
    with socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.htons(3)) as wire:
        wire.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 22)
        wire.bind(("lan0", 0))
        yield kept
        wire.setblocking(False)
        while True:
            try:
                frame = wire.recv(2048)
            except BlockingIOError:
                break
            datagram = frame[42:]  # behind the headers of Ethernet, IPv4 and UDP
            if frame[23] == 17 and datagram[:2] in (b"\xfd\xfd", b"\xee\xfe"):
                kept.append(datagram)


@contextmanager
def refusals_counted():
    """How many requests each camera refuses meanwhile, by its MAC; a request that was sent again is one, by its sequence."""
    counts = Counter()
    with datagrams_kept() as datagrams:
        yield counts
    counts.update(mac for mac, _ in {(data[6:12].hex(":"), data[2:4]) for data in datagrams if is_refusal(data)})


@contextmanager
def tools_watched():
    """What every user of the machine sees of the tool while it runs: {first word behind its name: all texts}."""
    seen, over = {}, threading.Event()

    def look():
        while not over.wait(0.01):
            for process in Path("/proc").glob("[0-9]*"):
                try:
                    if (process / "exe").readlink() != Path(cameras.TOOL).resolve():
                        continue
                    words = (process / "cmdline").read_bytes().decode().split("\0")
                    names = [file.read_text() for file in process.glob("task/*/comm")]
                except OSError:  # it has ended
                    continue
                if len(words) > 1:  # none in a process that is about to end
                    seen.setdefault(words[1], set()).update(words[2:], names)

    thread = threading.Thread(target=look)
    thread.start()
    try:
        yield seen
    finally:
        over.set()
        thread.join()
