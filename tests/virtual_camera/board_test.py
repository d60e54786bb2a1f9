"""The camera's board: its scripts, and what they do."""
import re
import shlex
import subprocess
import time

from running import CAMERA, DISCOVER, PATIENCE, in_lan, replies, text

SCRIPTS = [
    "/etc/init.d/pppoe.sh", "/etc/init.d/llmnr-0", "/etc/init.d/bonjour-0", "/etc/init.d/rtmpd-0", "/etc/init.d/rtspd-0",
    "/etc/init.d/httpd-0", "/etc/init.d/https-0", "/etc/init.d/ntpc.sh", "/etc/init.d/stop_daemon_when_fwup.sh",
    "/usr/sbin/set_passwd", "/usr/sbin/msger", "/usr/sbin/rtcfg", "/usr/sbin/twinkling", "/usr/sbin/userconfig",
    "/etc/init.d/ipv4", "/etc/init.d/userconfig", "/var/reboot"]


def test_every_script_is_recorded_in_order():
    calls = "\n".join(f"camera exec 1 -- {script} one '' 'two  words' || true" for script in SCRIPTS)
    lines = in_lan(calls + "\ncat $one/board.log").splitlines()
    assert [shlex.split(line) for line in lines] == [[script, "one", "", "two  words"] for script in SCRIPTS]


def test_arguments_are_recorded_byte_for_byte(tmp_path):
    hostile = [bytes(range(1, 128)), bytes(range(128, 256)), "é".encode(), b"a'b\"c$d`e\\f", b"-n", b"%s\n"]
    (tmp_path / "words").write_bytes(b"\0".join(hostile) + b"\0")
    line = in_lan(f"xargs -0 {CAMERA} exec 1 -- /usr/sbin/set_passwd <{tmp_path}/words || true; cat $one/board.log")
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
        address 0 0.0.0.0 0.0.0.0 0.0.0.0
        """)
    addresses = [data[290:294] + data[298:314] for data in map(bytes.fromhex, re.findall(r"^\S+ (\w{1010})$", output, re.M))]
    static = bytes([198, 19, 0, 9, 255, 254, 0, 0, 198, 18, 0, 77, 198, 18, 0, 2, 192, 0, 2, 1])
    first = bytes([198, 18, 1, 1, 255, 254, 0, 0, 198, 18, 0, 1, 198, 18, 0, 2, 198, 18, 0, 3])
    assert addresses == [static, first]


def test_factory_reset_and_reboot():
    """Two reboots that wait at the same time are one; the daemon ends in order, and what lay in memory is gone."""
    output = in_lan(f"""
        before=$(cat $one/pid)
        sed -i 's/^CameraName=.*/CameraName=Changed/' $store
        echo 1 >$one/root/run/qvp/sysinfo/4
        camera exec 1 -- /etc/init.d/userconfig reset
        {CAMERA} exec 1 -- /var/reboot -d 0 & {CAMERA} exec 1 -- /var/reboot -d 0 &
        wait -n  # for the one that finds the other waiting
        until_true pkill -fx 'sleep 1000'; wait
        rebooted() {{ test "$(cat $one/pid)" != $before && test -s $one/root/run/qvp-eth0.pid; }}
        until_true rebooted
        {DISCOVER} 1
        test ! -e $one/root/run/qvp/sysinfo/4
        grep -c 'Client Start' $one/qvp.log; grep -c 'Client Stop' $one/qvp.log
        """, "--reboot-delay", "1000")
    assert [text(data, 226, 64) for data in replies(output).values()] == ["Camera 1"]
    assert output.splitlines()[-2:] == ["2", "1"]


def test_a_camera_has_a_clock_of_its_own():
    output = in_lan(f"camera exec 1 -- date -s '2031-02-03 04:05:06' >/dev/null; {DISCOVER} 2; date +%s", "-n", "2")
    first, second = [text(data, 315, 16) for data in replies(output).values()]
    assert first.startswith("2031020304")
    assert not second.startswith("2031")
    assert abs(int(output.splitlines()[-1]) - time.time()) < PATIENCE
