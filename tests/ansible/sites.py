"""Three sites, each a virtual LAN with a host that is reached by ssh from where the test runs, and what is run there.

The test itself runs in a network of its own, which tests/ansible/in_room makes.
"""
import contextlib
import os
import re
import subprocess
import sys
import threading
import time
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "tests/end_to_end"))

from support import store  # noqa: E402
from support.waiting import wait_until  # noqa: E402

TOOL = os.environ.get("QVPCTL") or str(TREE / "build/release/qvpctl")
DAEMON = os.environ.get("QVP_DAEMON") or str(TREE / "build/release/qvp")
USER_ID, PORT = 1000, 2222
PATIENCE = 300  # seconds; thirty cameras start at once, and a playbook goes over all of them
SHOW_STORES = 'for folder in "$QVP_LAN"/*/; do printf "%s\\0" "$folder"; cat "$folder/root/etc/qvp/camera.ini"; printf "\\0"; done'


def processes():
    """The process ids of here and of every namespace below."""
    return [int(name) for name in os.listdir("/proc") if name.isdigit()]


def read_process(process, name):
    """A file of a process, b"" if it is gone by now."""
    try:
        return Path(f"/proc/{process}/{name}").read_bytes()
    except OSError:
        return b""


def network_of(process):
    try:
        return os.readlink(f"/proc/{process}/ns/net")
    except OSError:
        return None


def make_key(file, command):
    subprocess.run(command + [file], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Site:
    """A LAN of cameras, and on it a host with an ordinary user whom ssh lets in."""

    def __init__(self, name, number, folder, client_key):
        self.name, self.folder = name, folder / name
        self.address, self.gateway = f"192.0.2.{4 * number + 2}", f"192.0.2.{4 * number + 1}"
        self.home = self.folder / "home"
        (self.home / ".ssh").mkdir(parents=True)
        (self.home / ".ssh/authorized_keys").write_text(client_key.with_suffix(".pub").read_text())
        for private in (self.home, self.home / ".ssh"):
            private.chmod(0o700)
        self.users = self.folder / "passwd"
        self.users.write_text(f"root:x:0:0::/root:/bin/sh\ninstaller:x:{USER_ID}:{USER_ID}::{self.home}:/bin/sh\n")
        self.key = self.folder / "host_key"
        make_key(self.key, ["dropbearkey", "-t", "ed25519", "-f"])
        self.server = None

    def start(self, cameras):
        self.held = self.folder / "held"
        os.mkfifo(self.held)
        self.launcher = subprocess.Popen([TREE / "virtual-camera/virtual-camera", "run", "-n", str(cameras),
                                          "--daemon", DAEMON, "--", "cat", self.held])

    def wait_for_start(self, number):
        command = f"cat\0{self.held}\0".encode()
        self.process = wait_until(lambda: next((one for one in processes() if read_process(one, "cmdline") == command), None)
                                  or self.launcher.poll(), f"site {self.name}", PATIENCE)
        assert self.launcher.poll() is None, f"site {self.name} has not started"
        link = ["ip", "link", "add", f"site{number}", "type", "veth", "peer", "name", "wan0", "netns", str(self.process)]
        subprocess.run(link, check=True)
        subprocess.run(["ip", "address", "add", f"{self.gateway}/30", "dev", f"site{number}"], check=True)
        subprocess.run(["ip", "link", "set", f"site{number}", "up"], check=True)
        self.run(f"ip address add {self.address}/30 dev wan0 && ip link set wan0 up && mount --bind {self.users} /etc/passwd")
        self.listen()

    def inside(self, *command):
        variables = dict(one.split(b"=", 1) for one in read_process(self.process, "environ").split(b"\0") if b"=" in one)
        place = ["nsenter", "--target", str(self.process), "--user", "--preserve-credentials", "--mount", "--net",
                 "--pid", "--"]
        return place + list(command), {os.fsdecode(name): os.fsdecode(text) for name, text in variables.items()}

    def run(self, script):
        command, variables = self.inside("sh", "-c", script)
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, env=variables).stdout

    def listen(self):
        """The server as an ordinary user, who in a namespace like this one is the only one there can be."""
        command, variables = self.inside(
            "unshare", "--user", f"--map-user={USER_ID}", f"--map-group={USER_ID}", "dropbear", "-F", "-E", "-s",
            "-r", self.key, "-p", f"{self.address}:{PORT}", "-P", self.folder / "server.pid")
        with open(self.folder / "server.log", "ab") as log:
            self.server = subprocess.Popen(command, env=variables, stdout=log, stderr=log)
        wait_until(lambda: b":%04X " % PORT in self.run("cat /proc/net/tcp"), f"the server of {self.name}", PATIENCE)

    def servers(self):
        network = network_of(self.process)
        return [one for one in processes()
                if read_process(one, "comm") == b"dropbear\n" and network_of(one) == network]

    def go_down(self):
        """The server and every connection; what was started over them goes on."""
        for process in self.servers():
            with contextlib.suppress(ProcessLookupError):  # a connection that was just over
                os.kill(process, 9)
        self.server.wait()

    def is_at_work(self):
        network = network_of(self.process)
        return any(read_process(one, "comm") == b"qvpctl\n" and network_of(one) == network for one in processes())

    def stores(self):
        """{number of the camera: its store}, read by the site's root."""
        parts = self.run(SHOW_STORES).split(b"\0")[:-1]
        return {int(Path(os.fsdecode(folder)).name): store.parse(content) for folder, content in zip(parts[::2], parts[1::2])}

    def has_name(self, beginning):
        """Whether a camera is called so by now. To ask costs the processor something, so it is not asked all the time."""
        time.sleep(0.3)
        return any(content["CAMSYSTEM"]["CameraName"].startswith(beginning.encode()) for content in self.stores().values())

    def stop(self):
        self.launcher.kill()
        self.launcher.wait()
        if self.server:
            self.server.wait()


class Sites:
    def __init__(self, folder, names, cameras):
        self.folder, self.cameras = folder, cameras
        self.key = folder / "key"
        make_key(self.key, ["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f"])
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
        self.all = [Site(name, number, folder, self.key) for number, name in enumerate(names)]
        self.write_ssh_configuration()
        try:
            for site in self.all:
                site.start(cameras)
            for number, site in enumerate(self.all):
                site.wait_for_start(number)
        except BaseException:
            self.stop()
            raise

    def write_ssh_configuration(self):
        """ssh looks for files of its user in the account's folder, whatever HOME is; so all of them are named."""
        known = ""
        for site in self.all:
            said = subprocess.run(["dropbearkey", "-y", "-f", site.key], check=True, stdout=subprocess.PIPE, text=True).stdout
            known += f"[{site.address}]:{PORT} {re.search('^ssh-ed25519 [^ ]+', said, re.M).group()}\n"
        (self.folder / "known_hosts").write_text(known)
        self.ssh_configuration = self.folder / "ssh_config"
        self.ssh_configuration.write_text(f"UserKnownHostsFile {self.folder}/known_hosts\nGlobalKnownHostsFile /dev/null\n"
                                          f"StrictHostKeyChecking yes\nIdentitiesOnly yes\nIdentityAgent none\n"
                                          f"IdentityFile {self.key}\n")

    def stop(self):
        for site in self.all:
            if hasattr(site, "launcher"):
                site.stop()


class CommandLines(threading.Thread):
    """Every command line that is seen in some networks, while the block runs. A qvpctl or an ssh lives longer than the pause."""

    def __init__(self, networks):
        super().__init__(daemon=True)
        self.networks, self.seen, self.over = networks, set(), threading.Event()

    def run(self):
        while not self.over.wait(0.1):
            for process in processes():
                line = read_process(process, "cmdline")
                if line and line not in self.seen and network_of(process) in self.networks:
                    self.seen.add(line)

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *unused):
        self.over.set()
        self.join()
