"""Networks for one test: a host for the tool, and one for each camera.

The tool runs in one network namespace, each camera in another, joined by veth pairs. All of them lie in a user
namespace, so no privilege is needed, and end with the test: they live as long as a pipe to their first process does.
"""
import json
import os
import pathlib
import select
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).parent
PATIENCE = 60  # seconds until a condition that must come counts as missing


def line_within(stream, seconds=PATIENCE):
    """The next line of an unbuffered binary pipe, without its end."""
    line = b""
    deadline = time.monotonic() + seconds
    while not line.endswith(b"\n"):
        readable, _, _ = select.select([stream], [], [], max(0, deadline - time.monotonic()))
        assert readable, f"no line within {seconds} s, only {line!r}"
        byte = stream.read(1)
        assert byte, f"the end of the output after {line!r}"
        line += byte
    return line[:-1].decode()


class Host:
    """A network namespace, entered through the process that keeps it alive."""

    def __init__(self, unshare, enter=()):
        self.keeper = subprocess.Popen([*enter, *unshare, "sh", "-c", "ip link set lo up && echo ready && exec cat"],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
        line = self.keeper.stdout.readline()
        if line != b"ready\n":
            self.keeper.wait()
            raise OSError(self.keeper.stderr.read().decode().strip())
        self.pid = self.keeper.pid
        own_user_namespace = os.stat(f"/proc/{self.pid}/ns/user").st_ino != os.stat("/proc/self/ns/user").st_ino
        user = ["--user", "--preserve-credentials"] if own_user_namespace else []
        self.enter = ["nsenter", "--target", str(self.pid), *user, "--net"]

    def run(self, *command):
        subprocess.run([*self.enter, *command], check=True, timeout=PATIENCE)

    def start(self, *command, **options):
        return subprocess.Popen([*self.enter, *command], bufsize=0, **options)

    def close(self):
        self.keeper.stdin.close()
        self.keeper.wait(PATIENCE)
        self.keeper.stdout.close()
        self.keeper.stderr.close()


class Camera:
    def __init__(self, host, script):
        self.process = host.start(sys.executable, str(HERE / "fake_camera.py"), stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE)
        self.process.stdin.write(json.dumps(script).encode() + b"\n")
        self.requests = []
        assert line_within(self.process.stdout) == "ready"

    def wait_for_request(self):
        self.requests.append(line_within(self.process.stdout))

    def close(self):
        """Returns the requests the camera was sent."""
        if self.process.stdin.closed:
            return []
        self.process.stdin.close()
        requests = self.requests + self.process.stdout.read().decode().split()
        self.process.stdout.close()
        assert self.process.wait(PATIENCE) == 0
        return [bytes.fromhex(request) for request in requests]


class Network:
    """The tool's host, and cameras on as many links as a test wants: link N is toolN, 10.9.N.1, to 10.9.N.2."""

    def __init__(self, tool):
        self.tool = tool
        try:
            self.tool_host = Host(["unshare", "--user", "--map-root-user", "--net"])
        except OSError as no_user_namespace:
            try:
                self.tool_host = Host(["unshare", "--net"])
            except OSError:
                raise no_user_namespace from None
        self.hosts = [self.tool_host]
        self.cameras = []
        self.processes = []

    def link(self):
        number = len(self.hosts) - 1
        host = Host(["unshare", "--net"], self.tool_host.enter)
        self.hosts.append(host)
        self.tool_host.run("ip", "link", "add", f"tool{number}", "type", "veth", "peer", "name", "cam0", "netns",
                           str(host.pid))
        self.tool_host.run("ip", "address", "add", f"10.9.{number}.1/24", "brd", "+", "dev", f"tool{number}")
        self.tool_host.run("ip", "link", "set", f"tool{number}", "up")
        host.run("ip", "address", "add", f"10.9.{number}.2/24", "brd", "+", "dev", "cam0")
        host.run("ip", "link", "set", "cam0", "up")
        return host

    def camera(self, host, interface="cam0", **script):
        self.cameras.append(Camera(host, {"interface": interface, **script}))
        return self.cameras[-1]

    def run_tool(self, *arguments, **options):
        return subprocess.run([*self.tool_host.enter, self.tool, *arguments], stdin=subprocess.DEVNULL, timeout=120,
                              capture_output="stdout" not in options, **options)

    def start_tool(self, *arguments):
        self.processes.append(self.tool_host.start(self.tool, *arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                                   stderr=subprocess.PIPE))
        return self.processes[-1]

    def _udp_sockets(self):
        """The rows of the tool's namespace, each a list of words."""
        table = subprocess.run([*self.tool_host.enter, "cat", "/proc/net/udp"], capture_output=True, check=True)
        return [row.split() for row in table.stdout.decode().splitlines()[1:]]

    def wait_until_listening(self, process):
        """Until a socket is bound to the broadcast address and the port."""
        deadline = time.monotonic() + PATIENCE
        while all(row[1] != "FFFFFFFF:F600" for row in self._udp_sockets()):
            assert process.poll() is None, process.stderr.read()
            assert time.monotonic() < deadline, "the tool does not listen"
            time.sleep(0.01)

    def wait_until_read(self):
        """Until no datagram waits in a socket."""
        deadline = time.monotonic() + PATIENCE
        while any(int(row[4].split(":")[1], 16) for row in self._udp_sockets()):
            assert time.monotonic() < deadline, "the tool does not read"
            time.sleep(0.01)

    def close(self):
        for camera in self.cameras:
            camera.close()
        for process in self.processes:
            process.kill()
            process.communicate()
        for host in reversed(self.hosts):
            host.close()
