"""What the tests of the clock and of its zone share."""
import calendar
import time

from support.requests import discovery, set_datetime
from support.wire import reply

NOTICE = "/usr/sbin/msger camsvr 0 ctimeupdate 0 1"
MARQUESAS, UTC, BERLIN, KATHMANDU, SYDNEY = 6, 51, 61, 101, 130  # on the wire


def seconds(text):
    return calendar.timegm(time.strptime(text.decode(), "%Y%m%d%H%M%S"))


def now():
    """The second that a program may still read, as the kernel's coarse clock lags behind."""
    return int(time.time() - 0.02)


def camera_clock(tool, camera):
    """The camera's local time, as if it were UTC."""
    return seconds(tool.ask(camera, discovery(camera))[315:329])


def offset(camera, when):
    """The distance of the zone that every program of the camera is in."""
    return camera.run("date", "-d", when, "+%z").strip()


def apply(tool, camera, **fields):
    """Sets the clock's settings, and waits until they hold."""
    asked = set_datetime(camera, **fields)
    assert tool.ask(camera, asked) == reply(asked, camera, 38)
    tool.assert_in_step(camera)
