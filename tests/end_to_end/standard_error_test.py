"""Standard error that nobody reads: the daemon drops what it cannot write, says so later, and goes on serving."""
import os
import pty
import re
import socket

import pytest
from support.requests import discovery

ENOUGH = 700  # discoveries, each with two lines of some 60 bytes: a pipe holds 65,536
DROPPED = re.compile(rb"qvp: lines of trace dropped because nobody took them: (\d+)")


def pipe():
    return os.pipe()


def stream():
    ours, theirs = socket.socketpair()
    return ours.detach(), theirs.detach()


def terminal():
    return pty.openpty()


def start(camera, make):
    """A daemon that has started, and the end from which its trace is read."""
    reader, writer = make()
    run = camera.start_daemon("eth0", stderr=writer)
    os.close(writer)
    said = b""
    while b"general_report" not in said:
        assert (more := os.read(reader, 4096)), said
        said += more
    return run, reader


def read_all(reader):
    os.set_blocking(reader, False)
    said = b""
    while True:
        try:
            said += os.read(reader, 65536)
        except BlockingIOError:
            return said.replace(b"\r\n", b"\n")


@pytest.mark.parametrize("make", [pipe, stream, terminal])
def test_a_reader_that_hangs(tool, lan, make):
    camera = lan.camera("--no-daemon")
    run, reader = start(camera, make)
    for _ in range(ENOUGH):
        assert len(tool.ask(camera, discovery(camera))) == 505
    said = read_all(reader)  # it wakes up
    assert len(tool.ask(camera, discovery(camera))) == 505
    said += read_all(reader)
    lines = [line for line in said.split(b"\n") if line.endswith(b"]")]
    dropped = [int(count) for count in DROPPED.findall(said)]
    reports = 10  # at most, with a line each, while this test ran
    assert 2 * (ENOUGH + 1) <= len(lines) + sum(dropped) <= 2 * (ENOUGH + 1) + reports and sum(dropped) > 0
    assert said.endswith(b"]\n") and lines[-1].startswith(b"[QVP][qvp_function][discovery][Line: ")
    run.signal(15)
    assert run.exit_status() == 0
    os.close(reader)


@pytest.mark.parametrize("make", [pipe, stream, terminal])
def test_a_stop_while_nobody_reads(tool, lan, make):
    camera = lan.camera("--no-daemon")
    run, reader = start(camera, make)
    for _ in range(ENOUGH):
        tool.ask(camera, discovery(camera))
    run.signal(15)
    assert run.exit_status() == 0
    os.close(reader)
