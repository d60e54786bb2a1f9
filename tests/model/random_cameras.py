"""Cameras in states that nobody would think of: stores, networks near by, channels, name servers, users."""
import draw
from settings import KEYS_OF_WEP

KEY_LENGTHS = (0, 5, 10, 13, 26, 31, 32, 63, 64, 65)
MOMENTS = (b"M3.5.0/2:0:0", b"M10.5.0/3:0:0", b"M4.1.6/23:59:59", b"M11.2.3/0:30:0", b"M9.4.1/1:5:7")
NO_MOMENTS = (b"", b"M10.5.0/3:0", b"3.5.0/2:0:0", b"M3.5/2:0:0", b"m3.5.0/2:0:0", b"nonsense")
SHIFTS = (b"+01:00", b"-00:30", b"01:00", b"+2:0", b"+00:20", b"+1:30")
NO_SHIFTS = (b"", b"+0100", b"+", b"one hour", b"+01-00")
SECURITY = (b"NONE", b"WEP", b"WPAPSK/TKIP", b"WPAPSK/AES", b"WPA1PSK/AES", b"WPA2PSK/AES", b"WPA2PSK/TKIP",
            b"WPA2PSK", b"WPA1PSKWPA2PSK/TKIPAES", b"WPA2PSKWPA1PSK/AES", b"WEPNONE", b"WPAPSKWPA2PSK/TKIPAES",
            b"WPA3SAE/AES", b"TKIP", b"", b"wpa2psk/aes", b"WPA2PSKWEP")  # fmt: skip
MOST_NUMBERS = (-(2**31), 2**31 - 1, 65535, 65536, 255, 256, -1, 16, 100)


def a_text(random, lengths=(0, 1, 31, 32, 33, 35, 36, 63, 64, 65, 255)):
    return draw.text(random, lengths)


def a_number(random, *usual):
    return b"%d" % draw.number(random, usual, MOST_NUMBERS)


def a_flag(random):
    return b"%d" % draw.number(random, (0, 1), (2, 3, 128, 255))


def of_the_clock(random, zones):
    moments = [random.choice(MOMENTS if draw.often(random, 0.9) else NO_MOMENTS) for _ in range(2)]
    while moments[0] == moments[1] and moments[0] in MOMENTS:
        moments[1] = random.choice(MOMENTS)
    return {
        "TimeZone": a_number(random, *zones.wire),
        "DayLightSaving": a_flag(random),
        "DstAuto": a_flag(random),
        "Protocol": a_number(random, 0, 1, 2),
        "NTPServerIP": a_text(random),
        "Offset": random.choice(SHIFTS if draw.often(random, 0.9) else NO_SHIFTS),
        "Starttime": moments[0],
        "Stoptime": moments[1],
    }


def of_the_radio(random):
    keys = {
        "Enable": a_flag(random),
        "SSID": a_text(random),
        "Channel": a_number(random, 0, 1, 6, 11, 36, 165),
        "Mode": a_number(random, 0, 1, 2),
        "Authentication": a_number(random, 0, 1, 2, 3, 4, 5),
        "Encryption": a_number(random, 0, 1, 1, 1, 2, 3, 4, 5),
        "WEPKeyFormat": a_number(random, 0, 1, 0, 1, 2),
        "WEPKeyLength": a_number(random, 0, 1, 0, 1, 2),
        "WEPActiveKey": a_number(random, 0, 1, 2, 3, 4),
        "PreSharedKey": a_text(random, KEY_LENGTHS),
    }
    return keys | {key: a_text(random, KEY_LENGTHS) for key in KEYS_OF_WEP}


def settings(random, zones):
    """A store; keys and whole sections may be missing, and other programs' keys stand in it."""
    sections = {
        "INFO": {"BrandName": a_text(random), "Product": a_text(random), "HWVersion": a_text(random), "Build": b"7"},
        "System": {"ModelName": a_text(random), "MainVersion": a_number(random, 0, 1, 2, 65535),
                   "FirmwareVersion": a_number(random, 0, 5, 10, 123)},
        "CAMSYSTEM": {"CameraName": a_text(random)},
        "HTTP": {"Port": a_number(random, 80, 8080, 8088, 0)},
        "NETWORK_V4": {"BootProto": a_number(random, 0, 1, 2), "IP": b"198.18.0.9", "DNS0": b"",
                       "PPPoEUID": a_text(random), "PPPoEEnable": a_flag(random)},
        "UPnP": {"Enable": a_flag(random)},
        "DDNS": {"Enable": a_flag(random), "PROVIDER": b"0", "UID": a_text(random), "PWD": a_text(random),
                 "HOST": a_text(random)},
        "WIRELESS": of_the_radio(random),
        "WIRELESS_REP": of_the_radio(random) | {"SameWithClient": a_flag(random)},
        "HWMIB": {"Region": a_number(random, 0, 1, 2, -1)},
        "DATETIME": of_the_clock(random, zones),
        "OTHERS": {"Key": a_text(random)},
    }  # fmt: skip
    for name, keys in list(sections.items()):
        for key in list(keys):
            if draw.often(random, 0.06):
                del keys[key]
        if draw.often(random, 0.03):
            del sections[name]
    shorts = sections.get("System", {})
    for key in ("MainVersion", "FirmwareVersion"):
        if key in shorts:
            shorts[key] = b"%d" % (int(shorts[key]) & 0xFFFF)
    return sections | administrator(random)


def administrator(random):
    """The name is one that a tool of the board would take: it goes into a command as it stands."""
    keys = {
        "Username1": random.choice((b"admin", b"admin", b"viewer", b"root", b"nobody.else-9", b"a" * 48, b"")),
        "Password1": draw.text(random, (0, 1, 5, 44, 45, 46, 47, 48)),
    }
    if draw.often(random, 0.1):
        del keys[random.choice(list(keys))]
    return {"USER_ADMIN": keys}


def a_line(random, last):
    channel = draw.number(random, (b"1", b"6", b"11", b"36", b"165"), (b"", b"-1", b"x", b" 9", b"9999"))
    signal = draw.number(random, (b"0", b"47", b"81", b"100"), (b"", b"-70", b"256", b" 5", b"12x", b"+9"))
    ssid = bytes(random.choices(draw.PRINTABLE if draw.often(random, 0.8) else draw.ANY.replace(b"\n", b""),
                                k=random.choice((0, 1, 8, 31, 32, 33))))  # fmt: skip
    line = b"%-4s%-33s%-20s%-23s%-10s%-8s%s" % (
        channel, ssid, b"02:00:5e:00:00:09", random.choice(SECURITY), signal, b"11b/g/n",
        random.choice((b"In", b"In", b"Ad", b"", b"xIn", b"I")))  # fmt: skip
    if draw.often(random, 0.05):
        line += b" " * random.choice((1, 30, 900, 2000))
    if draw.often(random, 0.5 if last else 0.1):
        line = line[: random.choice((4, 5, 57, 58, 80, 81, 98, 99, random.randrange(100)))]
    return line if last and draw.often(random, 0.5) else line + b"\n"


def site_list(random):
    count = random.choice((0, 1, 3, 18, 19, 20, 21, 25, 60))
    lines = [a_line(random, number == count) for number in range(1, count + 1)]
    return b"Ch  SSID   BSSID\n" + b"".join(lines)


def channels(random):
    """Regions with the channels that may be used there."""
    regions = random.sample(("0", "1", "2", "-1", "10", "x"), random.randint(0, 5))
    return {region: sorted(random.sample(range(0, 40), random.randint(0, 25))) for region in regions}


def change(random, board):
    """Puts the board around the daemon into another state."""
    board.name_servers = [bytes(random.choices(range(1, 224), k=4)) for _ in range(random.randint(0, 2))]
    board.channels = channels(random)
    board.site_list = site_list(random) if draw.often(random, 0.9) else None
    board.administrators = random.choice(((b"admin",), (b"admin", b"viewer")))
    board.upgrade_state = draw.number(random, (None, 0, 2, 3), (1,))
