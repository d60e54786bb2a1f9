"""A tool's conversation with real cameras, taken down as it goes: every command of both families, done and refused."""
import socket

from capture import PORT, Capture, Ear
from support.requests import basic_info, change_password, set_datetime, simple_wifi, wifi
from support.tool import ADDRESS
from support.waiting import PATIENCE, wait_until
from support.wire import BY_MAC, EVERYONE, LANDAP, PRIMARY, credentials, le16, protected, request, text_field

TOOL = (ADDRESS, 40000)
PASSWORD = b"Orchid77-old"
NEW_PASSWORD = b"Tulip88-new"
WIFI_KEY = b"Violet99-psk"
DDNS_PASSWORD = b"Daisy66-ddns"
WEP_KEY = b"Aster"
SECRETS = (PASSWORD, NEW_PASSWORD, WIFI_KEY, DDNS_PASSWORD, WEP_KEY)
STORE = ("--set", "USER_ADMIN/Password1=" + PASSWORD.decode(), "--set", "WIRELESS/WEPKey2=" + WEP_KEY.decode(),
         "--set", "DDNS/PWD=" + DDNS_PASSWORD.decode(), "--reboot-delay", "0")
SURVEY = "Ch  SSID\n" + f"{'6':4}{'Barn':33}{'02:00:00:00:00:01':20}{'WPA2PSK/AES':23}{'81':10}{'11b/g/n':8}In\n"


def network_settings(camera, flag=0, **others):
    return protected(0x00A7, camera, {
        150: b"\0", 215: text_field(b"Daisy66-pppoe", 64), 279: b"\x01\x03" + bytes([flag]),
        282: text_field(b"uncle", 64), 346: text_field(DDNS_PASSWORD, 64), 410: text_field(b"cam.example.com", 64),
    }, length=675, **others)  # fmt: skip


def completed(datagram):
    """With a sequence that its step alone decides, and the length that it has."""
    opcode, family = datagram[4] | datagram[5] << 8, datagram[18]
    return datagram[:2] + le16(opcode << 4 | family) + datagram[4:20] + le16(len(datagram) - 22) + datagram[22:]


class Session:
    """The frames of each step are in `steps`; `kinds` has a datagram of every kind that was seen."""

    def __init__(self, lan):
        self.capture = Capture()
        self.steps = {}
        self.kinds = {}
        self.ear = Ear()
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        self.socket.settimeout(PATIENCE)
        self.socket.bind(TOOL)
        self.camera, self.other = lan.cameras(2, {0: STORE})
        (self.camera.root / "etc/qvp/site_list.txt").write_text(SURVEY)
        self.hear_reports("presence", 2)

    def close(self):
        self.socket.close()
        self.ear.close()

    def take_down(self, step, source, target, payload, after=1):
        self.steps.setdefault(step, []).append(self.capture.udp(source, target, payload, after=after))
        self.kinds.setdefault((payload[:2], payload[4:6], payload[18:20], len(payload)), payload)

    def hear_reports(self, step, count):
        """The first ones of as many daemons."""
        reports = {}

        def all_heard():
            for source, target, payload in self.ear.heard():
                if payload[:4] == b"\xff\xff\0\0":
                    reports[source] = (target, payload)
            return len(reports) == count

        wait_until(all_heard, f"{count} reports")
        for source, (target, payload) in sorted(reports.items()):
            self.take_down(step, source, target, payload, after=20_000)

    def ask(self, step, datagram, to=None, answers=1):
        datagram = completed(datagram)
        target = (to or self.camera.address, PORT)
        self.take_down(step, TOOL, target, datagram)
        self.socket.sendto(datagram, target)
        for data, source in sorted((self.socket.recvfrom(2048) for _ in range(answers)), key=lambda answer: answer[1]):
            self.take_down(step, source, TOOL, data)

    def read(self, family, prefix=""):
        camera, mine = self.camera, {"password": PASSWORD, "protocol": family}
        self.ask(prefix + "discovery", request(0x00A1, protocol=family), EVERYONE, answers=2)
        if family == PRIMARY:
            self.ask("supported", request(0x00A5, camera.mac, selector=BY_MAC))
        else:
            asked = request(0x00A5, camera.mac, protocol=family, fields=credentials(password=PASSWORD))
            self.ask("landap_supported", asked)
        self.ask(prefix + "verify", protected(0x00A3, camera, **mine))
        self.ask(prefix + "get_network", protected(0x00A6, camera, **mine))
        self.ask(prefix + "get_wifi", protected(0x00A8, camera, **mine))
        self.ask(prefix + "get_simple_wifi", protected(0x00AF, camera, **mine))
        self.ask(prefix + "get_time", protected(0x00AC, camera, **mine))
        self.ask(prefix + "scan", protected(0x00B1, camera, **mine))
        self.ask(prefix + "fetch", protected(0x00AE, camera, **mine))

    def change(self, family, prefix=""):
        camera, mine = self.camera, {"password": PASSWORD, "protocol": family}
        self.ask(prefix + "set_basic", basic_info(camera, name="Scheune Süd".encode(), port=8080, **mine))
        self.ask(prefix + "set_basic_refused", basic_info(camera, port=8088, **mine))
        self.ask(prefix + "set_network", network_settings(camera, **mine))
        self.ask(prefix + "set_network_refused", network_settings(camera, flag=1, **mine))
        self.ask(prefix + "set_wifi", wifi(camera, ssid=b"Barn", key=WIFI_KEY, **mine))
        self.ask(prefix + "set_wifi_refused", wifi(camera, key=b"short", **mine))
        self.ask(prefix + "set_simple_wifi", simple_wifi(camera, ssid=b"Barn", key=WIFI_KEY, **mine))
        self.ask(prefix + "set_time", set_datetime(camera, server=b"ntp.example.com", zone=51, **mine))
        self.ask(prefix + "set_time_refused", set_datetime(camera, zone=9999, **mine))
        self.ask(prefix + "wrong_login", protected(0x00A8, camera, password=b"Orchid77-wrong", protocol=family))
        self.ask(prefix + "commit", protected(0x00C0, camera, **mine))

    def run(self):
        self.read(PRIMARY)
        self.change(PRIMARY)
        self.read(LANDAP, "landap_")
        self.change(LANDAP, "landap_")
        self.ask("alert", request(0x0200, self.camera.mac, selector=BY_MAC))
        self.ask("password", change_password(self.camera, NEW_PASSWORD, old=PASSWORD))
        self.ask("reboot", protected(0x0103, self.camera, password=NEW_PASSWORD))
        self.hear_reports("restart", 1)
        self.ask("factory_reset", protected(0x00AB, self.camera, password=NEW_PASSWORD))
        self.hear_reports("restart_after_reset", 1)
        return self
