"""The board's commands: when they run, and what they are given by the daemon."""
import re
import signal

import pytest
from support.requests import BASIC_INFO_COMMANDS, basic_info, discovery, wifi
from support.wire import FAMILIES, le32

# Only bash's own words read the mask: around a fork it may hold signals off.
LOOK_AROUND = """#!/bin/bash
mapfile -t status </proc/$$/status
printf '%s\\n' "${status[@]}" >/run/status
descriptors=(/proc/$$/fd/*)
stat -c %N "${descriptors[@]}" >/run/descriptors 2>/dev/null
. /usr/lib/board/record
"""


def look_around(tool, camera):
    """Has a board script tell of its open files and of its signals, each mask a number. The camera's shell is bash,
    because some shells let all signals through."""
    camera.run("mount", "--bind", "/bin/bash", "/bin/sh")
    camera.replace_script("/etc/init.d/llmnr-0", LOOK_AROUND)
    tool.ask(camera, basic_info(camera))
    tool.assert_in_step(camera)
    files = dict(re.findall(r"/fd/(\d+)' -> '(.*)'", (camera.root / "run/descriptors").read_text()))
    masks = {name: int(mask, 16)
             for name, mask in re.findall(r"Sig(Blk|Ign|Cgt):\s(\w+)", (camera.root / "run/status").read_text())}
    return files, masks


def mask_of(numbers):
    return sum(1 << (number - 1) for number in numbers)


def test_a_command_inherits_no_descriptor(tool, camera):
    files, _ = look_around(tool, camera)
    # The script itself is open in the shell that reads it.
    others = {number: name for number, name in files.items() if name != "/etc/init.d/llmnr-0"}
    assert others == {"0": "/dev/null", "1": "/dev/null", "2": "/dev/null"}


def test_a_command_has_no_signal_held_off_or_hidden(tool, camera):
    _, masks = look_around(tool, camera)
    assert masks["Blk"] == 0
    # bash itself ignores SIGQUIT.
    stops = (signal.SIGINT, signal.SIGTERM, signal.SIGPIPE, signal.SIGALRM, signal.SIGUSR1, signal.SIGXFSZ)
    assert masks["Ign"] & mask_of(stops) == 0


@pytest.mark.parametrize("blocked", [
    {signal.SIGUSR2},
    {signal.SIGALRM, signal.SIGTERM, signal.SIGINT},
    {signal.SIGUSR1, signal.SIGWINCH, signal.SIGRTMAX},
])  # fmt: skip
def test_a_command_starts_with_the_mask_that_the_daemon_was_started_with(tool, lan, blocked):
    camera = lan.camera("--no-daemon")
    run = camera.start_daemon("eth0", preexec_fn=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, blocked))
    run.wait_for_start()
    _, masks = look_around(tool, camera)
    assert masks["Blk"] == mask_of(blocked)
    run.signal(signal.SIGTERM)  # which the daemon takes all the same
    assert run.exit_status() == 0


@pytest.mark.parametrize("protocol", FAMILIES)
def test_a_reply_leaves_before_the_commands_run(tool, camera, protocol):
    gate = camera.gate("/etc/init.d/llmnr-0")
    tool.ask(camera, basic_info(camera, protocol=protocol))
    gate.wait()
    assert camera.commands() == BASIC_INFO_COMMANDS[:1]
    asked = discovery(camera)
    tool.send(asked, camera.address)
    camera.run("true")
    assert not tool.has_reply()  # one thing at a time
    gate.open()
    data, _ = tool.receive()
    assert (len(data), data[2:6]) == (505, asked[2:6])
    assert camera.commands() == BASIC_INFO_COMMANDS


@pytest.mark.parametrize("protocol", FAMILIES)
def test_a_command_in_the_background_holds_nobody_up(tool, camera, protocol):
    gate = camera.gate("/usr/sbin/msger")
    assert tool.ask(camera, wifi(camera, protocol=protocol))[22:34] == le32(0) + le32(2) + le32(5000)
    gate.wait()
    assert len(tool.ask(camera, discovery(camera))) == 505
    assert camera.commands() == ["/usr/sbin/msger httpdmgr 0 reset_wifi 0 0"]
    gate.open()


def test_requests_that_came_in_meanwhile_are_answered_in_their_order(tool, camera):
    gate = camera.gate("/etc/init.d/ipv4")
    tool.ask(camera, basic_info(camera))
    gate.wait()
    asked = [discovery(camera) for _ in range(20)]
    for datagram in asked:
        tool.send(datagram, camera.address)
    gate.open()
    assert [tool.receive()[0][2:6] for _ in asked] == [datagram[2:6] for datagram in asked]


def test_commands_that_do_not_exist_or_fail(tool, camera):
    for script in ("/etc/init.d/llmnr-0", "/usr/sbin/msger"):
        (camera.root / script[1:]).unlink()
    camera.replace_script("/etc/init.d/bonjour-0", "#!/bin/sh\nkill -9 $$\n")
    assert tool.ask(camera, basic_info(camera))[16:18] == b"\0\0"
    tool.assert_in_step(camera)
    assert camera.commands() == ["/etc/init.d/ipv4 restart"]
