"""The launcher: its command line, the LAN, single cameras, and that it leaves this machine as it found it."""
import os
import pathlib
import pty
import re
import shlex
import shutil
import signal
import subprocess
import time
import uuid

import pytest
from running import (CAMERA, DAEMON, DISCOVER, LAUNCHER, PATIENCE, TREE, USERS, in_lan, interfaces, launch,
                     processes_with, replies, started, text, wait_until, wait_until_gone)


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
    (["run", "--daemon", "/bin/true", "--born", "lucky", "--", "true"], 125, "--born lucky"),
    (["run", "--daemon", "/bin/true", "--born", "mute:soon", "--", "true"], 125, "--born mute:soon"),
    (["run", "--daemon", "/bin/true", "--wireless", "wext", "--", "true"], 125, "--wireless wext"),
    (["run", "-n", "2", "--camera", "3", "--", "true"], 125, "--camera: '3' is not a number from 1 to 2"),
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
                     "--set", "HTTP/Port=83", "--set", "WIRELESS/SSID=Gate")
    assert changed == '# mine\n[CAMSYSTEM]\nCameraName=Gate\n\n[HTTP]\nPort=83\n[INFO]\nBrandName="a=b/c "\n[WIRELESS]\nSSID=Gate\n'


REFUSED = [  # a setting, and why the store would not take it
    ("CAMSYSTEM/More=1", "no key CAMSYSTEM/More"),
    ("HTTP/port=80", "no key HTTP/port"),
    ("HTTP/Port=eighty", "not a number from -2147483648 to 2147483647"),
    ("HTTP/Port=", "not a number"),
    ("HTTP/Port=--1", "not a number"),
    ("HTTP/Port=2147483648", "not a number"),
    ("HTTP/Port=-2147483649", "not a number"),
    ("System/MainVersion=65536", "not a number from 0 to 65535"),
    ("System/MainVersion=-1", "not a number"),
    ("UPnP/Enable=256", "not a number from 0 to 255"),
    ("CAMSYSTEM/CameraName=" + "n" * 256, "256 bytes"),
    ("CAMSYSTEM/CameraName=" + "ä" * 128, "256 bytes"),
    ('CAMSYSTEM/CameraName="' + "\\x41" * 256 + '"', "256 bytes"),
    ("CAMSYSTEM/CameraName=a\nPort=1", "a control byte"),
    ("CAMSYSTEM/CameraName=a\x7f", "a control byte"),
    ('CAMSYSTEM/CameraName="a', "ends with its quote"),
    ('CAMSYSTEM/CameraName="', "ends with its quote"),
    ('CAMSYSTEM/CameraName="a"b"', "ends with its quote"),
    ('CAMSYSTEM/CameraName="a\\"', "ends with its quote"),
    ('CAMSYSTEM/CameraName="\\q"', "knows the escapes"),
    ('CAMSYSTEM/CameraName="a\\x00"', "knows the escapes"),
]


@pytest.mark.parametrize("setting, reason", REFUSED, ids=range(len(REFUSED)))
def test_a_setting_that_the_store_would_not_take(setting, reason):
    done = launch("run", *DAEMON, "--set", setting, "--", "true")
    assert done.returncode == 125
    assert reason in done.stderr.decode(), done.stderr


def test_settings_that_the_store_takes():
    taken = ["HTTP/Port=-2147483648", "DDNS/PROVIDER=2147483647", "System/MainVersion=65535", "System/FirmwareVersion=007",
             "UPnP/Enable=255", "DDNS/Enable=\"1\"", "INFO/BrandName=" + "ä" * 127, "INFO/Product=", "DDNS/HOST=\"\"",
             'DDNS/UID="' + "\\x41" * 255 + '"', 'DDNS/PWD="\\\\ \\" \\n\\r\\t%s"', "WIRELESS/SSID=a\"b\\c"]
    options = [word for setting in taken for word in ("--set", setting)]
    lines = in_lan("cat $store", *options).splitlines()
    assert [setting for setting in taken if setting.split("/", 1)[1] not in lines] == []


@pytest.mark.parametrize("spoilt", [
    ("HTTP\",         \"Port", "HTTP-Port"), ("#define QVP_STORE_KEYS(", "#define QVP_KEYS("), ("    NUMBER(", "    INTEGER(")])
def test_a_table_of_keys_that_is_not_understood(tmp_path, spoilt):
    """Then nothing is taken, rather than everything or what is left of the table."""
    shutil.copytree(TREE / "virtual-camera", tmp_path / "virtual-camera", symlinks=True)
    (tmp_path / "platform").mkdir()
    table = (TREE / "platform/store_keys.h").read_text()
    assert spoilt[0] in table
    (tmp_path / "platform/store_keys.h").write_text(table.replace(*spoilt))
    launcher = tmp_path / "virtual-camera/virtual-camera"
    done = subprocess.run([launcher, "run", "--daemon", "/bin/true", "--set", "CAMSYSTEM/CameraName=Gate", "--", "true"],
                          capture_output=True, timeout=PATIENCE)
    assert done.returncode == 125
    assert "so --set cannot be checked" in done.stderr.decode()


# --- What is kept -----------------------------------------------------------------------------------------------------

def test_what_is_kept(tmp_path):
    """QVP_LAN holds the cameras' folders with --keep as well, and afterwards no link leads out of what is kept."""
    options = shlex.join(DAEMON)
    output = in_lan(f"""
        cat $store | head -1; camera exec 1 -- echo inside
        camera start 7 {options} >/dev/null; head -1 $QVP_LAN/7/root/etc/qvp/camera.ini
        """, "-n", "2", "--keep", str(tmp_path / "kept"))
    heading = "# What a virtual camera is when it leaves the factory."
    assert output.splitlines() == [heading, "inside", heading]
    for number in (1, 2, 7):
        assert "QVP Client Start" in (tmp_path / f"kept/{number}/qvp.log").read_text()
    assert [path for path in (tmp_path / "kept").rglob("*") if path.is_symlink()] == []


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_what_is_kept_when_the_launcher_is_killed(tmp_path, number):
    mark = uuid.uuid4().hex
    command = ["run", *DAEMON, "--keep", str(tmp_path), "--env", f"MARK={mark}", "--", "sh", "-c"]
    with started(*command, "readlink $QVP_LAN/1/root; exec sleep 1000", stdout=subprocess.PIPE) as launcher:
        assert launcher.stdout.readline() != b""
        launcher.send_signal(number)
        launcher.wait(PATIENCE)
    wait_until_gone(mark)
    # Nobody can tidy up behind a SIGKILL, but the link leads nowhere.
    links = [path.readlink() for path in tmp_path.rglob("*") if path.is_symlink()]
    assert all(link.parts[1] != "proc" and not link.exists() for link in links)
    assert (links == []) == (number == signal.SIGTERM)
    (tmp_path / "1/init.pid").write_text("1\n")  # there is always a process of that number
    assert launch(*command, "test -e $QVP_LAN/1/root/etc/qvp/camera.ini").returncode == 0


def test_the_services_end_with_the_lan():
    mark = uuid.uuid4().hex
    with started("run", "-n", "0", "--", "sh", "-c", "echo up; exec sleep 1000", stdout=subprocess.PIPE,
                 env={**os.environ, "MARK": mark}) as launcher:
        assert launcher.stdout.readline() == b"up\n"
        wait_until(lambda: {b"dnsmasq", b"time"} <= {name for line in processes_with(mark)
                                                     for name in re.findall(rb"(dnsmasq|time)(?:_server| --)", line)})
    wait_until_gone(mark)


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


def test_the_log_of_a_camera():
    output = in_lan("""
        camera exec 1 -- /usr/sbin/twinkling 5; camera log 1
        camera log 1 --follow >$QVP_LAN/followed & follower=$!
        camera exec 1 -- /usr/sbin/twinkling 6; until_true grep -q 6 $QVP_LAN/followed; kill $follower
        cat $QVP_LAN/followed
        if camera log 2 2>&1; then :; else echo status $?; fi
        if camera log 2 --folder /nowhere 2>&1; then :; else echo status $?; fi
        """)
    five, six = "'/usr/sbin/twinkling' '5'", "'/usr/sbin/twinkling' '6'"
    assert output.splitlines() == [five, five, six, "virtual-camera: there is no camera 2", "status 125",
                                   "virtual-camera: there is no camera 2 in /nowhere", "status 125"]


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
    with started("run", *DAEMON, "-n", "2", "--env", f"MARK={mark}", "--", "env", f"MARK={mark}", "sh", "-c",
                 "trap '' PIPE; echo up; exec sleep 1000", stdout=subprocess.PIPE, user=user) as launcher:
        if when == "up":
            assert launcher.stdout.readline() == b"up\n"
            # Two cameras, each with its init, init's watcher and the daemon, and the command.
            wait_until(lambda: len(processes_with(mark)) >= 7)
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
