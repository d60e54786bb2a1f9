"""The clock: read, set by hand, and left to an NTP client."""
import signal
import time

import pytest
from support.clock import BERLIN, KATHMANDU, MARQUESAS, NOTICE, SYDNEY, UTC, apply, camera_clock, now, offset, seconds
from support.requests import discovery, set_datetime
from support.wire import FAMILIES, LANDAP, PRIMARY, le16, le32, protected, reply

both_families = pytest.mark.parametrize("protocol", FAMILIES)

BY_HAND = [NOTICE, "/etc/init.d/ntpc.sh stop", "/usr/sbin/rtcfg -w", NOTICE, NOTICE]
BY_NTP = [NOTICE, "/etc/init.d/ntpc.sh stop", "/usr/sbin/msger sinfo 0 sntpstate 0 0", "/etc/init.d/ntpc.sh start"]


@both_families
def test_reading_the_clock(tool, camera, protocol):
    def read():
        asked = protected(0xAC, camera, protocol=protocol)
        before = now()
        data = tool.ask(camera, asked)
        assert before <= seconds(data[22:36]) <= time.time()
        return asked, data

    asked, data = read()
    assert data == reply(asked, camera, 122, {22: data[22:36], 38: le16(UTC), 42: b"ntp.example.com"})
    for key, text in (("NTPServerIP", b"s" * 64), ("Protocol", b"1"), ("DayLightSaving", b"7"), ("TimeZone", b"10")):
        camera.change_store("DATETIME", key, text)
    asked, data = read()
    assert data == reply(asked, camera, 122, {22: data[22:36], 38: le16(1), 40: b"\x07\x01", 42: b"s" * 63})
    for key, text in (("NTPServerIP", None), ("Protocol", b"2"), ("DayLightSaving", None), ("TimeZone", b"11")):
        camera.change_store("DATETIME", key, text)
    asked, data = read()
    assert data == reply(asked, camera, 122, {22: data[22:36]})


@both_families
def test_a_time_set_by_hand(tool, camera, protocol):
    start = time.monotonic()
    asked = set_datetime(camera, b"20240615123456", server=b"10.0.0.1", protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    found = camera_clock(tool, camera)
    for value in (found, int(camera.run("date", "+%s"))):
        assert 0 <= value - seconds(b"20240615123456") <= time.monotonic() - start + 1
    assert camera.commands() == BY_HAND
    settings = camera.store()["DATETIME"]
    assert [settings[key] for key in ("TimeZone", "DayLightSaving", "Protocol", "NTPServerIP")] == [
        b"510", b"0", b"0", b"10.0.0.1"]  # fmt: skip
    assert "stop ntpclient\n" in camera.trace()


TIMES = [  # what is set, the zone, daylight saving, and what time this is in UTC
    (b"19700102010101", UTC, 0, b"19700102010101"),
    (b"21001231235959", UTC, 0, b"21001231235959"),
    (b"20240230101112", UTC, 0, b"20240301101112"),
    (b"20240715123456", BERLIN, 1, b"20240715103456"),
    (b"20240715123456", BERLIN, 0, b"20240715113456"),
    (b"20240115123456", SYDNEY, 1, b"20240115013456"),
    (b"20240715123456", MARQUESAS, 0, b"20240715220456"),
]


def test_times_are_read_in_the_zone_that_comes_with_them(tool, camera):
    for local, zone, daylight_saving, utc in TIMES:
        start = time.monotonic()
        apply(tool, camera, when=local, zone=zone, daylight_saving=daylight_saving)
        assert 0 <= int(camera.run("date", "+%s")) - seconds(utc) <= time.monotonic() - start + 1, local


REFUSALS = [  # time, zone, daylight saving, NTP, code
    (b"20240615000000", UTC, 0, 0, 101),
    (b"20240615100000", UTC, 0, 0, 101),
    (b"20240615001010", UTC, 0, 0, 101),
    (b"20240615100010", UTC, 0, 0, 101),
    (b"20240615101000", UTC, 0, 0, 101),
    (b"20240615241010", UTC, 0, 0, 101),
    (b"20240615106010", UTC, 0, 0, 101),
    (b"20240615101060", UTC, 0, 0, 101),
    (b"20241315101010", UTC, 0, 0, 101),
    (b"20240015101010", UTC, 0, 0, 101),
    (b"20240632101010", UTC, 0, 0, 101),
    (b"20240600101010", UTC, 0, 0, 101),
    (b"19690615101010", UTC, 0, 0, 101),
    (b"21010615101010", UTC, 0, 0, 101),
    (b"2024061510101", 999, 9, 9, 102),  # a last number of one digit is a number
    (b"202406151010", UTC, 0, 0, 101),
    (b"", UTC, 0, 0, 101),
    (b"yesterday", UTC, 0, 0, 101),
    (b"20240615101010", 256, 2, 5, 102),
    (b"20240615101010", 0, 2, 5, 102),
    (b"20240615101010", 255, 0, 0, 102),
    (b"20240615101010", 0x3300, 0, 0, 102),
    (b"20240615101010", UTC, 2, 5, 103),
    (b"20240615101010", UTC, 255, 0, 103),
    (b"20240615101010", UTC, 0, 2, 104),
    (b"0" * 14, UTC, 1, 255, 104),
]


@both_families
def test_settings_that_are_refused(tool, camera, protocol):
    before = camera.store_file.read_bytes()
    for when, zone, daylight_saving, ntp, code in REFUSALS:
        asked = set_datetime(camera, when, zone, daylight_saving, ntp, protocol=protocol)
        assert tool.ask(camera, asked) == reply(asked, camera, 38, {22: le32(code)}, status=2), when
    assert camera.store_file.read_bytes() == before
    assert camera.commands() == []
    assert abs(camera_clock(tool, camera) - time.time()) < 3600


BAD_RULES = [("Offset", b"+0100"), ("Offset", b""), ("Offset", None), ("Starttime", b"3.5.0/2:0:0"),
             ("Starttime", None), ("Stoptime", b"M10.5.0/3:0"), ("Stoptime", b"")]  # fmt: skip


def test_a_rule_that_cannot_be_read_changes_nothing_but_the_store(tool, camera):
    camera.change_store("DATETIME", "DstAuto", b"0")
    sound = camera.store_file.read_bytes()
    for key, text in BAD_RULES:
        camera.write_store(sound)
        camera.change_store("DATETIME", key, text)
        for ntp in (0, 1):
            apply(tool, camera, when=b"20240615123456", zone=KATHMANDU, daylight_saving=1, ntp=ntp)
        assert camera.store()["DATETIME"]["TimeZone"] == b"1010"
        assert offset(camera, "now") == "+0000"
    assert camera.commands() == []
    assert abs(camera_clock(tool, camera) - time.time()) < 3600


NTP_START = """#!/bin/bash
. /usr/lib/board/record
[ "$1" = stop ] || read -r uptime _ </proc/uptime
[ "$1" = stop ] || echo "$uptime" >/run/ntp-started
"""


def uptime():
    with open("/proc/uptime") as file:
        return float(file.read().split()[0])


def begin_ntp(tool, camera, protocol):
    """Has the camera wait for its NTP client, though it is given a time as well."""
    camera.replace_script("/etc/init.d/ntpc.sh", NTP_START)
    asked = set_datetime(camera, b"20240615123456", zone=KATHMANDU, ntp=1, server=b"t" * 255, protocol=protocol)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    camera.wait_for_command(BY_NTP[-1])


def eight_seconds_are_over(camera):
    return round(uptime() - float((camera.root / "run/ntp-started").read_text()), 2) >= 8


def test_a_time_left_to_ntp(lan, tool, listener):
    """Eight seconds belong to the NTP client, whatever comes meanwhile: requests, reports, a stop."""
    *cameras, stopped = lan.cameras(3)
    for camera, protocol in ((cameras[0], PRIMARY), (cameras[1], LANDAP), (stopped, PRIMARY)):
        begin_ntp(tool, camera, protocol)
    stopped.signal(signal.SIGTERM)
    stopped.wait_for_trace("Terminated")
    assert stopped.pid_file().exists() or eight_seconds_are_over(stopped)
    asked = {camera.address: [discovery(camera) for _ in range(3)] for camera in cameras}
    for camera in cameras:
        assert listener.report(camera)[2:4] == b"\0\0"
        for datagram in asked[camera.address]:
            tool.send(datagram, camera.address)
        for sequence in (1, 2, 3):
            camera.signal(signal.SIGALRM)
            assert listener.report(camera)[2:4] == le16(sequence)
    assert not tool.has_reply() or eight_seconds_are_over(cameras[0])
    for _ in range(6):
        data, sender = tool.receive()
        camera = next(camera for camera in cameras if camera.address == sender[0])
        assert data[2:6] == asked[sender[0]].pop(0)[2:6]
        assert eight_seconds_are_over(camera)
        assert abs(seconds(data[315:329]) - 20700 - time.time()) < 3600  # the time of the request was not set
    for camera in cameras:
        assert camera.commands() == BY_NTP
        assert camera.store()["DATETIME"]["Protocol"] == b"1"
        assert camera.store()["DATETIME"]["NTPServerIP"] == b"t" * 255
        assert "start ntpclient\n" in camera.trace()
    assert stopped.wait_for_end() == "0"
    assert not stopped.pid_file().exists()
