"""Virtual cameras on the LAN that pytest runs in."""
import errno
import os
import re
import subprocess
import tempfile
from pathlib import Path

from support import store
from support.waiting import wait_until

TREE = Path(__file__).resolve().parents[3]
SCRIPT = TREE / "virtual-camera" / "camera"
CABLE = TREE / "virtual-camera" / "lib" / "cable"
SANITIZER_REPORT = re.compile(r"==\d+==|runtime error:|Sanitizer")
TERMINATED = "Terminated"

# The words of a line of a board's log are quoted for bash, so bash takes them apart.
SPLIT_LOG = 'while IFS= read -r line; do eval "w=($line)"; printf "%s\\0" "${#w[@]}" "${w[@]}"; done'


class Gate:
    """Holds a board script until it is opened."""

    def __init__(self, camera, name):
        self.path = f"/run/gate-{name}"
        self.pipe = camera.root / self.path[1:]
        os.mkfifo(self.pipe)
        self.writer = None

    def _reader_is_there(self):
        try:
            self.writer = os.open(self.pipe, os.O_WRONLY | os.O_NONBLOCK)
        except OSError as error:
            assert error.errno == errno.ENXIO
        return self.writer is not None

    def wait(self):
        """Until a script stands at the gate."""
        wait_until(self._reader_is_there, f"a script at {self.path}")

    def open(self):
        os.close(self.writer)


class Run:
    """A daemon that a test starts by itself."""

    def __init__(self, process, log):
        self.process = process
        self.log = log
        self.ended_as_expected = False

    @property
    def pid(self):
        return self.process.pid

    def trace(self):
        return self.log.read_text(errors="replace") if self.log else ""

    def wait_for_start(self):
        wait_until(lambda: "QVP Client Start" in self.trace() or self.process.poll() is not None, "the daemon's start")
        assert self.process.poll() is None, self.trace()
        return self

    def signal(self, number):
        os.kill(self.pid, number)

    def exit_status(self):
        status = self.process.wait(timeout=60)
        self.ended_as_expected = True
        assert not SANITIZER_REPORT.search(self.trace()), self.trace()
        return status

    def finish(self):
        if self.process.poll() is None:
            self.process.terminate()
        if not self.ended_as_expected:
            assert self.exit_status() == 0, self.trace()


class Camera:
    def __init__(self, number, daemon_options, options):
        self.number = number
        self.address = f"198.18.{number // 256 + 1}.{number % 256}"
        self.mac = bytes([0x02, 0x51, 0x56, 0x50, number >> 8, number & 0xFF])
        self.folder = Path(os.environ["QVP_LAN"]) / str(number)
        self.root = self.folder / "root"
        self.store_file = self.root / "etc/qvp/camera.ini"
        self.exit_status = "0"  # what the daemon has to end with when the camera is switched off
        self.runs = []
        self._starting = subprocess.Popen([SCRIPT, "start", str(number), *daemon_options, *options],
                                          stdout=subprocess.PIPE, text=True)

    def wait_for_start(self):
        output, _ = self._starting.communicate()
        assert self._starting.returncode == 0, f"camera {self.number} did not start"
        self.pid = int(output)
        # Between its old address and the new one a camera is not on the network, and what is sent to it then is lost.
        script = self.root / "etc/init.d/ipv4"
        script.rename(script.with_name("ipv4.board"))
        script.symlink_to("../../usr/lib/board/record")
        return self

    def let_its_address_change(self):
        script = self.root / "etc/init.d/ipv4"
        script.with_name("ipv4.board").rename(script)

    def stop(self):
        """Switches the camera off and looks whether its daemons ended well."""
        with_daemon = (self.folder / "pid").exists() or (self.folder / "status").exists()
        for run in self.runs:
            run.finish()
        subprocess.run([SCRIPT, "stop", str(self.number)], check=True)
        self._show_logs()
        assert not SANITIZER_REPORT.search(self.trace()), "a sanitizer's report"
        if with_daemon:
            assert (self.folder / "status").read_text().strip() == self.exit_status

    def _show_logs(self):
        for name in ("qvp.log", "board.log", "init.log"):
            print(f"--- camera {self.number}, {name}\n{(self.folder / name).read_text(errors='replace')[-4000:]}")

    def signal(self, number):
        os.kill(self.daemon_pid(), number)

    def daemon_pid(self):
        return int((self.folder / "pid").read_text())

    def wait_for_end(self):
        """The exit status of the daemon."""
        status = self.folder / "status"
        return wait_until(lambda: status.exists() and status.read_text().strip(), "the daemon's end")

    def trace(self):
        return (self.folder / "qvp.log").read_text(errors="replace")

    def wait_for_trace(self, text, count=1):
        wait_until(lambda: self.trace().count(text) >= count, f"'{text}' on standard error")

    def pid_file(self, interface="eth0"):
        return self.root / f"run/qvp-{interface}.pid"

    def run(self, *command, **options):
        """Runs a command in the camera; its output."""
        return subprocess.run([SCRIPT, "exec", str(self.number), "--", *command], check=True, stdout=subprocess.PIPE,
                              text=True, **options).stdout

    def plug_in(self):
        """Until frames go through: the kernel tells the bridge in its own time of an interface that has come up."""
        subprocess.run([CABLE, "plug-in", str(self.number)], check=True)

    def start_daemon(self, *arguments, prefix=(), **options):
        """A daemon of the test's own, beside or in place of the camera's; `prefix` is a command that runs it."""
        log = None
        if "stderr" not in options:
            file, path = tempfile.mkstemp(prefix="daemon-", dir=self.folder)
            log, options["stderr"] = Path(path), file
        process = subprocess.Popen([SCRIPT, "exec", str(self.number), "--", *prefix, "qvp", *arguments],
                                   stdin=subprocess.DEVNULL, **options)
        if log:
            os.close(file)
        self.runs.append(Run(process, log))
        return self.runs[-1]

    def wait_for_port(self):
        """Until a daemon whose trace nobody sees takes requests; its pid file is there before its port."""
        wait_until(lambda: ":F600 " in self.run("cat", "/proc/net/udp"), "the daemon's port")

    # The board's scripts.

    def board_log(self):
        """The board scripts that were run, each a list of words."""
        content = (self.folder / "board.log").read_bytes()
        content = content[: content.rfind(b"\n") + 1]  # a line may be half written by now
        words = subprocess.run(["bash", "-c", SPLIT_LOG], input=content, stdout=subprocess.PIPE, check=True,
                               env={"LC_ALL": "C"}).stdout.split(b"\0")[:-1]
        lines = []
        while words:
            count = int(words.pop(0))
            lines.append(words[:count])
            del words[:count]
        return lines

    def commands(self):
        """The same as texts, in which no word holds a blank."""
        return [b" ".join(words).decode() for words in self.board_log()]

    def forget_commands(self):
        (self.folder / "board.log").write_bytes(b"")

    def wait_for_command(self, command):
        wait_until(lambda: command in self.commands(), f"'{command}' in the board's log")

    def replace_script(self, path, text):
        """Puts a script of the test's own into the place of the board's `path`."""
        file = self.root / path.lstrip("/")
        file.unlink()
        file.write_text(text)
        file.chmod(0o755)

    def gate(self, path):
        """Has the board script `path` record itself and then wait at the gate."""
        gate = Gate(self, path.replace("/", "-"))
        self.replace_script(path, f"#!/bin/bash\n. /usr/lib/board/record\nread -r _ <{gate.path}\n")
        return gate

    # The configuration store.

    def store(self):
        return store.parse(self.store_file.read_bytes())

    def write_store(self, content):
        """As an editor does it: a new file in the old one's place."""
        new = self.store_file.with_suffix(".new")
        new.write_bytes(content)
        new.rename(self.store_file)

    def change_store(self, section, key, text):
        self.write_store(store.edit(self.store_file.read_bytes(), section, key, text))


class Lan:
    """Starts cameras with the daemon under test, each with a number of its own."""

    def __init__(self, daemon_options):
        self.daemon_options = daemon_options
        self.last = 0
        self.running = []

    def _start(self, options):
        self.last += 1
        camera = Camera(self.last, self.daemon_options, options)
        self.running.append(camera)
        return camera

    def camera(self, *options):
        return self._start(options).wait_for_start()

    def cameras(self, count, special=None):
        """All at once; `special` has the options of single ones, by their index."""
        started = [self._start((special or {}).get(index, ())) for index in range(count)]
        return [camera.wait_for_start() for camera in started]

    def stop_all(self):
        cameras, self.running = self.running, []
        failures = []
        for camera in cameras:
            try:
                camera.stop()
            except (AssertionError, subprocess.CalledProcessError) as failure:
                failures.append(f"camera {camera.number}: {failure}")
        assert not failures, "\n".join(failures)
