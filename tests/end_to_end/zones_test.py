"""The zone that the clock is read in: held at once, by every program, whatever the daemon was started with."""
import signal
import time

import pytest
from support.clock import BERLIN, KATHMANDU, MARQUESAS, NOTICE, SYDNEY, UTC, apply, camera_clock, now, offset
from support.requests import discovery
from support.wire import FAMILIES, le16

both_families = pytest.mark.parametrize("protocol", FAMILIES)

JANUARY, JULY = "2024-01-15 12:00 UTC", "2024-07-15 12:00 UTC"


@both_families
def test_a_zone_holds_at_once_for_everybody(tool, camera, protocol):
    zones = [(MARQUESAS, "-0930", -34200), (KATHMANDU, "+0545", 20700), (UTC, "+0000", 0)]
    for zone, text, distance in zones:
        apply(tool, camera, zone=zone, protocol=protocol)
        before = now()
        found = camera_clock(tool, camera)
        assert before <= found - distance <= time.time()
        assert tool.ask(camera, discovery(camera))[331:333] == le16(zone)
        assert offset(camera, "now") == text
    assert camera.commands() == [NOTICE] * len(zones)  # the time itself, and the NTP client, are left alone


def test_a_zone_counts_for_more_than_one_of_the_environment(tool, lan):
    """Which the daemon was started with: it shows the time of the zone that it is given."""
    camera = lan.camera("--no-daemon")
    run = camera.start_daemon("eth0", prefix=["env", "TZ=<+13>-13"]).wait_for_start()
    for zone, distance in [(MARQUESAS, -34200), (KATHMANDU, 20700), (MARQUESAS, -34200)]:
        apply(tool, camera, zone=zone)
        before = now()
        assert before <= camera_clock(tool, camera) - distance <= time.time()
    run.signal(signal.SIGTERM)
    assert run.exit_status() == 0


RULES = [  # daylight saving, DstAuto, Offset, Starttime, Stoptime, zone, in January, in July
    (0, b"1", b"+01:00", b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", BERLIN, "+0100", "+0100"),
    (1, b"1", b"+01:00", b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", BERLIN, "+0100", "+0200"),
    (1, b"1", b"nonsense", b"", b"", SYDNEY, "+1100", "+1000"),
    (1, b"0", b"+01:00", b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", UTC, "+0000", "+0100"),
    (1, b"0", b"01:00", b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", KATHMANDU, "+0545", "+0645"),
    (1, b"0", b"+00:30", b"M10.1.0/2:0:0", b"M4.1.0/3:0:0", SYDNEY, "+1030", "+1000"),
    (1, b"0", b"-00:30", b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", UTC, "+0000", "-0030"),
]


@pytest.mark.parametrize("rule", RULES, ids=lambda rule: f"{rule[5]}-{rule[2].decode()}-{rule[0]}{rule[1].decode()}")
def test_daylight_saving(tool, camera, rule):
    daylight_saving, automatic, shift, start, stop, zone, january, july = rule
    for key, text in (("DstAuto", automatic), ("Offset", shift), ("Starttime", start), ("Stoptime", stop)):
        camera.change_store("DATETIME", key, text)
    apply(tool, camera, zone=zone, daylight_saving=daylight_saving)
    assert camera.store()["DATETIME"]["DayLightSaving"] == b"%d" % daylight_saving
    assert (offset(camera, JANUARY), offset(camera, JULY)) == (january, july)
    assert camera.commands() == [NOTICE]
