"""The unit of systemd: how exposed it is, and whether systemd understands it."""
import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(__file__).parents[2]
UNIT = pathlib.Path(os.environ["QVP_UNIT"])
DAEMON = os.environ["QVP_DAEMON"]
STALE = SOURCE / "packaging/systemd/remove-stale-pid-file"
PATIENCE = 200


def analyze(*arguments):
    return subprocess.run(["systemd-analyze", *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=PATIENCE, check=False, env=os.environ | {"LC_ALL": "C.UTF-8", "SYSTEMD_COLORS": "0"})


@pytest.fixture
def unit(tmp_path):
    """The unit with programs that are there: it names where they will be installed."""
    text = re.sub(r"[^\s=]+/sbin/qvp ", f"{DAEMON} ", UNIT.read_text())
    text = re.sub(r"[^\s=+]+/remove-stale-pid-file ", f"{STALE} ", text)
    path = tmp_path / "qvp@.service"
    path.write_text(text)
    return path


def test_its_exposure_is_two_at_most(unit):
    done = analyze("security", "--offline=true", "--threshold=20", str(unit))
    assert done.returncode == 0, done.stdout


def test_systemd_finds_nothing_to_say(unit):
    done = analyze("verify", "--man=no", str(unit))
    assert (done.returncode, done.stdout) == (0, "")


def test_every_right_has_its_reason_in_the_unit():
    text = UNIT.read_text() + (SOURCE / "packaging/systemd/wireless.conf").read_text()
    rights = set(re.findall(r"CAP_\w+", " ".join(re.findall(r"^CapabilityBoundingSet=(.*)$", UNIT.read_text(), re.M))))
    assert rights == {"CAP_DAC_OVERRIDE", "CAP_SYS_TIME"}
    for right in rights:
        assert re.search(rf"^# {right}: \S", text, re.M), right


def test_the_manual_says_where_the_unit_keeps_things():
    manual = (SOURCE / "docs/qvp.8").read_text().replace("\\-", "-")
    for variable in re.findall(r"^Environment=(\w+)=", UNIT.read_text(), re.M):
        assert f".B {variable}\n" in manual
    for file in re.findall(r"^EnvironmentFile=-(\S+)", UNIT.read_text(), re.M):
        assert file.replace("%i", "INTERFACE") in manual
    assert "/var/lib/qvp/INTERFACE/camera.ini" in manual


STEPS = """
set -e
mount -t tmpfs room /run
: >/run/log
ip link add cam0 type veth peer name cam1
QVP_STORE=/run/store "$DAEMON" cam0 2>>/run/log & daemon=$!
until grep -q 'Client Start' /run/log; do kill -0 $daemon; sleep 0.02; done
"$STALE" cam0; test "$(cat /run/qvp-cam0.pid)" = $daemon; echo a daemon of the interface keeps it
(PATH=${DAEMON%/*}:$PATH && exec qvp cam1 2>/run/log1) &
until grep -q 'Client Start' /run/log1; do kill -0 $!; sleep 0.02; done 2>/dev/null
"$STALE" cam1; test "$(cat /run/qvp-cam1.pid)" = $!; echo by whatever name it was called
kill $!; wait $!
echo $daemon >/run/qvp-cam1.pid
"$STALE" cam1; test ! -e /run/qvp-cam1.pid; kill -0 $daemon; echo one of another interface does not
echo 999999 >/run/qvp-cam1.pid
"$STALE" cam1; test ! -e /run/qvp-cam1.pid; echo nor does a process that is gone
: >/run/qvp-cam1.pid
"$STALE" cam1; test ! -e /run/qvp-cam1.pid; echo nor an empty file
"$STALE" cam1; echo and without a file there is nothing to do
"""


def test_a_pid_file_stays_only_for_the_daemon_of_its_interface():
    room = ["unshare", "--user", "--map-root-user", "--mount", "--mount-proc", "--net", "--pid", "--fork", "--kill-child", "sh"]
    done = subprocess.run([*room, "-c", STEPS], env=os.environ | {"DAEMON": DAEMON, "STALE": str(STALE)},
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    assert done.stderr == ""
    assert len(done.stdout.splitlines()) == 6


def test_the_page_of_the_virtual_camera_has_every_option_of_its_help():
    launcher = SOURCE / "virtual-camera/virtual-camera"
    text = subprocess.run([launcher, "--help"], stdout=subprocess.PIPE, text=True, check=True, timeout=PATIENCE).stdout
    manual = (SOURCE / "docs/virtual-camera.1").read_text().replace("\\-", "-")
    options = re.findall(r"^  (--?[a-z][a-z-]*)", text, re.M)
    documented = re.findall(r'^\.(?:BI?|BR) "?(--?[a-z][a-z-]*)', manual, re.M)
    assert sorted(options) == sorted(documented)
    for how in ("other-subnet", "duplicate-address", "mute"):
        assert how in text and how in manual
