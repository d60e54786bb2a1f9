"""Stopping the daemon, whatever it is doing, and the signals that do not stop it."""
import os
import signal
import threading
import time
from pathlib import Path

import pytest
from support.requests import BASIC_INFO_COMMANDS, basic_info, change_password, discovery, user_verification
from support.tool import Tool
from support.waiting import wait_until
from support.wire import BY_MAC, request

STOPS = {signal.SIGTERM: (86, "Terminated"), signal.SIGINT: (82, "Interrupted")}


def handler_lines(number, line, message):
    return (f"[QVP][qvp][signal_handler][Line: 74] signal:[{number:d}]\n"
            f"[QVP][qvp][signal_handler][Line: {line}]: {message}\n")  # fmt: skip


STOPPED = "[QVP][qvp][main][Line: 744]: QVP Client Stop\n"


def stop_lines(number):
    return handler_lines(number, *STOPS[number])


@pytest.mark.parametrize("number", STOPS)
def test_a_stop_while_idle(tool, camera, number):
    tool.assert_in_step(camera)
    before = camera.trace()
    camera.signal(number)
    assert camera.wait_for_end() == "0"
    assert camera.trace() == before + stop_lines(number) + STOPPED
    assert not camera.pid_file().exists()
    assert ":F600 " not in camera.run("cat", "/proc/net/udp")


@pytest.mark.parametrize("number", STOPS)
def test_a_stop_during_a_slow_command(tool, camera, number):
    gate = camera.gate("/etc/init.d/llmnr-0")
    tool.ask(camera, basic_info(camera))
    gate.wait()
    camera.signal(number)
    camera.wait_for_trace(stop_lines(number))  # it is seen at once, and honoured when the work is done
    tool.send(discovery(camera), camera.address)
    assert camera.pid_file().exists() and not (camera.folder / "status").exists()
    assert camera.commands() == BASIC_INFO_COMMANDS[:1]
    gate.open()
    assert camera.wait_for_end() == "0"
    assert camera.commands() == BASIC_INFO_COMMANDS
    assert not camera.pid_file().exists()
    assert camera.trace().endswith(stop_lines(number) + STOPPED)
    assert not tool.has_reply()  # to what came in after the stop


def race_library():
    path = Path(os.environ.get("QVP_RACE_LIBRARY", ""))
    assert path.is_file(), "QVP_RACE_LIBRARY has to name the library that stop_before_wait.c makes"
    return path


@pytest.mark.parametrize("number", STOPS)
@pytest.mark.parametrize("wait", [1, 2, 3])  # the daemon's first report ends its own first wait, a request the second
def test_a_stop_just_before_the_wait(lan, tool, number, wait):
    """A signal of which the loop's own test came too early to know, and that no later datagram helps out."""
    camera = lan.camera("--no-daemon")
    (camera.root / "usr/lib/stop_before_wait.so").write_bytes(race_library().read_bytes())
    run = camera.start_daemon("eth0", prefix=["env", "LD_PRELOAD=/usr/lib/stop_before_wait.so", f"STOP_AT_WAIT={wait}",
                                              f"STOP_SIGNAL={number:d}"])  # fmt: skip
    wait_until(lambda: "QVP Client Start" in run.trace(), "the daemon's start")
    if wait == 3:
        assert len(tool.ask(camera, discovery(camera))) == 505
    assert run.exit_status() == 0
    assert stop_lines(number) in run.trace()
    assert run.trace().endswith(STOPPED)
    assert not camera.pid_file().exists()


def flood(camera, stop):
    tool = Tool()
    while not stop.is_set():
        tool.send(discovery(camera), camera.address)
    tool.close()


def test_a_stop_in_a_flood_of_requests(camera):
    """There is always a datagram to serve, and no moment in which the daemon has to wait."""
    stop = threading.Event()
    flooding = threading.Thread(target=flood, args=(camera, stop))
    flooding.start()
    try:
        camera.wait_for_trace("[discovery]", 200)
        camera.signal(signal.SIGALRM)
        camera.wait_for_trace("[general_report]", 2)
        camera.signal(signal.SIGTERM)
        assert camera.wait_for_end() == "0"
    finally:
        stop.set()
        flooding.join()


def test_two_stops_are_one(tool, camera):
    gate = camera.gate("/etc/init.d/llmnr-0")
    tool.ask(camera, basic_info(camera))
    gate.wait()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGTERM):
        camera.signal(number)
        camera.wait_for_trace(f"signal:[{number:d}]")
    gate.open()
    assert camera.wait_for_end() == "0"
    assert camera.trace().count(STOPPED) == 1


@pytest.mark.parametrize("number", [signal.SIGQUIT, signal.SIGUSR1])
def test_signals_that_are_only_traced(tool, camera, number):
    tool.assert_in_step(camera)
    before = camera.trace()
    camera.signal(number)
    camera.wait_for_trace("Ignore signal")
    assert camera.trace() == before + handler_lines(number, 90, "Ignore signal")
    assert len(tool.ask(camera, discovery(camera))) == 505


def test_signals_that_are_ignored(tool, camera):
    for number in (signal.SIGHUP, signal.SIGABRT, signal.SIGUSR2, signal.SIGCHLD, signal.SIGTSTP, signal.SIGTTIN,
                   signal.SIGTTOU, signal.SIGPIPE):  # fmt: skip
        camera.signal(number)
        assert len(tool.ask(camera, discovery(camera))) == 505
    assert "signal_handler" not in camera.trace()


def test_sigusr1_is_silent_after_a_change_of_password(tool, camera):
    camera.signal(signal.SIGUSR1)
    camera.wait_for_trace("Ignore signal")
    assert tool.ask(camera, change_password(camera, b"wrong", old=b"wrong"))[16] == 3
    camera.signal(signal.SIGUSR1)
    camera.wait_for_trace("Ignore signal", 2)
    tool.ask(camera, change_password(camera, b"new"))
    assert tool.ask(camera, user_verification(camera, b"new"))[16] == 0
    camera.signal(signal.SIGUSR1)
    camera.signal(signal.SIGQUIT)
    camera.wait_for_trace("Ignore signal", 3)
    tool.assert_in_step(camera)
    assert camera.trace().count("signal:[10]") == 2
    assert camera.trace().count("signal_handler") == 6


def test_signals_do_not_cut_a_request_short(tool, camera):
    """Reports and traces between the steps of a change leave it whole."""
    pid = camera.daemon_pid()
    for number in range(20):
        asked = basic_info(camera, name=b"Name %d" % number)
        tool.send(asked, camera.address)
        while not tool.has_reply():
            os.kill(pid, signal.SIGALRM)
            os.kill(pid, signal.SIGQUIT)
            time.sleep(0.001)  # without a pause the kernel nests the handlers faster than they run
        assert tool.receive()[0][2:6] == asked[2:6]
        tool.assert_in_step(camera)
        assert camera.store()["CAMSYSTEM"]["CameraName"] == b"Name %d" % number
    assert camera.commands() == BASIC_INFO_COMMANDS * 20


def test_a_stop_leaves_nothing_half_done(tool, lan):
    """A stop at any moment of a request: the store is the old one or the new one, and the process ends with 0."""
    camera = lan.camera("--no-daemon")
    factory = camera.store_file.read_bytes()
    for number in range(20):
        run = camera.start_daemon("eth0").wait_for_start()
        tool.send(basic_info(camera, name=b"N%d" % number), camera.address)
        tool.send(request(0x00A5, camera.mac, selector=BY_MAC), camera.address)
        wait_until(lambda: run.trace().count("[Line: ") > number % 6, "the daemon's work")
        run.signal(signal.SIGTERM)
        assert run.exit_status() == 0
        assert run.trace().endswith(STOPPED)
        name = camera.store()["CAMSYSTEM"]["CameraName"]
        assert name in (b"N%d" % number, b"Camera %d" % camera.number)
        written = camera.store_file.read_bytes()
        assert written == factory.replace(b"CameraName=Camera %d\n" % camera.number, b"CameraName=%s\n" % name)
        assert len(camera.commands()) in (0, 4)
        camera.forget_commands()
        camera.write_store(factory)
