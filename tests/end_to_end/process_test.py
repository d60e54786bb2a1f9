"""The daemon as a process: its arguments, its pid file, a second instance, and start-up failures."""
import os
import re
import subprocess

import pytest
from support.camera import SCRIPT
from support.requests import basic_info, discovery
from support.waiting import wait_until
from support.wire import EVERYONE, request


@pytest.fixture
def empty_camera(lan):
    """A camera whose daemon is the test's affair."""
    return lan.camera("--no-daemon")


def pid_files(camera):
    return sorted(path.name for path in (camera.root / "run").glob("qvp*"))


def line(number, message):
    return f"[QVP][qvp][main][Line: {number}]: {message}\n"


def no_device(interface):
    return (line(212, "setsockopt: SO_BINDTODEVICE failed") +
            f"qvp({interface}) cannot start: No such device\n")


FAILURES = [  # arguments, all of what is written to standard error
    ([], line(165, "Invalid parameter")),
    (["eth0", "eth0"], line(165, "Invalid parameter")),
    (["eth0", ""], line(165, "Invalid parameter")),
    (["nosuch0"], no_device("nosuch0")),
    (["nosuchinterface0"], no_device("nosuchinterface0")),
    (["x" * 200], no_device("x" * 200)),
    (["--Help"], no_device("--Help")),
    (["no/such/folder"], ""),
    (["x" * 5000], ""),
]


@pytest.mark.parametrize("arguments, message", FAILURES, ids=lambda value: str(value)[:30])
def test_a_start_that_fails(empty_camera, arguments, message):
    run = empty_camera.start_daemon(*arguments)
    assert run.exit_status() == 255
    assert run.trace() == message
    assert pid_files(empty_camera) == ["qvp"]  # the folder of the board's own


def test_a_port_that_is_taken(empty_camera):
    hold = "import socket; s = socket.socket(type=socket.SOCK_DGRAM); s.bind(('', 62976)); print(flush=True); input()"
    holder = subprocess.Popen([SCRIPT, "exec", str(empty_camera.number), "--", "/usr/bin/python3", "-c", hold],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    try:
        holder.stdout.readline()
        run = empty_camera.start_daemon("eth0")
        assert run.exit_status() == 255
        assert run.trace() == line(235, "bind failed") + "qvp(eth0) cannot start: Address already in use\n"
        assert pid_files(empty_camera) == ["qvp"]
    finally:
        holder.communicate(b"\n")


@pytest.mark.parametrize("question, answer", [
    ("--help", r"Usage: qvp INTERFACE\n(.*\n)+Exit status: .*\n"),
    ("--version", r"qvp \d+\.\d+\.\d+\n"),
])
def test_what_it_tells_about_itself(question, answer):
    run = subprocess.run([os.environ["QVP_DAEMON"], question], capture_output=True, text=True, check=False)
    assert run.returncode == 0
    assert re.fullmatch(answer, run.stdout)
    assert run.stderr == ""


def test_the_pid_file(camera):
    file = camera.pid_file()
    assert file.read_bytes() == b"%d" % camera.daemon_pid()
    assert file.stat().st_mode & 0o7777 == 0o1204


def test_a_second_instance_on_the_same_interface(tool, camera):
    before = camera.pid_file().stat()
    run = camera.start_daemon("eth0")
    assert run.exit_status() == 255
    assert run.trace() == "Error!! qvp(eth0) may be in running\n"
    after = camera.pid_file().stat()
    assert (after.st_ino, after.st_mtime_ns) == (before.st_ino, before.st_mtime_ns)
    assert camera.pid_file().read_bytes() == b"%d" % camera.daemon_pid()
    assert len(tool.ask(camera, discovery(camera))) == 505


def test_a_second_instance_on_another_interface(tool, camera):
    camera.run("ip", "link", "add", "eth1", "address", "02:51:56:50:ee:01", "type", "veth", "peer", "name", "wall1")
    other = camera.start_daemon("eth1").wait_for_start()
    assert line(312, "QVP Client Start with interface:[eth1]") in other.trace()
    assert pid_files(camera) == ["qvp", "qvp-eth0.pid", "qvp-eth1.pid"]
    assert camera.pid_file("eth1").read_bytes() == b"%d" % other.pid
    # A broadcast that comes in by eth0 is answered by the daemon of eth0 alone.
    asked = request(0x00A1)
    assert tool.ask(camera, asked, EVERYONE)[6:12] == camera.mac
    tool.assert_in_step(camera)
    other.signal(15)
    assert other.exit_status() == 0
    assert pid_files(camera) == ["qvp", "qvp-eth0.pid"]
    assert len(tool.ask(camera, discovery(camera))) == 505


def test_a_daemon_whose_trace_nobody_reads(tool, empty_camera):
    run = empty_camera.start_daemon("eth0", stderr=subprocess.PIPE)
    assert run.process.stderr.readline().decode() == line(312, "QVP Client Start with interface:[eth0]")
    run.process.stderr.close()
    for _ in range(3):
        assert len(tool.ask(empty_camera, discovery(empty_camera))) == 505
    tool.ask(empty_camera, basic_info(empty_camera))
    empty_camera.wait_for_command("/etc/init.d/ipv4 restart")
    run.signal(3)  # SIGQUIT, which only writes
    run.signal(15)
    assert run.exit_status() == 0
    assert pid_files(empty_camera) == ["qvp"]


@pytest.mark.parametrize("closed", ["2>&-", "<&- >&- 2>&-"])
def test_a_daemon_that_was_started_with_closed_descriptors(tool, empty_camera, closed):
    """Files that the daemon opens take the free numbers; nothing of its trace may get into them."""
    run = empty_camera.start_daemon("eth0", prefix=["sh", "-c", f'exec "$@" {closed}', "sh"])
    wait_until(lambda: empty_camera.pid_file().exists() and empty_camera.pid_file().read_bytes(), "the pid file")
    assert empty_camera.pid_file().read_bytes() == b"%d" % run.pid
    empty_camera.wait_for_port()
    before = empty_camera.store_file.read_bytes()
    tool.ask(empty_camera, basic_info(empty_camera, name=b"Closed", port=81))
    tool.assert_in_step(empty_camera)
    expected = before.replace(b"CameraName=Camera %d" % empty_camera.number, b"CameraName=Closed")
    assert empty_camera.store_file.read_bytes() == expected.replace(b"Port=80", b"Port=81")
    assert empty_camera.commands()[-1] == "/etc/init.d/ipv4 restart"


def test_a_file_size_limit(tool, empty_camera):
    """A store that cannot be written is a failed request, not the end of the daemon."""
    before = empty_camera.store_file.read_bytes()
    run = empty_camera.start_daemon("eth0", prefix=["prlimit", "--fsize=1"], stderr=subprocess.DEVNULL)
    empty_camera.wait_for_port()
    tool.ask(empty_camera, basic_info(empty_camera, name=b"Too long"))
    tool.assert_in_step(empty_camera)
    assert empty_camera.store_file.read_bytes() == before
    run.signal(15)
    assert run.exit_status() == 0
