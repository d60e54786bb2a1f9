"""Writes the inputs that every fuzz target starts from, and those that once showed a defect.

Usage: seeds.py FOLDER [TARGET...]

A folder a target (for all, where none is named), a file an input; what a file holds is told at the top of the target.
The names of those that showed a defect tell which.
"""
import base64
import pathlib
import struct
import sys

MAC = bytes.fromhex("02005e102030")
KEYS = pathlib.Path(__file__).resolve().parents[2] / "platform/store_keys.h"
PRIMARY, LANDAP = 2, 1


def key_names():
    """"SECTION Key" of every key of the store, in the order of the table."""
    rows = [line.split('"') for line in KEYS.read_text().splitlines() if '(k' in line and line.count('"') == 4]
    return [f"{row[1]} {row[3]}" for row in rows]


def text_keys():
    rows = [line for line in KEYS.read_text().splitlines() if '(k' in line and line.count('"') == 4]
    return [number for number, row in enumerate(rows) if row.strip().startswith("TEXT")]


def record(kind, content):
    return struct.pack("<BH", kind, len(content)) + content


def stored(name, value):
    value = value.encode() if isinstance(value, str) else struct.pack("<I", value)
    return record(16 + key_names().index(name), value)


def header(opcode, family, length, status=0x7777, mac=MAC):
    return b"\xFD\xFD" + struct.pack("<HH", 0x1234, opcode) + mac + bytes(4) + struct.pack("<HHH", status, family, length)


def field(text, size):
    return text.encode().ljust(size, b"\0")


def credential(text):
    return base64.b64encode(text.encode()).ljust(64, b"\0")


def login(password="secret"):
    return credential("admin") + credential(password)


def protected(opcode, body=b"", family=PRIMARY, password="secret"):
    payload = login(password) + body
    return record(0, header(opcode, family, len(payload)) + payload)


def basic_info(port=80, dhcp=0):
    return (field("Front door", 64) + bytes([192, 0, 2, 10]) + struct.pack("<HH", port, 0) + bytes([255, 255, 255, 0]) +
            bytes([192, 0, 2, 1]) + bytes(8) + bytes([dhcp]))


def wifi(codes, wep="", psk="", channel=6):
    """The codes: mode and encryption, authentication and length of WEP keys, their format and the active one."""
    return (bytes([1, channel]) + field("Workshop", 36) + bytes(codes) + bytes(1) + field(wep, 32) * 4 + field(psk, 68) +
            bytes(14))


def simple_wifi(authentication, encryption, key):
    return bytes([1]) + field("Workshop", 36) + bytes([0, 6, authentication, encryption]) + field(key, 64) + bytes(3)


def services(mask, values=1):
    return bytes(129) + bytes([values, mask, 0]) + field("user", 64) + field("pass", 64) + field("host", 64)


def date_time(text, zone=8, saving=0, ntp=0):
    return field(text, 16) + struct.pack("<HBB", zone, saving, ntp) + b"ntp.example.com\0"


def site_line(number, ssid="net", security="WPA2PSK/AES", end="\n"):
    return f"{number:<4}{ssid:<33}{'02:00:5e:00:53:01':<20}{security:<23}{57:<10}{'11n':<8}In{end}"


HEADING = f"{'Ch':<4}{'SSID':<33}{'BSSID':<20}{'Security':<23}{'Signal(%)':<10}{'W-Mode':<8}NT\n"


def sites(count):
    return HEADING + "".join(site_line(1 + index % 13, f"net {index}") for index in range(count))


CHANGES = {
    0x00A2: basic_info(), 0x00A4: bytes(64) + credential('pa"$(x)`\\'), 0x00A7: services(3),
    0x00A9: wifi([0x30, 4, 0], psk="correct horse"), 0x00AD: date_time("20260131102030"),
    0x00B0: simple_wifi(4, 3, "correct horse"),
}
READINGS = [0x00A3, 0x00A6, 0x00A8, 0x00AB, 0x00AC, 0x00AE, 0x00AF, 0x00B1, 0x00C0, 0x0103]
OPEN = [0x00A1, 0x00A5, 0x0200]
RULE = (stored("DATETIME DayLightSaving", 1) + stored("DATETIME Offset", "+1:00") +
        stored("DATETIME Stoptime", "M10.5.0/3:00:00"))


def summer_time(start):
    return RULE + stored("DATETIME Starttime", start) + protected(0x00AD, date_time("0" * 14, saving=1))


def datagrams():
    store = (stored("CAMSYSTEM CameraName", "Front door") + stored("HTTP Port", 80) + stored("WIRELESS SSID", "Home") +
             stored("WIRELESS Encryption", 1) + stored("WIRELESS_REP SameWithClient", 1) +
             stored("System MainVersion", 1) + record(2, bytes([192, 0, 2, 10])))
    for family in (PRIMARY, LANDAP):
        for opcode, body in CHANGES.items():
            yield f"change_{opcode:04x}_{family}", store + protected(opcode, body, family)
        for opcode in READINGS:
            yield f"reading_{opcode:04x}_{family}", store + protected(opcode, b"", family)
            yield f"refused_{opcode:04x}_{family}", protected(opcode, b"", family, "wrong")
        for opcode in OPEN:
            yield f"open_{opcode:04x}_{family}", store + record(0, header(opcode, family, 0))
        everybody = header(0x00A1, family, 0, 0, b"\xFF" * 6)
        yield f"broadcast_{family}", store + record(0, everybody)
        survey = record(1, sites(25).encode()) + protected(0x00B1, b"", family) + protected(0x00AE, b"", family)
        yield f"survey_{family}", survey
    yield "wep_key_text", protected(0x00A9, wifi([0x10, 0, 0], wep="abcde"))
    yield "wep_key_hex", protected(0x00A9, wifi([0x10, 0x10, 0x31], wep="0123456789abcdef0123456789"))
    yield "no_such_wep_key", protected(0x00A9, wifi([0x10, 0, 0x50], wep="abcde"))
    long_texts = b"".join(record(16 + number, b"x" * 256) for number in text_keys() if "USER_ADMIN" not in key_names()[number])
    yield "long_texts", long_texts + b"".join(protected(opcode) for opcode in (0x00A6, 0x00A8, 0x00AC, 0x00AF)) + record(
        0, header(0x00A1, PRIMARY, 0))
    yield "group", record(4, b"admin") + protected(0x00A3)
    yield "upgrading", record(6, b"\1\0\0\0") + protected(0x0103)
    yield "other_region", record(3, b"\7\0\0\0") + protected(0x00A9, wifi([0, 0, 0], channel=36))
    yield "ntp", protected(0x00AD, date_time("0" * 14, ntp=1))
    yield "long_ago", record(5, bytes(5)) + record(0, header(0x00A1, PRIMARY, 0))
    yield "summer_time", summer_time("M3.5.0/2:00:00")
    yield "found_month_4294967299_read_as_3", summer_time("M4294967299.5.0/2:00:00")
    yield "found_minutes_beyond_an_int", RULE.replace(b"+1:00", b"+1:99999999999") + summer_time("M3.5.0/2:00:00")


def written(key, value, text):
    """A text is written; a number is given as its bytes."""
    value = value if isinstance(value, bytes) else value.encode()
    return bytes([key_names().index(key), len(value)]) + value + text.encode("latin-1")


def stores():
    whole = "; a camera\n[CAMSYSTEM]\nCameraName=Front door\n\n[HTTP]\nPort=80\n[UPnP]\nEnable=1\n[System]\nMainVersion=3\n"
    yield "replaced", written("CAMSYSTEM CameraName", "Back door", whole)
    yield "added_to_section", written("System ModelName", "Model", whole)
    yield "added_section", written("WIRELESS SSID", " \"quoted\"\\\n", whole)
    yield "quote_in_front", written("WIRELESS SSID", '"', whole)
    yield "number", written("HTTP Port", b"\x90\x1F\0\0", whole)
    yield "short", written("System MainVersion", b"\xFF\xFF", whole)
    yield "flag", written("UPnP Enable", b"\0", whole)
    yield "empty", written("HTTP Port", b"\x50\0\0\0", "")
    yield "byte_order_mark", written("HTTP Port", b"\x50\0\0\0", "\xEF\xBB\xBF[HTTP]\nPort=81\n")
    yield "carriage_returns", written("CAMSYSTEM CameraName", "Door", whole.replace("\n", "\r\n"))
    yield "no_last_line_break", written("HTTP Port", b"\x50\0\0\0", whole + "[HTTP]")
    yield "twice", written("HTTP Port", b"\x50\0\0\0", "[HTTP]\nPort=1\nPort=2\n[HTTP]\nPort=3\n")
    yield "quoted", written("HTTP Port", b"\x50\0\0\0", '[CAMSYSTEM]\nCameraName = "a\\x41\\n\\"b\\\\"\n')
    yield "malformed", written("CAMSYSTEM CameraName", "Door", '[CAMSYSTEM]\nCameraName="half\n[HTTP]\nPort=99999999999\n')
    yield "found_bare_carriage_return_at_the_end", written("CAMSYSTEM CameraName", "Door", "[HTTP]\r\nPort=80\r")


def site_lists():
    yield "empty", ""
    yield "heading_alone", HEADING
    for count in (1, 20, 21):
        yield f"{count}_networks", sites(count)
    for security in ("NONE", "WEP", "WPAPSK/TKIP", "WPA1PSKWPA2PSK/TKIPAES", "WPA1PSK", "WPA2PSK/AES", "OWE"):
        yield "security_" + security.replace("/", "_"), HEADING + site_line(6, "x", security)
    yield "short_lines", HEADING + "6\n6   net\n" + site_line(6)[:60]
    yield "long_line", HEADING + "x" * 1500 + "\n" + site_line(6)
    yield "nul_bytes", HEADING + site_line(6, "a\0b") + "\0" * 100
    yield "ad_hoc", HEADING + site_line(-3).replace("In", "Ad")


NETWORK = "BSS 02:00:5e:00:53:01(on wlan0)\n\tfreq: 2437\n\tcapability: ESS Privacy (0x0431)\n\tsignal: -60.00 dBm\n"
RSN = ("\tRSN:\t * Version: 1\n\t\t * Group cipher: TKIP\n\t\t * Pairwise ciphers: CCMP\n"
       "\t\t * Authentication suites: PSK\n")


def scans():
    room = "\x54\x55"
    yield "empty", room
    yield "open", room + "BSS 02:00:5E:00:53:01(on wlan0)\n\tfreq: 5180\n\tcapability: ESS (0x0421)\n\tSSID: open\n"
    yield "wep", room + NETWORK + "\tSSID: a\\x20b\\\\c\n"
    yield "wpa2", room + NETWORK + "\tSSID: home\n" + RSN + "\tHT capabilities:\n"
    yield "both", room + NETWORK + RSN + RSN.replace("RSN", "WPA").replace("CCMP", "Use group cipher suite")
    yield "many", room + (NETWORK + RSN) * 5
    yield "other_suites", room + NETWORK + RSN.replace("PSK", "SAE OWE IEEE 802.1X") + "\tVHT capabilities:\n\tHE capabilities:\n"
    yield "hidden", room + NETWORK + "\tSSID: \\x00\\x00\n\tSSID: told later\n"
    yield "long_line", room + NETWORK + "\tSSID: " + "x" * 600 + "\n"
    yield "room_for_the_heading_to_the_byte", "\x65\x00" + NETWORK
    yield "room_for_one_to_the_byte", "\xCA\x00" + NETWORK
    yield "no_room", "\x60\x00" + NETWORK
    yield "room_for_one", "\xCC\x00" + NETWORK * 2
    yield "numbers_beyond_an_int", room + "BSS 02:00:5e:00:53:01\n\tfreq: 99999999999\n\tsignal: -99999999999 dBm\n"
    yield "found_address_with_minus_one", room + "BSS -1:0:0:0:0:0\n\tfreq: 2437\n" + NETWORK


def answer(status, length, body, piece=255):
    return bytes([piece]) + f"HTTP/1.1 {status} OK\r\nContent-Length: {length}\r\n\r\n".encode() + body


def downloads():
    for name, url in {
        "both": "http://https://Camera.example:8443/firmware.bin", "no_port": "https://host/path http://",
        "no_path": "https://http://:80", "host": "camera.example:80/x", "bare": "camera.example", "full": "h" * 300,
        "no_number": "host:x/y", "found_port_beyond_an_int": "host:4294967376/x",
        "found_port_beyond_a_long": "host:99999999999999999999/x",
    }.items():
        yield f"url_{name}", b"\0" + url.encode()
    yield "whole", answer(200, 5, b"image")
    yield "byte_by_byte", answer(200, 5, b"image", 1)
    yield "large", answer(200, 3000, bytes(range(250)) * 12)
    yield "cut", answer(200, 5, b"ima")
    yield "empty", answer(200, 0, b"")
    yield "not_found", answer(404, 5, b"image")
    yield "no_length", b"\xFFHTTP/1.1 200 OK\r\n\r\nimage"
    yield "no_end", b"\xFF" + b"HTTP/1.1 200 OK\r\n" * 70
    yield "negative", answer(200, -1, b"image")
    yield "found_status_4294967496_read_as_200", answer(4294967496, 5, b"image")
    yield "found_length_beyond_an_int", answer(200, 4294967301, b"image")


SEARCH, TALK = b"\0", b"\1"
AS_IT_IS, ANSWER, ANSWER_IN_LENGTH, PRESENCE = range(4)


def discovery_payload():
    return (field("Brand", 64) + field("Product", 64) + field("Model", 32) + field("1.05", 32) + bytes([3, 0, 1, 0, 0, 0]) +
            MAC + field("Front door", 64) + bytes([192, 0, 2, 10]) + struct.pack(">H", 80) + bytes(2) +
            bytes([255, 255, 255, 0, 192, 0, 2, 1, 192, 0, 2, 2, 0, 0, 0, 0, 0]) + field("20260131102030", 16) +
            struct.pack("<HB", 51, 0))


def services_payload():
    return (bytes(1) + field("user", 64) * 2 + bytes([3, 3, 1]) + field("user", 64) + field("pass", 64) +
            field("host.example.com", 64) + bytes([1]) + field("names.example.com;", 200))


def clock_payload():
    return field("20260131102030", 16) + struct.pack("<HBB", 51, 0, 1) + field("ntp.example.com", 80)


def wifi_payload():
    return (bytes([1, 6]) + field("Workshop", 36) + bytes([0x30, 0x04, 0, 0]) + field("abcde", 32) * 4 +
            field("correct horse", 68) + bytes(14))


def survey_payload():
    return b"".join(field(f"net {index}", 33) + bytes([90 - index, 0x30, 0x64]) for index in range(20)) + b"\0\0\xFF\xFF"


def conversation(*payloads):
    return TALK + b"".join(record(ANSWER_IN_LENGTH, payload) for payload in payloads)


def replies():
    reports = record(PRESENCE, field("Product", 64) + field("3", 32) + field("1.05", 32) + MAC + field("A", 64) +
                     field("Yard", 64) + bytes([192, 0, 2, 11, 255, 255, 255, 0]))
    yield "found", SEARCH + record(ANSWER_IN_LENGTH, discovery_payload())
    yield "heard", SEARCH + reports
    yield "heard_then_found", SEARCH + reports + record(ANSWER_IN_LENGTH, discovery_payload())
    yield "no_datagram_of_a_camera", SEARCH + record(AS_IT_IS, b"hello") + record(ANSWER, bytes(3))
    yield "settings", conversation(discovery_payload(), services_payload(), clock_payload(), wifi_payload(), b"\1" * 4,
                                   survey_payload(), struct.pack("<4H", 0xA6, 0xA7, 0xA8, 0), bytes(16), bytes(8))
    yield "refused", conversation(discovery_payload(), b"\3" * 15, b"\2" + bytes(14))
    yield "no_date", SEARCH + record(ANSWER_IN_LENGTH, discovery_payload().replace(b"20260131", b"20261331"))
    yield "signed_date", SEARCH + record(ANSWER_IN_LENGTH, discovery_payload().replace(b"20260131", b"-0010131"))
    yield "silence", TALK + record(0, b"") * 5


CAMERA = "02:00:5e:10:00:01"


def camera_files():
    yield "table", f"tmac,name,ipv4.address,wifi.key\n{CAMERA},Yard,192.0.2.10/24,prompt:a\n"
    yield "semicolons", f't\xEF\xBB\xBFmac;name;model\r\n{CAMERA};"Front; ""door""\nlane";x\r\n'
    yield "escapes", f"tmac,name\n{CAMERA},'=a\\x41\\u{{e9}}\\\\\n"
    yield "everything", (f"tmac,http-port,ipv4.method,ipv4.gateway,ipv4.dns,upnp,ddns.user,ddns.password,time.zone,time.ntp,"
                         f"password,wifi.ssid,wifi.security\n{CAMERA},8080,static,192.0.2.1,192.0.2.2,on,u,env:A,Asia/Tokyo,"
                         f"off,file:a,Home,wpa2-aes\n")
    yield "secret_in_the_file", f"tmac,password\n{CAMERA},MARKED\n"
    yield "no_camera", "tmac\n"
    yield "cut_character", f"tmac,name\n{CAMERA},\xE2\x82"
    yield "open_quote", f't"mac\n{CAMERA}'
    yield "missing_secret", f"tmac,password\n{CAMERA},env:missing\n"
    yield "policy", (f'p[defaults]\ntime.ntp = "off"\nipv4.address = "198.18.7.1-9/24"\npassword = {{ file = "new" }}\n'
                     f'[[group]]\nproduct = "VC-2*"\nset = {{ upnp = false }}\n[[camera]]\nmac = "{CAMERA}"\n'
                     f'product = "VC-2"\nname = "Hall"\n')
    yield "table_beside", f"ptable = 'a.csv'\n[[group]]\nname = '*'\nset.upnp = true\0mac,name\n{CAMERA},Yard\n"
    yield "long_text", f"p[[camera]]\nmac = '{CAMERA}'\nname = \"\"\"\nMARKED\"\"\"\n[camera.wifi]\nssid = ''\n"
    yield "no_toml", 'ppassword = "MARKED\n'
    yield "table_twice", "p[MARKED]\n[MARKED]\n"
    yield "deep_key", "p" + "a." * 20 + "b = 1\n"
    yield "twins", f"p[[camera]]\nmac = '{CAMERA}'\n" * 2


def request(method, path, body="", **headers):
    """A header of which the value is None is left out."""
    known = {"Host": "127.0.0.1:8080", "X-Qvpctl": "1", "Content-Type": "application/json", **headers}
    token, cookie = known.pop("token", ""), known.pop("cookie", "c00kie")
    lines = [method, path, token, cookie] + [f"{name}: {value}" for name, value in known.items() if value is not None]
    return "\n".join(lines) + "\n\n" + body


def pages():
    yield "read", request("GET", "/api/session")
    yield "token", request("GET", "/", token="1e7t-me-in", cookie="")
    yield "wrong_token", request("GET", "/", token="1e7t-me-im", cookie="")
    yield "no_cookie", request("GET", "/api/session", cookie="")
    yield "foreign_page", request("POST", "/api/search", "{}", Origin="http://example.com")
    yield "own_page", request("POST", "/api/search", "{}", Origin="http://localhost:8080", **{"Sec-Fetch-Site": "same-origin"})
    yield "two_pages", request("GET", "/", Origin="http://localhost:8080", origin="http://example.com")
    yield "other_name", request("GET", "/", Host="camera.example:8080")
    yield "form", request("POST", "/api/login", "user=a", **{"Content-Type": "text/plain"})
    yield "no_header", request("POST", "/api/login", "{}", **{"X-Qvpctl": None})
    yield "too_large", request("POST", "/api/login", "{}", **{"Content-Length": "1048577"})
    yield "chunks", request("POST", "/api/login", "{}", **{"Transfer-Encoding": "chunked"})
    yield "put", request("PUT", "/api/login", "{}")
    yield "login", request("POST", "/api/login", '{"mac": null, "user": "admin", "password": "secret"}')
    yield "settings", request("POST", "/api/plan", '{"settings": {"name": "a\\u00e9", "wifi.key": "MARKED", "upnp": "on"}}')
    yield "confirm", request("DELETE", "/api/x", '{"confirm": "Yard", "parallel": 8}')
    yield "table", request("POST", "/api/fleet", '{"csv": "mac,password\\n' + CAMERA + ',prompt:a\\n", "secrets": '
                           '{"prompt:a": "MARKED"}}')
    yield "cameras", request("POST", "/api/fleet", '{"cameras": [{"mac": "' + CAMERA + '", "settings": {"name": "\'=a\\"", '
                             '"password": "MARKED"}}]}')
    yield "no_text", request("POST", "/api/fleet", '{"cameras": [{"mac": "' + CAMERA + '", "settings": {"name": 5}}]}')
    yield "deep", request("POST", "/api/fleet", "[" * 50)
    yield "no_object", request("POST", "/api/fleet", '"text"')


TARGETS = {
    "datagram": datagrams, "store": stores, "site_list": site_lists, "scan": scans, "download": downloads,
    "reply": replies, "camera_file": camera_files, "page": pages,
}


def main(folder, targets):
    for target in targets or TARGETS:
        place = folder / target
        place.mkdir(parents=True, exist_ok=True)
        for old in place.iterdir():
            old.unlink()
        for name, content in TARGETS[target]():
            (place / name).write_bytes(content if isinstance(content, bytes) else content.encode("latin-1"))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), sys.argv[2:])
