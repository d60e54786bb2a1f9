"""The virtual camera itself: its LAN, its board, and that it leaves this machine as it found it."""
import os
import pathlib
import pty
import re
import shlex
import signal
import subprocess
import sys
import time
import uuid

import pytest

TREE = pathlib.Path(__file__).parents[2]
LAUNCHER = str(TREE / "virtual-camera/virtual-camera")
CAMERA = shlex.quote(str(TREE / "virtual-camera/camera"))
DISCOVER = shlex.join([sys.executable, str(TREE / "tests/virtual_camera/broadcast_discovery.py")])
DAEMON = ["--daemon", os.environ["QVP_DAEMON"]] if "QVP_DAEMON" in os.environ else []
PATIENCE = 60

AS_NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
USERS = [pytest.param([], id="caller"),
         pytest.param(AS_NOBODY, id="nobody", marks=pytest.mark.skipif(os.getuid() != 0, reason="only root becomes nobody"))]

# What the scripts below share: a wait on a condition, and the camera's folder.
PROLOGUE = f"""
set -eu
camera() {{ {CAMERA} "$@"; }}
until_true() {{ for _ in $(seq 500); do if "$@" 2>/dev/null; then return; fi; sleep 0.02; done; echo "never: $*" >&2; exit 99; }}
one=$QVP_LAN/1
store=$one/root/etc/qvp/camera.ini
"""


def start(*arguments, user=(), **options):
    return subprocess.Popen([*user, LAUNCHER, *arguments], **options)


def launch(*arguments, user=()):
    return subprocess.run([*user, LAUNCHER, *arguments], capture_output=True, timeout=PATIENCE)


def in_lan(script, *options, user=()):
    """What a script prints that runs on a LAN with one camera, or as many as the options say."""
    done = launch("run", *DAEMON, *options, "--", "bash", "-c", PROLOGUE + script, user=user)
    assert done.returncode == 0, done.stderr.decode(errors="replace")
    return done.stdout.decode()


def replies(output):
    """The discovery replies of an output, by address."""
    return {address: bytes.fromhex(data) for address, data in re.findall(r"^([0-9.]+) ([0-9a-f]{1010})$", output, re.M)}


def text(data, offset, width):
    return data[offset:offset + width].split(b"\0")[0].decode()


def processes_with(mark):
    found = []
    for path in pathlib.Path("/proc").glob("[0-9]*/environ"):
        try:
            if mark.encode() in path.read_bytes():
                found.append((path.parent / "cmdline").read_bytes().replace(b"\0", b" "))
        except OSError:
            pass
    return found


def wait_until_gone(mark):
    deadline = time.monotonic() + PATIENCE
    while processes_with(mark):
        assert time.monotonic() < deadline, processes_with(mark)
        time.sleep(0.02)


def interfaces():
    listing = subprocess.run(["ip", "-oneline", "link"], capture_output=True, check=True).stdout.decode()
    return re.findall(r"^\d+: ([^:@]+)", listing, re.M)


# --- The command line -------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("arguments, status, message", [
    ([], 125, "'run' or 'shell'"),
    (["walk"], 125, "unknown command 'walk'"),
    (["run"], 125, "no command"),
    (["run", "-n"], 125, "-n needs a value"),
    (["run", "-n", "-1", "--", "true"], 125, "not a number"),
    (["run", "-n", "1001", "--", "true"], 125, "not a number"),
    (["run", "--colour", "red", "--", "true"], 125, "unknown option --colour"),
    (["run", "true"], 125, "'true'"),
    (["run", "--daemon", "/nowhere", "--", "true"], 125, "/nowhere: no such file"),
    (["run", "--daemon", "/etc/passwd", "--", "true"], 125, "not executable"),
    (["run", "--daemon", "/bin/true", "--emulator", "no-such-emulator -x", "--", "true"], 125, "no-such-emulator"),
    (["run", "--daemon", "/bin/true", "--store", "/nowhere", "--", "true"], 125, "/nowhere"),
    (["run", "--daemon", "/bin/true", "--set", "Port=80", "--", "true"], 125, "SECTION/KEY=TEXT"),
    (["run", "--daemon", "/bin/false", "--", "true"], 125, "the daemon ended with exit status 1"),
    (["run", "-n", "0", "--", "no-such-command"], 127, "no-such-command"),
    (["run", "-n", "0", "--", "/etc/passwd"], 126, "/etc/passwd"),
    (["run", "-n", "0", "--", "sh", "-c", "exit 42"], 42, ""),
    (["run", "-n", "0", "--", "true"], 0, ""),
])
def test_exit_status_and_message(arguments, status, message):
    done = launch(*arguments)
    assert (done.returncode, message in done.stderr.decode()) == (status, True), done.stderr.decode()


def test_help_leads_with_examples():
    done = launch("--help")
    assert done.returncode == 0
    assert done.stdout.decode().index("Examples:") < done.stdout.decode().index("Options:")


def test_a_failing_daemon_is_quoted():
    done = launch("run", "--daemon", "/bin/ls", "--", "true")
    assert done.returncode == 125
    assert "cannot access 'eth0'" in done.stderr.decode()


def test_command_sees_the_callers_folder_environment_and_input(tmp_path):
    done = subprocess.run([LAUNCHER, "run", "-n", "0", "--", "sh", "-c", "pwd; echo $COLOUR; cat"], cwd=tmp_path,
                          env={**os.environ, "COLOUR": "blue"}, input=b"typed\n", capture_output=True, timeout=PATIENCE)
    assert done.stdout.decode().split("\n") == [str(tmp_path), "blue", "typed", ""]


# --- The LAN ----------------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("user", USERS)
def test_cameras_differ_and_all_are_found_by_a_broadcast(user):
    found = replies(in_lan(f"{DISCOVER} 3", "-n", "3", user=user))
    assert list(found) == ["198.18.1.1", "198.18.1.2", "198.18.1.3"]
    for number, data in enumerate(found.values(), start=1):
        assert data[6:12] == bytes([0x02, 0x51, 0x56, 0x50, 0, number])
        assert text(data, 226, 64) == f"Camera {number}"
        assert text(data, 182, 32) == f"1.0{number}"
        assert data[290:314] == bytes([198, 18, 1, number, 0, 80, 0, 0, 255, 254, 0, 0,
                                       198, 18, 0, 1, 198, 18, 0, 2, 198, 18, 0, 3])
    assert len({text(data, 86, 64) for data in found.values()}) == 3


def test_twenty_cameras():
    assert len(replies(in_lan(f"{DISCOVER} 20", "-n", "20"))) == 20


def test_store_as_given_and_changed(tmp_path):
    store = tmp_path / "own.ini"
    store.write_text("# mine\n[CAMSYSTEM]\nCameraName=Gate\n\n[HTTP]\nPort=81\n")
    as_given = in_lan("cat $store", "--store", str(store))
    assert as_given == store.read_text()
    changed = in_lan("cat $store", "--store", str(store), "--set", "HTTP/Port=82", "--set", 'INFO/BrandName="a=b/c "',
                     "--set", "CAMSYSTEM/More=1")
    assert changed == '# mine\n[CAMSYSTEM]\nMore=1\nCameraName=Gate\n\n[HTTP]\nPort=82\n[INFO]\nBrandName="a=b/c "\n'


# --- Single cameras ---------------------------------------------------------------------------------------------------

def test_a_camera_is_started_entered_and_stopped(tmp_path):
    options = shlex.join(DAEMON)
    output = in_lan(f"""
        pid=$(camera start 7 --folder {tmp_path} {options})
        test $pid = $(cat {tmp_path}/pid); test $pid = $(cat {tmp_path}/root/run/qvp-eth0.pid)
        kill $pid; until_true test -s {tmp_path}/status; echo status $(cat {tmp_path}/status)
        camera stop 7 --folder {tmp_path}
        camera start 7 --no-daemon {options} >/dev/null
        test ! -e $QVP_LAN/7/pid
        {CAMERA} exec 7 -- qvp eth0 2>/dev/null & daemon=$!
        {DISCOVER} 1
        kill $daemon; wait $daemon; echo status $?
        if camera exec 7 -- sh -c 'exit 5'; then :; else echo exec $?; fi
        if camera start 7 {options} 2>/dev/null; then :; else echo again $?; fi
        """, "-n", "0")
    assert list(replies(output)) == ["198.18.1.7"]
    assert re.findall(r"^\w+ \d+$", output, re.M) == ["status 0", "status 0", "exec 5", "again 125"]
    assert "QVP Client Start" in (tmp_path / "qvp.log").read_text()


# --- The board --------------------------------------------------------------------------------------------------------

SCRIPTS = [
    "/etc/init.d/pppoe.sh", "/etc/init.d/llmnr-0", "/etc/init.d/bonjour-0", "/etc/init.d/rtmpd-0", "/etc/init.d/rtspd-0",
    "/etc/init.d/httpd-0", "/etc/init.d/https-0", "/etc/init.d/ntpc.sh", "/etc/init.d/stop_daemon_when_fwup.sh",
    "/usr/sbin/set_passwd", "/usr/sbin/msger", "/usr/sbin/rtcfg", "/usr/sbin/twinkling", "/usr/sbin/userconfig",
    "/etc/init.d/ipv4", "/etc/init.d/userconfig", "/var/reboot"]


def test_every_script_is_recorded_in_order():
    calls = "\n".join(f"camera exec 1 -- {script} one '' 'two  words'" for script in SCRIPTS)
    lines = in_lan(calls + "\ncat $one/board.log").splitlines()
    assert [shlex.split(line) for line in lines] == [[script, "one", "", "two  words"] for script in SCRIPTS]


def test_arguments_are_recorded_byte_for_byte(tmp_path):
    hostile = [bytes(range(1, 128)), bytes(range(128, 256)), "é".encode(), b"a'b\"c$d`e\\f", b"-n", b"%s\n"]
    (tmp_path / "words").write_bytes(b"\0".join(hostile) + b"\0")
    line = in_lan(f"xargs -0 {CAMERA} exec 1 -- /usr/sbin/set_passwd <{tmp_path}/words; cat $one/board.log")
    assert line.isascii() and line.count("\n") == 1
    words = subprocess.run(["bash", "-c", f"printf '%s\\0' {line}"], capture_output=True, check=True).stdout
    assert words.split(b"\0")[1:-1] == hostile


def test_the_store_decides_the_address():
    output = in_lan(f"""
        address() {{
            sed -i "s/^BootProto=.*/BootProto=$1/; s/^IP=.*/IP=$2/; s/^Gateway=.*/Gateway=$3/; s/^DNS1=.*/DNS1=$4/" $store
            camera exec 1 -- /etc/init.d/ipv4 restart
            {DISCOVER} 1
        }}
        address 0 198.19.0.9 198.18.0.77 192.0.2.1
        address 1 198.19.0.9 198.18.0.77 192.0.2.1
        address 0 0.0.0.0 0.0.0.0 0.0.0.0
        """)
    addresses = [data[290:294] + data[298:314] for data in map(bytes.fromhex, re.findall(r"^\S+ (\w{1010})$", output, re.M))]
    static = bytes([198, 19, 0, 9, 255, 254, 0, 0, 198, 18, 0, 77, 198, 18, 0, 2, 192, 0, 2, 1])
    first = bytes([198, 18, 1, 1, 255, 254, 0, 0, 198, 18, 0, 1, 198, 18, 0, 2, 198, 18, 0, 3])
    assert addresses == [static, first, first]


def test_factory_reset_and_reboot():
    """Two reboots that wait at the same time are one; the daemon ends in order, and what lay in memory is gone."""
    output = in_lan(f"""
        before=$(cat $one/pid)
        sed -i 's/^CameraName=.*/CameraName=Changed/' $store
        echo 1 >$one/root/run/qvp/sysinfo/4
        camera exec 1 -- /etc/init.d/userconfig reset
        camera exec 1 -- /var/reboot -d 1000 & camera exec 1 -- /var/reboot -d 1000; wait
        rebooted() {{ test "$(cat $one/pid)" != $before && test -s $one/root/run/qvp-eth0.pid; }}
        until_true rebooted
        {DISCOVER} 1
        test ! -e $one/root/run/qvp/sysinfo/4
        grep -c 'Client Start' $one/qvp.log; grep -c 'Client Stop' $one/qvp.log
        """, "--reboot-delay", "0.2")
    assert [text(data, 226, 64) for data in replies(output).values()] == ["Camera 1"]
    assert output.splitlines()[-2:] == ["2", "1"]


def test_a_camera_has_a_clock_of_its_own():
    output = in_lan(f"camera exec 1 -- date -s '2031-02-03 04:05:06' >/dev/null; {DISCOVER} 2; date +%s", "-n", "2")
    first, second = [text(data, 315, 16) for data in replies(output).values()]
    assert first.startswith("2031020304")
    assert not second.startswith("2031")
    assert abs(int(output.splitlines()[-1]) - time.time()) < PATIENCE


# --- Nothing changes on this machine, and nothing is left -------------------------------------------------------------

@pytest.mark.parametrize("user", USERS)
def test_the_machine_stays_as_it_is(user):
    def machine():
        folders = [sorted(os.listdir(folder)) for folder in ("/run", "/var/log", "/etc", "/usr/sbin", "/")]
        files = [pathlib.Path(file).read_bytes() for file in ("/etc/resolv.conf", "/etc/passwd", "/proc/self/mountinfo")]
        return folders, files, interfaces()

    before = machine()
    in_lan("""
        camera exec 1 -- sh -c 'for folder in /run /var/run /var/log /etc /usr/sbin / /tmp; do echo >$folder/left-by-camera; done'
        camera exec 1 -- sh -c 'echo changed >/etc/resolv.conf; echo changed >/etc/passwd'
        echo >/run/left-by-command
        ip link set lan0 name lan9
        """, user=user)
    assert machine() == before
    assert not os.path.exists("/tmp/left-by-camera")


@pytest.mark.parametrize("user", USERS)
@pytest.mark.parametrize("number, when", [(signal.SIGKILL, "up"), (signal.SIGTERM, "up"), (signal.SIGHUP, "up"),
                                          (signal.SIGKILL, "starting"), (signal.SIGTERM, "starting")])
def test_a_signal_to_the_launcher_ends_everything(number, when, user):
    mark = uuid.uuid4().hex
    launcher = start("run", *DAEMON, "-n", "2", "--env", f"MARK={mark}", "--", "env", f"MARK={mark}", "sh", "-c",
                     "trap '' PIPE; echo up; exec sleep 1000", stdout=subprocess.PIPE, user=user)
    with launcher:
        if when == "up":
            assert launcher.stdout.readline() == b"up\n"
            # Two cameras, each with its init, init's watcher and the daemon, and the command.
            assert len(processes_with(mark)) >= 7
        else:
            while not processes_with(mark):
                assert launcher.poll() is None
        launcher.send_signal(number)
        assert launcher.wait(PATIENCE) == -number
    wait_until_gone(mark)


def on_a_terminal(mark, command):
    """The launcher's process id and its terminal, once its command has printed "up"."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execv(LAUNCHER, [LAUNCHER, "run", *DAEMON, "--env", f"MARK={mark}", "--", "env", f"MARK={mark}", *command])
    output = b""
    while b"up" not in output:
        output += os.read(terminal, 1024)
    return pid, terminal


def exit_status(pid):
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])


def test_interrupt_from_the_terminal():
    mark = uuid.uuid4().hex
    pid, terminal = on_a_terminal(mark, ["sh", "-c", "echo up; exec sleep 1000"])
    os.write(terminal, b"\x03")
    assert exit_status(pid) == 130
    wait_until_gone(mark)
    os.close(terminal)


def test_a_command_may_handle_the_interrupt():
    mark = uuid.uuid4().hex
    pid, terminal = on_a_terminal(mark, ["bash", "-c", "trap 'exit 7' INT; echo up; while :; do sleep 0.02; done"])
    os.write(terminal, b"\x03")
    assert exit_status(pid) == 7
    wait_until_gone(mark)
    os.close(terminal)


def test_the_terminal_is_closed():
    mark = uuid.uuid4().hex
    pid, terminal = on_a_terminal(mark, ["sh", "-c", "trap '' HUP; echo up; sleep 1000; sleep 1000"])
    os.close(terminal)
    assert exit_status(pid) == -signal.SIGHUP
    wait_until_gone(mark)
