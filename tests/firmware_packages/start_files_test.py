"""The start files of the firmware packages with the real daemon, in namespaces of their own and under busybox's shell."""
import configparser
import os
import pathlib
import shlex
import subprocess
import sys

import pytest
from files import BUILDROOT, HERE, OPENWRT, RECIPES

ROOM = [str(HERE / "room"), os.environ["QVP_DAEMON"]]
SCRIPT = BUILDROOT / "package/qvp/S60qvp"
START = OPENWRT / "files/qvp-start"
INIT = OPENWRT / "files/qvp.init"

# A search for everybody, by the loopback interface; prints the length of the answer and the camera's name in it.
ASK = shlex.join([sys.executable, "-c", """
import socket
s = socket.socket(type=socket.SOCK_DGRAM); s.settimeout(20)
s.sendto(bytes.fromhex("fdfd3412a100ffffffffffff0000000000000200") + bytes(2), ("127.0.0.1", 62976))
answer = s.recv(2048)
print(len(answer), answer.count(b"Hall"))
"""])

PROLOGUE = f"""
ask() {{ {ASK}; }}
qvp_of() {{ cat /run/qvp-$1.pid; }}
until_true() {{ tries=600; until "$@"; do tries=$((tries - 1)); [ $tries -gt 0 ] || exit 99; usleep 50000; done 2>/dev/null; }}
gone() {{ ! kill -0 "$1"; }}
stopped_reading() {{ [ "$(cut -d' ' -f3 "/proc/$1/stat")" = T ]; }}
serves() {{ grep -q F600 /proc/net/udp && [ -s "/run/qvp-$1.pid" ]; }}
"""


def in_room(script, **environment):
    done = subprocess.run([*ROOM, "busybox", "sh", "-c", PROLOGUE + script], capture_output=True, text=True, timeout=300,
                          env=os.environ | environment, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout.splitlines()


# --- Buildroot's script -----------------------------------------------------------------------------------------------


def s60(script, settings="QVP_INTERFACES=lo"):
    return in_room(f"cat >/etc/default/qvp <<'END'\n{settings}\nEND\ns60() {{ busybox sh {SCRIPT} \"$1\"; }}\n{script}")


def test_it_starts_answers_and_stops():
    assert s60("""
        s60 status; echo $?
        s60 start; echo $?
        first=$(qvp_of lo)
        s60 status | sed "s/$first/IT/"; ask
        s60 start; [ "$(qvp_of lo)" = "$first" ] && echo the same
        s60 reload; echo $?
        s60 stop; echo $?
        gone "$first" && ls /run
        s60 reload; echo $?""") == [
        "qvp on lo is stopped", "3",
        "Starting qvp on lo: OK", "0",
        "qvp on lo is running: process IT", "505 0",
        "Starting qvp on lo: OK", "the same",
        "0",
        "Stopping qvp on lo: OK", "0",
        "1"]


def test_it_restarts_every_interface():
    assert s60("""
        s60 start; s60 restart >/dev/null; echo $?
        ls /run; s60 status | sed 's/process .*/process/'
        s60 stop; ls /run""", 'QVP_INTERFACES="lo eth0"') == [
        "Starting qvp on lo: OK", "Starting qvp on eth0: OK", "0",
        "qvp-eth0.pid", "qvp-lo.pid",
        "qvp on lo is running: process", "qvp on eth0 is running: process",
        "Stopping qvp on lo: OK", "Stopping qvp on eth0: OK"]


def test_the_environment_and_the_log():
    settings = "QVP_INTERFACES=lo\nQVP_STORE=/run/camera.ini\nQVP_LOG=/run/log"
    assert s60("""
        printf '[CAMSYSTEM]\\nCameraName=Hall\\n' >/run/camera.ini
        s60 start; ask; s60 stop
        grep -c 'Client Start' /run/log""", settings) == [
        "Starting qvp on lo: OK", "505 1", "Stopping qvp on lo: OK", "1"]


# The number of a pid file that a power cut left: nobody's, another program's, the daemon's of another interface, none.
LEFT_BEHIND = ["echo 4194303", "sleep 1000 & echo $!", "qvp_of eth0", "echo"]


@pytest.mark.parametrize("number", LEFT_BEHIND)
def test_a_pid_file_that_a_power_cut_left(number):
    assert s60(f"""
        /usr/sbin/qvp eth0 2>/dev/null &
        until_true serves eth0
        {number} >/run/qvp-lo.pid
        s60 status; echo $?
        s60 start; s60 status | sed 's/process .*/process/'
        kill -0 "$(qvp_of eth0)" && echo the other is left alone
        s60 stop; ls /run""") == [
        "qvp on lo is stopped", "1", "Starting qvp on lo: OK", "qvp on lo is running: process", "the other is left alone",
        "Stopping qvp on lo: OK", "qvp-eth0.pid"]


def test_a_stop_removes_a_pid_file_but_no_other_process():
    assert s60("""
        sleep 1000 & other=$!
        echo $other >/run/qvp-lo.pid
        s60 stop; kill -0 $other && echo alive; ls /run""") == ["Stopping qvp on lo: OK", "alive"]


@pytest.mark.parametrize("name", ["qvp", "/usr/sbin/qvp"])
def test_one_that_was_started_by_hand_is_known(name):
    assert s60(f"""
        {name} lo 2>/dev/null & first=$!
        until_true serves lo
        s60 start; [ $(qvp_of lo) = $first ] && echo the same""") == ["Starting qvp on lo: OK", "the same"]


def test_a_daemon_that_does_not_stop_is_killed():
    assert s60("""
        s60 start; kill -STOP $(qvp_of lo); until_true stopped_reading $(qvp_of lo)
        held=$(qvp_of lo); s60 stop; until_true gone $held; ls /run""", "QVP_INTERFACES=lo\nQVP_TRIES=3") == [
        "Starting qvp on lo: OK", "Stopping qvp on lo: OK"]


def test_a_start_that_fails_is_told():
    assert s60("s60 start; echo $?; ls /run", 'QVP_INTERFACES="nosuch0 lo"') == [
        "Starting qvp on nosuch0: FAIL", "Starting qvp on lo: OK", "1", "qvp-lo.pid"]


def test_what_it_does_not_know():
    [line, status] = s60("s60 strat; echo $?")
    assert line == f"Usage: {SCRIPT} {{start|stop|restart|reload|status}}" and status == "1"


# --- The unit of Buildroot and Yocto ----------------------------------------------------------------------------------


def test_the_unit_s_commands():
    """In the order of systemd, with the interface in the place of %i."""
    unit = configparser.RawConfigParser(strict=False)
    unit.optionxform = str
    unit.read(BUILDROOT / "package/qvp/qvp@.service")
    service = {key: value.replace("%i", "lo") for key, value in unit["Service"].items()}
    assert service["Restart"] == "on-failure" and service["KillMode"] == "mixed"
    assert service["EnvironmentFile"] == "-/etc/default/qvp"
    assert unit["Install"]["WantedBy"] == "multi-user.target"
    assert in_room(f"""
        qvp_of none >/run/qvp-lo.pid 2>/dev/null
        {service["ExecStartPre"]} && {service["ExecStart"]} 2>/dev/null & daemon=$!
        until_true serves lo; ask
        kill $(qvp_of lo); wait $daemon; echo $?; ls /run""") == ["505 0", "0"]


# --- OpenWrt's script -------------------------------------------------------------------------------------------------


def procd(action, configuration=None, devices="lan=lo wifi=wlan0", folder=None):
    """What the init script asks of procd, a list of words a call."""
    file = OPENWRT / "files/qvp.config"
    if configuration is not None:
        file = pathlib.Path(folder) / "qvp"
        file.write_text(configuration)
    done = subprocess.run(["busybox", "sh", str(HERE / "openwrt/rc.common"), str(INIT), action], capture_output=True, text=True,
                          check=False, env={"PATH": os.environ["PATH"], "QVP_UCI": str(file), "QVP_DEVICES": devices,
                                            "IPKG_INSTROOT": str(HERE / "openwrt")})
    assert done.returncode == 0 and done.stderr == "", done.stderr
    return [line.split("|") for line in done.stdout.splitlines()]


INSTANCE = [
    ["set_param", "command", "/usr/libexec/qvp-start", "lo"],
    ["set_param", "env", "QVP_STORE=/etc/qvp/camera.ini", "QVP_SYSINFO=/var/run/qvp/sysinfo"],
    ["set_param", "netdev", "lo"],
    ["set_param", "respawn", "3600", "5", "0"],
    ["set_param", "term_timeout", "15"],
    ["set_param", "stdout", "1"],
    ["set_param", "stderr", "1"],
]
JAIL = [
    ["add_jail", "qvp-camera", "log", "procfs", "sysfs", "ubus"],
    ["add_jail_mount", "/bin", "/lib", "/sbin", "/usr"],
    ["add_jail_mount_rw", "/etc", "/tmp", "/var"],
    ["set_param", "no_new_privs", "1"],
]
TRIGGERS = [["add_reload_trigger", "qvp"], ["add_reload_interface_trigger", "lan"]]


def test_what_procd_is_asked():
    expected = [["flush"], ["open_instance", "camera"], *INSTANCE, *JAIL, ["close_instance"], *TRIGGERS]
    assert procd("start") == expected
    # A reload asks the same, so that procd leaves alone what has not changed.
    assert procd("reload") == expected
    assert procd("order") == [["order", "90", "10"]]


def test_a_network_that_is_down_is_waited_for():
    assert procd("start", devices="wifi=wlan0") == [["flush"], *TRIGGERS]


def test_no_jail(tmp_path):
    calls = procd("start", "config qvp 'camera'\n\toption jail '0'\n", folder=tmp_path)
    assert calls == [["flush"], ["open_instance", "camera"], *INSTANCE, ["close_instance"], *TRIGGERS]


def test_one_camera_a_section(tmp_path):
    calls = procd("start", """
config qvp 'one'
	option store '/data/a store.ini'

config qvp 'two'
	option interface 'wifi'

config qvp 'three'
	option enabled '0'

config other 'four'
""", folder=tmp_path)
    assert [words[1] for words in calls if words[0] == "open_instance"] == ["one", "two"]
    assert [words[2] for words in calls if words[:2] == ["set_param", "netdev"]] == ["lo", "wlan0"]
    assert ["set_param", "env", "QVP_STORE=/data/a store.ini", "QVP_SYSINFO=/var/run/qvp/sysinfo"] in calls
    assert [words[1] for words in calls if words[0] == "add_jail"] == ["qvp-one", "qvp-two"]
    # Of one that is not enabled too: the trigger of its configuration starts it, that of its network does no harm.
    assert [words[1] for words in calls if words[0] == "add_reload_interface_trigger"] == ["lan", "wifi", "lan"]


def instance(folder):
    """The command and the environment that procd gets, as one line for a shell."""
    calls = procd("start", f"config qvp 'camera'\n\toption store '{folder}/camera.ini'\n", folder=folder)
    [command] = [words[2:] for words in calls if words[:2] == ["set_param", "command"]]
    [variables] = [words[2:] for words in calls if words[:2] == ["set_param", "env"]]
    assert command[0] == "/usr/libexec/qvp-start"
    return shlex.join([*variables, "busybox", "sh", str(START), *command[1:]])


def test_what_procd_starts_answers_and_comes_back(tmp_path):
    """The same process becomes the daemon; a killed one leaves its pid file, and the next start removes it."""
    (tmp_path / "camera.ini").write_text("[CAMSYSTEM]\nCameraName=Hall\n")
    assert in_room(f"""
        env {instance(tmp_path)} 2>/dev/null & first=$!
        until_true serves lo; ask; [ $(qvp_of lo) = $first ] && echo one process
        kill -KILL $first; until_true gone $first; ls /run
        env {instance(tmp_path)} 2>/dev/null & second=$!
        taken() {{ [ "$(qvp_of lo)" = $second ]; }}
        until_true taken; until_true serves lo; ask
        kill $second; wait $second; echo $?; ls /run""") == [
        "505 1", "one process", "qvp-lo.pid", "505 1", "0"]


@pytest.mark.parametrize("number", LEFT_BEHIND)
def test_procd_s_daemon_comes_up_after_a_power_cut(number):
    assert in_room(f"""
        /usr/sbin/qvp eth0 2>/dev/null &
        until_true serves eth0
        {number} >/run/qvp-lo.pid
        busybox sh {START} lo 2>/dev/null & mine=$!
        taken() {{ [ "$(qvp_of lo)" = $mine ]; }}
        until_true taken; echo up
        kill -0 "$(qvp_of eth0)" && echo the other is left alone""") == ["up", "the other is left alone"]


def test_a_jail_s_first_process_finds_its_own_number():
    """In a jail each daemon is process 1, and so is the shell that becomes it."""
    assert in_room(f"""
        echo 1 >/run/qvp-lo.pid
        unshare -pf --mount-proc busybox sh {START} lo 2>/run/trace &
        started() {{ grep -q 'Client Start' /run/trace; }}
        until_true started; qvp_of lo; echo; ask""".replace("unshare", "/usr/bin/unshare")) == ["1", "505 0"]


@pytest.mark.parametrize("name", ["qvp", "/usr/sbin/qvp"])
def test_procd_s_daemon_does_not_push_another_one_away(name):
    assert in_room(f"""
        {name} lo 2>/dev/null & first=$!
        until_true serves lo
        busybox sh {START} lo 2>&1; echo $?
        [ $(qvp_of lo) = $first ] && echo untouched""") == ["Error!! qvp(lo) may be in running", "255", "untouched"]


# --- Yocto's test on the camera ---------------------------------------------------------------------------------------


def test_the_ptest():
    lines = in_room(f"echo 77 >/run/qvp-lo.pid; /bin/bash {RECIPES / 'files/run-ptest'} && ls /run")
    assert len(lines) == 5 and all(line.startswith("PASS: ") for line in lines)


def test_the_ptest_fails_with_a_daemon_that_does_not_start():
    lines = in_room(f"printf '#!/bin/sh\\nexit 255\\n' >/usr/sbin/qvp; /bin/bash {RECIPES / 'files/run-ptest'} || echo failed")
    assert [line[:5] for line in lines] == ["FAIL:", "PASS:", "FAIL:", "FAIL:", "FAIL:", "faile"]
