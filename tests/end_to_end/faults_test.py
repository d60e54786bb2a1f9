"""Faults while the daemon serves: it goes on, serves as before once they are over, and can be stopped during each.

A row of the table is a fault: how it begins, how it ends, and whether the camera can be reached meanwhile and can keep what it
is told.
"""
import fcntl
import os
import random
import shutil
import signal
from dataclasses import dataclass
from pathlib import Path
from typing import Callable

import pytest
from conftest import DAEMON
from support.requests import BASIC_INFO_COMMANDS, basic_info, change_password, discovery
from support.wire import protected, reply

NAME = slice(226, 290)
STORE, NAME_SERVERS, CHANNELS = "etc/qvp/camera.ini", "etc/resolv.conf", "etc/wifi_channel.ini"
NO_PROCESSES = "run/no_processes"
NOISE = random.Random(1).randbytes(65536)


@dataclass
class Fault:
    name: str
    begin: Callable
    end: Callable
    is_reached: bool = True
    keeps: bool = True  # what it is told meanwhile
    runs: bool = True  # the board's commands meanwhile, where it keeps what it is told
    prepare: Callable = lambda camera: None


def in_camera(text):
    return lambda camera: camera.run("sh", "-c", text)


def limit(text):
    return lambda camera: camera.run("prlimit", "--pid", str(inner_pid(camera)), text)


def inner_pid(camera):
    return camera.pid_file().read_text().strip()


def to_signal(number):
    return lambda camera: camera.signal(number)


def put(file, make):
    """What `make` makes in the place of a file of the camera; the file itself waits beside it."""

    def begin(camera):
        path = camera.root / file
        if path.exists() or path.is_symlink():
            path.rename(path.with_name(path.name + ".away"))
        make(path)

    def end(camera):
        path = camera.root / file
        if path.is_dir() and not path.is_symlink():
            shutil.rmtree(path)
        elif path.exists() or path.is_symlink():
            path.unlink()
        if (away := path.with_name(path.name + ".away")).exists():
            away.rename(path)

    return begin, end


KINDS = {
    "missing": lambda path: None,
    "empty": lambda path: path.touch(),
    "noise": lambda path: path.write_bytes(NOISE),
    "a line without end": lambda path: path.write_bytes(b"[INFO]\nProduct=" + b"x" * (1 << 20)),
    "a folder": lambda path: path.mkdir(),
    "a pipe": os.mkfifo,
    "a link to itself": lambda path: path.symlink_to(path.name),
    "a link to an endless file": lambda path: path.symlink_to("/dev/zero"),
}
KEPT_IN = {"missing", "empty"}  # a store in which a new key can be written
files = [Fault(f"{file} {kind}", *put(file, make), keeps=file != STORE or kind in KEPT_IN)
         for file in (STORE, NAME_SERVERS, CHANNELS) for kind, make in KINDS.items()]


def move_folder(path, to):
    return in_camera(f"mv {path} {to}")


def lock(camera):
    camera.lock = os.open(camera.store_file.parent, os.O_RDONLY)
    fcntl.flock(camera.lock, fcntl.LOCK_EX)


def unlock(camera):
    os.close(camera.lock)


def load_no_processes(camera):
    """Boots the camera again with the library that can take all processes away from its daemon."""
    library = Path(os.environ.get("QVP_NO_PROCESSES_LIBRARY", ""))
    assert library.is_file(), "QVP_NO_PROCESSES_LIBRARY has to name the library that no_processes.c makes"
    (camera.root / "usr/lib/no_processes.so").write_bytes(library.read_bytes())
    with (camera.root / "etc/ld.so.preload").open("a") as preloaded:
        preloaded.write("/usr/lib/no_processes.so\n")
    camera.run("sh", "-c", "echo reboot >/var/lib/init")
    camera.wait_for_trace("QVP Client Start", 2)


def take_processes(camera):
    (camera.root / NO_PROCESSES).touch()


def give_processes(camera):
    (camera.root / NO_PROCESSES).unlink()


# A file system of its own for the store, with it in there.
SMALL = "mkdir /tmp/keep && cp -p /etc/qvp/* /tmp/keep && mount -t tmpfs -o {} small /etc/qvp && cp -p /tmp/keep/camera.ini /etc/qvp"
GONE = "umount /etc/qvp && rm -r /tmp/keep"

others = [
    Fault("the store's folder gone", move_folder("/etc/qvp", "/etc/away"), move_folder("/etc/away", "/etc/qvp"), keeps=False),
    Fault("a lock on the store", lock, unlock, keeps=False),
    Fault("a store that cannot be written", in_camera("mount --bind /etc/qvp /etc/qvp && mount -o remount,bind,ro /etc/qvp"),
          in_camera("umount /etc/qvp"), keeps=False),
    Fault("a full file system", in_camera(SMALL.format("size=64k") + " && cat /dev/zero >/etc/qvp/filler || test -s /etc/qvp/filler"),
          in_camera(GONE), keeps=False),
    Fault("no inode left", in_camera(SMALL.format("nr_inodes=2")), in_camera(GONE), keeps=False),
    Fault("no numbers to share", move_folder("/run/qvp", "/run/away"), move_folder("/run/away", "/run/qvp")),
    Fault("no shell", in_camera("mount --bind /dev/null /bin/sh"), lambda camera: camera.run("umount", "/bin/sh"), runs=False),
    Fault("no board scripts", move_folder("/etc/init.d", "/etc/away.d"), move_folder("/etc/away.d", "/etc/init.d"), runs=False),
    Fault("no processes", take_processes, give_processes, runs=False, prepare=load_no_processes),
    Fault("no descriptor left", limit("--nofile=3:1024"), limit("--nofile=1024:1024"), keeps=False),
    Fault("no file may grow", limit("--fsize=1:unlimited"), limit("--fsize=unlimited"), keeps=False),
    Fault("no pid file", in_camera("mv /run/qvp-eth0.pid /run/away.pid"), in_camera("mv /run/away.pid /run/qvp-eth0.pid")),
    Fault("no address", in_camera("ip address flush dev eth0"),
          lambda camera: camera.run("ip", "address", "add", f"{camera.address}/15", "brd", "+", "dev", "eth0"), is_reached=False),
    Fault("an interface that is down", in_camera("ip link set eth0 down"), in_camera("ip link set eth0 up"), is_reached=False),
    Fault("small frames", in_camera("ip link set eth0 mtu 300"), in_camera("ip link set eth0 mtu 1500")),
    Fault("addresses by the hundred", in_camera("for i in $(seq 200); do ip address add 10.9.0.$i/32 dev eth0; done"),
          in_camera("for i in $(seq 200); do ip address delete 10.9.0.$i/32 dev eth0; done")),
    Fault("a daemon that is held", to_signal(signal.SIGSTOP), to_signal(signal.SIGCONT), is_reached=False),
]


COMMANDS = [command for command in BASIC_INFO_COMMANDS if "msger" not in command]  # which says nothing here


def name_of(tool, camera):
    return tool.ask(camera, discovery(camera))[NAME].rstrip(b"\0")


def set_name(tool, camera, name):
    return tool.ask(camera, basic_info(camera, name=name))


def serve_during(tool, camera, fault):
    assert len(tool.ask(camera, discovery(camera))) == 505
    # Whoever has no account to compare with, lets nobody in.
    status = set_name(tool, camera, b"Meanwhile")[16]
    assert status in (0, 3)
    tool.ask(camera, protected(0xA8, camera))
    tool.ask(camera, protected(0xA6, camera))
    return status == 0 and fault.keeps


@pytest.mark.parametrize("fault", files + others, ids=lambda fault: fault.name.replace(" ", "_").replace("/", "."))
def test_a_fault(tool, camera, fault):
    fault.prepare(camera)
    # The board's web server reads the store, too, and would wait at a pipe in the daemon's stead.
    camera.replace_script("/usr/sbin/msger", "#!/bin/sh\n")
    assert set_name(tool, camera, b"Before")[16] == 0
    tool.assert_in_step(camera)
    fault.begin(camera)
    camera.forget_commands()
    kept = fault.is_reached and serve_during(tool, camera, fault)
    if kept:
        assert camera.commands() == (COMMANDS if fault.runs else [])
    fault.end(camera)
    if fault.name == "an interface that is down":
        camera.run("ip", "route", "replace", "198.18.0.0/15", "dev", "eth0")
        camera.plug_in()
    if "store" not in fault.name and STORE not in fault.name:
        assert name_of(tool, camera) == (b"Meanwhile" if kept else b"Before")
    camera.forget_commands()
    assert set_name(tool, camera, b"Afterwards")[16] == 0
    assert name_of(tool, camera) == b"Afterwards"
    assert camera.store()["CAMSYSTEM"]["CameraName"] == b"Afterwards"
    assert not [path for path in camera.store_file.parent.iterdir() if path.name.startswith(".") or "new" in path.name]
    tool.assert_in_step(camera)
    assert camera.commands() == COMMANDS

    if not (fault.name == "no descriptor left" and b"__asan_init" in DAEMON.read_bytes()):  # which looks for leaks at the end
        fault.begin(camera)
    pid = camera.daemon_pid()
    os.kill(pid, signal.SIGTERM)
    if fault.name == "a daemon that is held":
        camera.signal(signal.SIGCONT)
    assert camera.wait_for_end() == "0"


def login_is(tool, camera, password):
    return tool.ask(camera, protected(0xA3, camera, password=password))[16] == 0


def test_no_process_for_a_scan_and_for_a_new_password(tool, lan):
    camera = lan.camera("--wireless", "iw")
    load_no_processes(camera)
    camera.forget_commands()
    take_processes(camera)
    asked = protected(0xB1, camera)
    assert tool.ask(camera, asked) == reply(asked, camera, 38, {26: b"\x02\0\0\0\x20\x4e\0\0"})
    assert tool.ask(camera, change_password(camera, b"new"))[16] == 0
    assert login_is(tool, camera, b"new") and not login_is(tool, camera, b"admin")
    assert "iw dev wlan0 scan failed" in camera.trace()
    assert camera.commands() == []
    give_processes(camera)
    tool.ask(camera, protected(0xB1, camera, password=b"new"))
    assert tool.ask(camera, protected(0xAE, camera, password=b"new"))[22:30] == b"Rooftop\0"
    assert tool.ask(camera, change_password(camera, b"newer", old=b"new"))[16] == 0
    assert camera.commands()[:2] == ["/usr/sbin/iw dev wlan0 scan", "/usr/sbin/set_passwd -u admin -p newer"]
