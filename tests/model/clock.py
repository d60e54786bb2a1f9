"""The camera's clock: its time zones, and the times that it is set to."""
import calendar
import os
import re
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
PAGE_OF_ZONES = HERE.parents[1] / "docs/reference/time-zones.md"
DATABASE = Path("/usr/share/zoneinfo")
STANDARD, ZONES_OWN, USERS_OWN = 0, 1, 2  # daylight saving
UTC = "UTC0"
ROW = re.compile(r"^\| (\d+) \| `([^`]+)` \| [^|]+ \| (\d+) \|$", re.MULTILINE)


class Zones:
    """The zones' numbers on the wire, in the store, and their names in the time-zone database."""

    def __init__(self):
        rows = ROW.findall(PAGE_OF_ZONES.read_text())
        assert len(rows) > 100
        self.stored = {int(wire): int(stored) for wire, _, stored in rows}
        self.wire = {stored: wire for wire, stored in self.stored.items()}
        self.name = {int(stored): name for _, name, stored in rows}

    def text(self, stored, mode, rule):
        """What the environment variable TZ would be."""
        forever = for_all_time_to_come(self.name[stored])
        if mode == ZONES_OWN:
            return forever
        standard = standard_time(forever)
        if mode == STANDARD:
            return f"<std>{hours(-standard)}"
        shift, *bounds = rule
        changes = "".join(f",M{month}.{week}.{day}/{hour}:{minute:02}"
                          for month, week, day, hour, minute in (bounds[:5], bounds[5:]))
        return f"<std>{hours(-standard)}<dst>{hours(-standard - shift)}{changes}"


def hours(minutes):
    return f"{'-' if minutes < 0 else ''}{abs(minutes) // 60}:{abs(minutes) % 60:02}"


def for_all_time_to_come(name):
    """The zone's present rules, which hold for all times: the last line of what the database says about it."""
    return (DATABASE / name).read_bytes().rstrip(b"\n").rpartition(b"\n")[2].decode()


def standard_time(rules):
    """Minutes east of Greenwich. Ireland's law calls summer time its standard, and winter time the exception; no
    daylight saving is winter time there as well."""
    offsets = re.findall(r"(?:<[^>]+>|[A-Za-z]{3,})([+-]?)(\d+)(?::(\d+))?", rules.split(",")[0])
    return min((1 if sign == "-" else -1) * (int(hour) * 60 + int(minute or 0)) for sign, hour, minute in offsets)


def in_zone(zone):
    if os.environ.get("TZ") != zone:
        os.environ["TZ"] = zone
        time.tzset()


def local_text(seconds, zone):
    in_zone(zone)
    local = time.localtime(seconds)
    return b"%04d%02d%02d%02d%02d%02d" % local[:6]


def instants(numbers, zone):
    """What a local time may mean: more than one instant where the clock is put back or forth."""
    in_zone(zone)
    numbers = time.gmtime(calendar.timegm((*numbers, 0, 0, 0)))[:6]  # 30 February is a day in March
    found = {int(time.mktime((*numbers, 0, 0, saving))) for saving in (0, 1)}
    exact = {seconds for seconds in found if time.localtime(seconds)[:6] == numbers}
    return exact or found


def six_numbers(text):
    """Year to second, as scanf reads "%04d%02d%02d%02d%02d%02d"; None if there are fewer."""
    numbers = []
    for width in (4, 2, 2, 2, 2, 2):
        text = text.lstrip(b" \t\n\v\f\r")
        match = re.match(rb"[+-]?[0-9]+", text[:width])
        if not match:
            return None
        numbers.append(int(match[0]))
        text = text[match.end() :]
    return tuple(numbers)


def in_range(numbers):
    bounds = ((1970, 2100), (1, 12), (1, 31), (1, 23), (1, 59), (1, 59))
    return all(low <= number <= high for number, (low, high) in zip(numbers, bounds))


def shift_of(offset):
    """Minutes of daylight saving; None if the text is none."""
    match = re.match(rb"\s*([+-]?[0-9]+):\s*([+-]?[0-9]+)", offset[1:])
    if not match:
        return None
    minutes = int(match[1]) * 60 + int(match[2])
    return -minutes if offset.startswith(b"-") else minutes


def moment_of(text):
    """Month, week, weekday, hour and minute; None if the text is none."""
    number = rb"\s*([+-]?[0-9]+)"
    match = re.match(rb"M" + rb"\.".join([number] * 3) + rb"/" + rb":".join([number] * 3), text)
    return [int(found) for found in match.groups()[:5]] if match else None


def rule_of(settings):
    """Daylight saving by the user's own rule; None if a part of it cannot be read."""
    shift = shift_of(settings.text("DATETIME", "Offset"))
    start = moment_of(settings.text("DATETIME", "Starttime"))
    stop = moment_of(settings.text("DATETIME", "Stoptime"))
    return None if shift is None or start is None or stop is None else [shift, *start, *stop]
