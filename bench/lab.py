"""A network of two hosts, made in namespaces that bench/run has entered, and the servers that are measured on it."""
import ctypes
import mmap
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import sys
import time

TREE = pathlib.Path(__file__).resolve().parents[1]
BUILD = pathlib.Path(os.environ.get("QVP_BUILD", TREE / "build/release"))
STATE = pathlib.Path("/run/bench")  # a tmpfs
CLIENT_ADDRESS, SERVER_ADDRESS, INTERFACE = "198.18.0.1", "198.18.0.2", "eth0"
CPUS = sorted(os.sched_getaffinity(0))
CLIENT_CPU, SERVER_CPU = CPUS[0], CPUS[-1]
CLONE_NEWNET = 0x40000000
PROCESS_CPU_CLOCK = 2
LONGEST_WAIT = 60

c_library = ctypes.CDLL(None, use_errno=True)
exec_time = mmap.mmap(-1, 8)  # when the last process became its program; shared with it until then


def sh(script):
    subprocess.run(["sh", "-ec", script], check=True)


def wait_until(condition, what):
    end = time.monotonic() + LONGEST_WAIT
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(f"never: {what}")
        time.sleep(0.002)


def zone_file():
    """/etc/localtime as a camera has it: a zone with daylight saving, by its rule alone."""
    block = struct.pack(">4s1s15x6l", b"TZif", b"2", 0, 0, 0, 0, 1, 4) + struct.pack(">lBB4s", 3600, 0, 0, b"CET\0")
    return block + block + b"\nCET-1CEST,M3.5.0,M10.5.0/3\n"


def make_etc(folder):
    """What programs find in /etc: the same on every machine."""
    folder.mkdir()
    for name in ("ld.so.cache", "ld.so.conf", "ld.so.conf.d", "passwd", "group", "nsswitch.conf", "alternatives"):
        source = pathlib.Path("/etc", name)
        if source.is_dir():
            shutil.copytree(source, folder / name, symlinks=True)
        elif source.exists():
            shutil.copy(source, folder)
    shutil.copy(TREE / "virtual-camera/board/etc/wifi_channel.ini", folder)
    (folder / "resolv.conf").write_text("nameserver 198.18.0.1\nnameserver 198.18.0.3\n")
    (folder / "localtime").write_bytes(zone_file())


def enter_network(name):
    with open(f"/run/netns/{name}", "rb") as network:
        if c_library.setns(network.fileno(), CLONE_NEWNET) != 0:
            raise OSError(ctypes.get_errno(), f"setns {name}")


def make_lab():
    if os.getpid() != 1:  # the first process of namespaces of its own: what follows would change this machine
        sys.exit("to be run by bench/in_lab")
    sh("mount -t tmpfs -o mode=755 run /run && mkdir /run/bench")
    make_etc(STATE / "etc")
    sh(f"""mount --bind {STATE}/etc /etc
        ip link set lo up
        ip netns add server
        ip link add client0 type veth peer name {INTERFACE} netns server
        ip address add {CLIENT_ADDRESS}/24 dev client0 && ip link set client0 up
        ip -n server link set {INTERFACE} address 02:51:56:50:00:01
        ip -n server address add {SERVER_ADDRESS}/24 dev {INTERFACE}
        ip -n server link set lo up && ip -n server link set {INTERFACE} up
        ip -n server route add default via {CLIENT_ADDRESS}""")
    # A server is found to be starting by the ICMP message that nobody listens yet.
    in_server = start_process(["sh", "-c", "echo 0 >/proc/sys/net/ipv4/icmp_ratelimit"], "server")
    if os.waitpid(in_server, 0)[1] != 0:
        raise RuntimeError("cannot lift the limit of ICMP messages")
    os.sched_setaffinity(0, {CLIENT_CPU})


def start_process(command, network, environment=None):
    """Its process id; whoever calls this waits for its end."""
    def enter():
        enter_network(network)
        os.sched_setaffinity(0, {SERVER_CPU})
        exec_time[:] = struct.pack("q", time.monotonic_ns())

    started = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", **(environment or {})}, preexec_fn=enter)
    started.returncode = 0  # so that subprocess does not wait for it
    return started.pid


class Process:
    """A running server."""

    def __init__(self, pid):
        self.pid = pid

    def cpu_seconds(self):
        return time.clock_gettime(~self.pid << 3 | PROCESS_CPU_CLOCK)

    def memory(self):
        """Resident and private dirty bytes."""
        lines = pathlib.Path(f"/proc/{self.pid}/smaps_rollup").read_text().splitlines()[1:]
        fields = {line.split(":")[0]: int(line.split()[1]) * 1024 for line in lines}
        return fields["Rss"], fields["Private_Dirty"]

    def stop(self):
        os.kill(self.pid, signal.SIGTERM)
        os.waitpid(self.pid, 0)


class Server:
    """How a server is started, and the requests that it is measured with."""

    def __init__(self, command, port, requests, environment=None, before_start=None, on_start=None,
                 pid_file=None, is_right=None, settles=0):
        self.command, self.port, self.environment = [str(word) for word in command], port, environment
        self.requests = [request.hex() for request in requests]
        self.before_start = before_start or (lambda: None)
        self.on_start = on_start or (lambda: None)  # between the start and the first request
        self.pid_file = pid_file  # of one that goes to the background
        self.is_right = is_right or (lambda reply: True)
        self.settles = settles  # seconds until it keeps what it has read

    def start(self, prefix=()):
        """Returns once the server has answered its first request, and another when it has settled."""
        self.before_start()
        pid = start_process([*prefix, *self.command], "server", self.environment)
        process = Process(self._background_process(pid) if self.pid_file else pid)
        self.on_start()
        self.first_reply = self._ask_until_answered(process)
        if not self.is_right(self.first_reply):
            raise RuntimeError(f"another answer than is to be measured: {self.first_reply.hex()}")
        if self.settles:
            time.sleep(self.settles)
            self._ask_until_answered(process)
        return process

    def _background_process(self, started):
        os.waitpid(started, 0)
        wait_until(lambda: self.pid_file.exists() and self.pid_file.read_text().strip(), f"{self.pid_file}")
        pid = int(self.pid_file.read_text())
        self.pid_file.unlink()
        return pid

    def _ask_until_answered(self, process):
        """A request that was refused was not received; any other is answered, however long that takes."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.connect((SERVER_ADDRESS, self.port))
            client.settimeout(LONGEST_WAIT)
            while True:
                try:
                    client.send(bytes.fromhex(self.requests[0]))
                    return client.recv(1024)
                except ConnectionRefusedError:
                    if os.waitpid(process.pid, os.WNOHANG) != (0, 0):
                        raise RuntimeError(f"{self.command[0]} ended at once") from None
                    time.sleep(0.005)


class Load:
    """What a run of the load generator measured."""

    def __init__(self, server, *options):
        command = [BUILD / "bench_load", *options, SERVER_ADDRESS, str(server.port), *server.requests]
        output = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout
        self.replies, self.lost, self.reply_bytes, nanoseconds, self.p50, self.p99 = map(int, output.split())
        self.rate = self.replies * 1e9 / nanoseconds
