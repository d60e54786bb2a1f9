"""The System V init script, under each shell that a camera may have: started, stopped, and after a power cut."""
import os
import pathlib
import subprocess

import pytest

DAEMON = os.environ["QVP_DAEMON"]
SCRIPT = os.environ["QVP_INIT_SCRIPT"]
PATIENCE = 200

# A network and a /run of its own, and the settings of the script; with busybox, nothing but busybox is on the PATH.
ROOM = ["unshare", "--user", "--map-root-user", "--mount", "--mount-proc", "--net", "--pid", "--fork", "--kill-child", "bash",
        "-c", """mount -t tmpfs room /run && mount -t tmpfs room /etc/default && ip link set lo up &&
    ip link add cam0 type veth peer name cam1 && ip link set cam0 up && ip link set cam1 up &&
    printf 'QVP_INTERFACES=cam0\\nQVP_DAEMON=%s\\nQVP_LOG=/run/log\\nexport QVP_SYSINFO=/run/sysinfo QVP_STORE=/run/store\\n' \
        "$DAEMON" >/etc/default/qvp && eval "$STEPS" """]
PROLOGUE = """
init() { env PATH="$PROGRAMS" $SHELL_OF_CAMERA "$SCRIPT" "$@"; }
expect() { local wanted=$1 status=0; shift; init "$@" || status=$?; [[ $status == "$wanted" ]] || { echo "$*: $status"; exit 1; }; }
pid_of() { cat "/run/qvp-$1.pid"; }
serves() { [[ $(tr '\\0' ' ' <"/proc/$(pid_of "$1")/cmdline") == *" $1 " ]] && [[ $(</proc/net/udp) == *:F600\\ * ]]; }
is_gone() { [[ ! -e /run/qvp-$1.pid ]] && [[ $(</proc/net/udp) != *:F600\\ * ]]; }
set -e
"""


@pytest.fixture(params=["ash", "dash"])
def run(request, tmp_path):
    """Runs steps of bash in a room, and gives back what was written."""
    programs = "/usr/sbin:/usr/bin:/sbin:/bin"
    if request.param == "ash":
        subprocess.run(["busybox", "--install", "-s", tmp_path], check=True)
        programs = str(tmp_path)

    def steps(text):
        environment = os.environ | {"SHELL_OF_CAMERA": request.param, "SCRIPT": SCRIPT, "PROGRAMS": programs, "DAEMON": DAEMON,
                                    "STEPS": PROLOGUE + text, "LC_ALL": "C"}
        done = subprocess.run(ROOM, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=PATIENCE, check=False)
        assert done.returncode == 0, done.stdout
        return done.stdout

    return steps


def test_a_daemon_is_started_once_told_of_and_stopped(run):
    output = run("""
        expect 3 status
        expect 0 start; serves cam0; first=$(pid_of cam0)
        expect 0 start; [[ $(pid_of cam0) == "$first" ]]
        expect 0 status
        expect 0 stop; is_gone cam0; grep -q 'QVP Client Stop' /run/log  # in order, not by a kill
        expect 0 stop
        expect 3 status
    """)
    assert output.splitlines()[:2] == ["qvp does not serve cam0", "qvp serves cam0"]
    assert "qvp already serves cam0: process " in output
    assert output.splitlines()[-2:] == ["qvp no longer serves cam0", "qvp does not serve cam0"]


def test_a_restart_starts_another(run):
    run("""
        expect 0 restart; serves cam0; first=$(pid_of cam0)
        expect 0 restart; serves cam0; [[ $(pid_of cam0) != "$first" ]] && [[ ! -e /proc/$first/exe ]]
        expect 0 force-reload; serves cam0
    """)


def test_the_pid_file_of_a_power_cut_does_not_keep_it_from_starting(run):
    output = run("""
        echo 999999 >/run/qvp-cam0.pid
        expect 1 status
        expect 0 start; serves cam0
    """)
    assert "qvp does not serve cam0, but left /var/run/qvp-cam0.pid behind" in output


def test_another_process_with_the_number_in_a_left_pid_file_is_left_alone(run):
    run("""
        sleep 1000 & other=$!
        echo $other >/run/qvp-cam0.pid
        expect 1 status
        expect 0 stop; [[ ! -e /run/qvp-cam0.pid ]]; kill -0 $other
        echo $other >/run/qvp-cam0.pid
        expect 0 start; serves cam0; kill -0 $other
    """)


def test_the_daemon_of_another_interface_is_another_process(run):
    run("""
        expect 0 start cam0 cam1; serves cam0; serves cam1
        init stop cam1
        cp /run/qvp-cam0.pid /run/qvp-cam1.pid
        expect 1 status cam1
        expect 0 stop cam1; serves cam0
    """)


def test_the_daemon_may_have_another_name(run):
    run("""
        cp "$DAEMON" /run/board-daemon
        sed -i 's,^QVP_DAEMON=.*,QVP_DAEMON=/run/board-daemon,' /etc/default/qvp
        expect 0 start; serves cam0 && first=$(pid_of cam0)
        expect 0 status
        expect 0 start; [[ $(pid_of cam0) == "$first" ]]
        expect 0 stop; is_gone cam0
    """)


def test_the_daemon_has_the_settings_in_its_environment(run):
    """With `export` or without: the unit of systemd reads the same file, and takes no `export`."""
    run("""
        echo QVP_SITE_LIST=/run/list >>/etc/default/qvp
        expect 0 start; serves cam0
        tr '\\0' '\\n' <"/proc/$(pid_of cam0)/environ" >/run/environment
        grep -qx QVP_SITE_LIST=/run/list /run/environment && grep -qx QVP_STORE=/run/store /run/environment
    """)


def test_a_pid_file_of_anything_keeps_nobody_off(run):
    run("""
        for left in '' 99999999999999999999 -1 self '*' '1 2'; do
            printf '%s' "$left" >/run/qvp-cam0.pid
            expect 1 status
            expect 0 start; serves cam0
            expect 0 stop; is_gone cam0
        done
    """)


def test_what_does_not_start_is_told_and_leaves_nothing(run):
    output = run("""
        expect 1 start nowhere0; [[ ! -e /run/qvp-nowhere0.pid ]]
        expect 2 fly
        expect 2
        sed -i 's,^QVP_DAEMON=.*,QVP_DAEMON=/nowhere/qvp,' /etc/default/qvp
        expect 5 start
    """)
    assert "qvp does not start on nowhere0" in output
    assert " start|stop|restart|force-reload|status [INTERFACE...]" in output
    assert "/nowhere/qvp cannot be executed" in output


def test_its_head_says_when_it_is_to_run():
    head = pathlib.Path(SCRIPT).read_text().split("### END INIT INFO")[0].splitlines()
    assert head[:2] == ["#!/bin/sh", "### BEGIN INIT INFO"]
    keywords = {line[2:].split(":")[0] for line in head[2:]}
    assert keywords >= {"Provides", "Required-Start", "Required-Stop", "Default-Start", "Default-Stop", "Short-Description"}
