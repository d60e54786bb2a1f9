"""qvp-store, by which scripts of the board read and change the store beside the daemon."""
import fcntl
import os
import random
import resource
import subprocess
import threading
from pathlib import Path

import pytest
from conftest import DAEMON, EMULATOR
from support.requests import basic_info, discovery

NAME = slice(226, 290)
PROGRAM = [*EMULATOR.split(), str(DAEMON.parent / "qvp-store")]


class Failed(Exception):
    pass


@pytest.fixture
def store(camera):
    """Runs it on the camera's store: what it prints, or Failed with its exit status and the complaint."""

    def run(*words, text=""):
        done = subprocess.run([*PROGRAM, *words], input=text.encode(), capture_output=True, check=False, timeout=60,
                              env=os.environ | {"QVP_STORE": str(camera.store_file)})
        if done.returncode != 0:
            raise Failed(done.returncode, done.stderr.decode())
        assert done.stderr == b""
        return done.stdout

    return run


def refusal(store, *words, **options):
    with pytest.raises(Failed) as failed:
        store(*words, **options)
    return failed.value.args


def name_of(tool, camera):
    return tool.ask(camera, discovery(camera))[NAME].rstrip(b"\0")


def test_what_is_set_is_in_the_next_answer(tool, camera, store):
    assert store("set", "CAMSYSTEM/CameraName", "Yard") == b""
    assert name_of(tool, camera) == b"Yard"
    assert store("get", "CAMSYSTEM/CameraName") == b"Yard\n"


def test_what_the_daemon_set_is_read(tool, camera, store):
    tool.ask(camera, basic_info(camera, name=b"Gate", port=8080))
    assert store("get", "CAMSYSTEM/CameraName") == b"Gate\n"
    assert store("get", "HTTP/Port") == b"8080\n"


def test_a_password_comes_by_standard_input(camera, store):
    store("set", "USER_ADMIN/Password1", text='p"a\\ß \n')
    assert camera.store()["USER_ADMIN"]["Password1"] == 'p"a\\ß '.encode()
    store("set", "USER_ADMIN/Password1", text="")
    assert camera.store()["USER_ADMIN"]["Password1"] == b""
    store("set", "USER_ADMIN/Password1", text="x" * 255 + "\n")
    assert camera.store()["USER_ADMIN"]["Password1"] == b"x" * 255
    assert store("get", "USER_ADMIN/Password1") == b"x" * 255 + b"\n"


def test_everything_else_in_the_file_stays(camera, store):
    text = camera.store_file.read_text()
    camera.store_file.write_text("# by hand\n" + text + "\n[Own]\nKey = 1 ; mine\n")
    camera.store_file.chmod(0o640)
    store("set", "HTTP/Port", "81")
    changed = "# by hand\n" + text.replace("\nPort=80\n", "\nPort=81\n") + "\n[Own]\nKey = 1 ; mine\n"
    assert camera.store_file.read_text() == changed
    assert camera.store_file.stat().st_mode & 0o777 == 0o640


REFUSED = [
    (["HTTP/Port", "http"], "not a number from -2147483648 to 2147483647"),
    (["HTTP/Port", "2147483648"], "not a number from -2147483648 to 2147483647"),
    (["System/FirmwareVersion", "65536"], "not a number from 0 to 65535"),
    (["UPnP/Enable", "256"], "not a number from 0 to 255"),
    (["UPnP/Enable", ""], "not a number from 0 to 255"),
    (["CAMSYSTEM/CameraName", "x" * 256], "longer than 255 bytes"),
    (["CAMSYSTEM/Name", "x"], "the store has no such key"),
    (["CAMSYSTEM", "x"], "the store has no such key"),
    (["CAMSYSTEM/CameraName/", "x"], "the store has no such key"),
    *((["USER_ADMIN/Username1", f"a{letter}b"], "a name has none of") for letter in '"`\\$'),
]


@pytest.mark.parametrize("words, reason", REFUSED, ids=lambda value: "-" if isinstance(value, str) else value[0])
def test_what_is_refused(camera, store, words, reason):
    before = camera.store_file.read_bytes()
    status, complaint = refusal(store, "set", *words)
    assert status == 2
    assert complaint.startswith(f"qvp-store: {words[0]}: {reason}")
    assert camera.store_file.read_bytes() == before


@pytest.mark.parametrize("text", ["x" * 256, "x" * 256 + "\n", "x" * 5000, "a\0b"])
def test_what_is_refused_of_standard_input(camera, store, text):
    before = camera.store_file.read_bytes()
    assert refusal(store, "set", "CAMSYSTEM/CameraName", text=text)[0] == 2
    assert camera.store_file.read_bytes() == before


@pytest.mark.parametrize("words", [[], ["get"], ["set"], ["list", "x"], ["get", "a", "b"], ["set", "a", "b", "c"], ["x"]])
def test_usage(store, words):
    status, complaint = refusal(store, *words)
    assert status == 2
    assert complaint.startswith("Usage: qvp-store get SECTION/KEY\n")


def test_help_and_list(store):
    assert store("--help").startswith(b"Usage: qvp-store get SECTION/KEY\n")
    keys = store("list").decode().split("\n")
    assert {"CAMSYSTEM/CameraName", "USER_ADMIN/Password1", "HTTP/Port"} < set(keys)
    assert keys == sorted(keys[:-1]) + [""]


def test_a_key_without_a_value(camera, store):
    camera.change_store("CAMSYSTEM", "CameraName", None)
    assert refusal(store, "get", "CAMSYSTEM/CameraName") == (1, "")
    camera.change_store("HTTP", "Port", b"eighty")
    assert refusal(store, "get", "HTTP/Port") == (1, "")


def run_on(path, *words, **options):
    return subprocess.run([*PROGRAM, *words], check=False, text=True, stderr=subprocess.PIPE, timeout=60,
                          env=os.environ | {"QVP_STORE": str(path)}, **options)


def test_a_store_that_cannot_be_read(tmp_path):
    (tmp_path / "large.ini").write_bytes(b"#" * 100000)
    for path, reason in [(tmp_path / "none.ini", "No such file or directory"), (tmp_path, "Is a directory"),
                         (tmp_path / "none/camera.ini", "No such file or directory"), (tmp_path / "large.ini", "File too large")]:
        done = run_on(path, "get", "CAMSYSTEM/CameraName")
        assert (done.returncode, done.stderr) == (1, f"qvp-store: {path}: {reason}\n")


@pytest.mark.parametrize("words", [["get", "CAMSYSTEM/CameraName"], ["list"], ["--help"]], ids=lambda words: words[0])
def test_nothing_is_said_to_be_done_that_was_not(camera, words):
    with open("/dev/full", "w", encoding="utf-8") as full:
        done = run_on(camera.store_file, *words, stdout=full)
    assert (done.returncode, done.stderr) == (1, "qvp-store: standard output: No space left on device\n")


def test_a_limit_on_the_size_of_files(camera):
    def limit():
        resource.setrlimit(resource.RLIMIT_FSIZE, (1, 1))

    before = camera.store_file.read_bytes()
    done = run_on(camera.store_file, "set", "CAMSYSTEM/CameraName", "Yard", preexec_fn=limit)
    assert done.returncode == 1 and done.stderr.endswith(": File too large\n")
    assert camera.store_file.read_bytes() == before
    assert [path.name for path in camera.store_file.parent.iterdir() if "camera" in path.name] == ["camera.ini"]


def test_another_writer_is_waited_for(camera, store):
    folder = os.open(Path(camera.store_file).parent, os.O_RDONLY)
    fcntl.flock(folder, fcntl.LOCK_EX)
    status, complaint = refusal(store, "set", "CAMSYSTEM/CameraName", "Yard")
    assert (status, "another program keeps it busy" in complaint) == (1, True)
    os.close(folder)
    store("set", "CAMSYSTEM/CameraName", "Yard")


def test_many_writers_lose_nothing(tool, camera, store):
    """Scripts and the daemon, each with keys of its own."""
    keys = ["DDNS/HOST", "DDNS/UID", "DDNS/PWD", "NETWORK_V4/PPPoEUID"]
    errors = []

    def write(key, seed):
        numbers = random.Random(seed)
        for value in [str(numbers.randrange(10**9)) for _ in range(20)]:
            try:
                store("set", key, value)
                assert store("get", key) == f"{value}\n".encode()
            except (Failed, AssertionError) as error:
                errors.append((key, value, error))

    writers = [threading.Thread(target=write, args=(key, seed)) for seed, key in enumerate(keys)]
    for writer in writers:
        writer.start()
    for number in range(10):
        tool.ask(camera, basic_info(camera, name=b"Yard %d" % number))
        assert store("get", "CAMSYSTEM/CameraName") == b"Yard %d\n" % number
    for writer in writers:
        writer.join()
    assert errors == []
    assert [path.name for path in camera.store_file.parent.iterdir() if "camera" in path.name] == ["camera.ini"]
