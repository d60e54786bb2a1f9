"""A camera as the documents describe it, and nothing of it as the daemon does it.

It is asked a datagram and tells what has to come back, what the board is asked to do then, and keeps the settings as
they have to stand in the store."""
import base64
import re
from dataclasses import dataclass, field

import afterwards
import clock
import survey
import wireless
from wire import BY_MAC, DONE, HEADER, LANDAP, MAGIC_OF_REQUESTS, NOT_ALLOWED, PRIMARY, REFUSED
from wire import Reply, Request, le16, le32

NOWHERE = bytes(4)
SITE_SURVEY = 0xAE


@dataclass
class Board:
    """What the daemon finds around it, but for the store and the clock."""

    mac: bytes
    address: bytes
    mask: bytes
    gateway: bytes
    name_servers: list = field(default_factory=list)
    channels: dict = field(default_factory=dict)  # by region
    site_list: bytes | None = None
    administrators: tuple = (b"admin",)
    upgrade_state: int | None = None


@dataclass
class Command:
    length: int  # of the reply
    do: str  # method of Camera
    protected: bool = True
    by_broadcast: bool = False
    families: tuple = (PRIMARY, LANDAP)


COMMANDS = {
    0x00A1: Command(505, "discovery", protected=False, by_broadcast=True),
    0x00A2: Command(38, "set_basic_info"),
    0x00A3: Command(26, "user_verification"),
    0x00A4: Command(38, "change_password"),
    0x00A5: Command(262, "supported_functions", protected=False, by_broadcast=True),
    0x00A6: Command(547, "get_network"),
    0x00A7: Command(38, "set_network"),
    0x00A8: Command(274, "get_wifi"),
    0x00A9: Command(38, "set_wifi"),
    0x00AB: Command(38, "factory_reset"),
    0x00AC: Command(122, "get_datetime"),
    0x00AD: Command(38, "set_datetime"),
    SITE_SURVEY: Command(746, "fetch_survey"),
    0x00AF: Command(130, "get_simple_wifi"),
    0x00B0: Command(38, "set_simple_wifi"),
    0x00B1: Command(38, "start_survey"),
    0x00C0: Command(38, "commit"),
    0x0103: Command(38, "reboot", families=(PRIMARY,)),
    0x0200: Command(150, "alert_info", protected=False, families=(PRIMARY,)),
}
LANDAP_DISCOVERY = 334
SUPPORTED = (0xA6, 0xA7, 0xA8, 0xA9, 0xAE, 0xAF, 0xB0, 0xB1, 0xC0)
SUPPORTED_BY_LANDAP = (0xA6, 0xA7, 0xA8, 0xA9, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF, 0xB0, 0xB1, 0xC0)


def decoded(text):
    """Base64 up to the first byte outside its alphabet, and of that the whole bytes up to a NUL."""
    known = re.match(rb"[A-Za-z0-9+/]*", text)[0]
    whole = len(known) * 6 // 8
    return base64.b64decode(known + b"A" * (-len(known) % 4))[:whole].split(b"\0", 1)[0]


def version(settings):
    return b"%d.%02d" % (settings.short("System", "MainVersion"), settings.short("System", "FirmwareVersion"))


class Camera:
    def __init__(self, board, settings, zones, time):
        self.board = board
        self.settings = settings
        self.zones = zones
        self.zone = clock.UTC
        self.time = time
        self.sites = survey.filled(None)
        self.reports = 0
        self.events = []
        self.asked_for = set()
        self.clock_seen = None
        self.time_to_set = None

    def answer(self, datagram, clock_seen=None):
        """The reply or None, and what the board is asked for, in its order. `clock_seen` is what the daemon has set the
        clock to; it counts only for a local time that there is twice, or never."""
        self.events, self.asked_for, self.clock_seen = [], set(), clock_seen
        if len(datagram) < HEADER:
            return None, []
        request = Request(datagram)
        command = COMMANDS.get(request.opcode)
        if not command or request.protocol not in command.families:
            return None, []
        if request.magic != MAGIC_OF_REQUESTS or not self._is_meant(request, command):
            return None, []
        reply = self._reply(request, command)
        if request.opcode != SITE_SURVEY:
            afterwards.run(self)
        return bytes(reply.bytes), self.events

    def _is_meant(self, request, command):
        by_mac = request.mac == self.board.mac
        if not command.by_broadcast or (request.opcode, request.protocol) == (0xA5, LANDAP):
            return by_mac
        if request.selector == 0 and request.mac == b"\xff" * 6 and request.address == NOWHERE:
            return True
        return request.selector in (0, BY_MAC) and by_mac

    def _reply(self, request, command):
        landap = request.protocol == LANDAP
        length = LANDAP_DISCOVERY if landap and request.opcode == 0xA1 else command.length
        reply = Reply(request, length, self.board.mac, self.board.address)
        protected = command.protected or (landap and request.opcode == 0xA5 and request.payload_length != 0)
        if protected and not self._is_administrator(request):
            reply.status(NOT_ALLOWED)
            return reply
        code = getattr(self, command.do)(request, reply)
        reply.status(DONE if code is None else REFUSED)
        if code is not None:
            reply.put(22, le32(code))
        return reply

    def _is_administrator(self, request):
        return (decoded(request.text(22, 64)) == self.settings.text("USER_ADMIN", "Username1")
                and decoded(request.text(86, 64)) == self.settings.text("USER_ADMIN", "Password1"))

    # What is told.

    def _name_server(self, index):
        return self.board.name_servers[index] if index < len(self.board.name_servers) else NOWHERE

    def _put_zone(self, reply, at):
        reply.put(at, le16(self.zones.wire.get(self.settings.number("DATETIME", "TimeZone"), 0)))

    def discovery(self, request, reply):
        settings, landap = self.settings, request.protocol == LANDAP
        reply.put_text(22, settings.text("INFO", "BrandName"), 64)
        reply.put_text(86, settings.text("INFO", "Product"), 64)
        reply.put_text(150, settings.text("System", "ModelName"), 32)
        reply.put_text(182, version(settings), 32)
        reply.put(214, bytes([1 if landap else 3, 0, 1]))
        reply.put(220, self.board.mac)
        reply.put_text(226, settings.text("CAMSYSTEM", "CameraName"), 64)
        reply.put(290, self.board.address)
        reply.put(294, le16(settings.number("HTTP", "Port"))[::-1])
        reply.put(298, self.board.mask + self.board.gateway + self._name_server(0) + self._name_server(1))
        reply.put(314, bytes([settings.number("NETWORK_V4", "BootProto") == 1]))
        reply.put(315, clock.local_text(self.time, self.zone))
        self._put_zone(reply, 331)
        reply.put(333, bytes([settings.flag("DATETIME", "DayLightSaving")]))
        if not landap:
            reply.put_text(366, settings.text("INFO", "HWVersion"), 32)

    def presence_report(self):
        """The next one; nobody asks for it."""
        settings, report = self.settings, bytearray(317)
        fields = {
            0: b"\xff\xff",
            2: le16(self.reports),
            4: le16(0xA0),
            6: self.board.mac,
            12: self.board.address,
            18: le16(PRIMARY),
            20: le16(295),
            22: settings.text("INFO", "Product")[:64],
            86: b"3",
            118: version(settings),
            150: self.board.mac,
            156: settings.text("INFO", "HWVersion")[:32],
            220: settings.text("CAMSYSTEM", "CameraName")[:64],
            284: self.board.address,
            288: self.board.mask,
        }
        for at, data in fields.items():
            report[at : at + len(data)] = data
        self.reports += 1
        return bytes(report)

    def user_verification(self, request, reply):
        reply.put(22, bytes([1 if decoded(request.text(22, 64)) in self.board.administrators else 2]))

    def supported_functions(self, request, reply):
        opcodes = SUPPORTED_BY_LANDAP if request.protocol == LANDAP else SUPPORTED
        reply.put(22, b"".join(le16(opcode) for opcode in opcodes))

    def alert_info(self, request, reply):
        pass

    def get_datetime(self, request, reply):
        settings = self.settings
        reply.put(22, clock.local_text(self.time, self.zone))
        self._put_zone(reply, 38)
        by_ntp = settings.number("DATETIME", "Protocol") == 1
        reply.put(40, bytes([settings.flag("DATETIME", "DayLightSaving"), by_ntp]))
        reply.put_text(42, settings.text("DATETIME", "NTPServerIP"), 63)

    def get_network(self, request, reply):
        settings = self.settings
        pppoe = settings.flag("NETWORK_V4", "PPPoEEnable", absent=settings.flag("DDNS", "Enable"))
        services = (settings.flag("UPnP", "Enable") | pppoe << 1) & 0xFF
        for at in (23, 87):  # the user name, also in the password's place
            reply.put_text(at, settings.text("NETWORK_V4", "PPPoEUID"), 63)
        reply.put(151, bytes([services, services, 1]))
        for at, key in ((154, "UID"), (218, "PWD"), (282, "HOST")):
            reply.put_text(at, settings.text("DDNS", key), 63)
        reply.put(346, b"\x01names.example.com;")

    def get_wifi(self, request, reply):
        wireless.tell_full(reply, self.settings)

    def get_simple_wifi(self, request, reply):
        wireless.tell_simple(reply, self.settings)

    def fetch_survey(self, request, reply):
        assert survey.put_list(self.sites, reply)

    # What is set. A command that is refused returns the code.

    def _accept(self, reply, milliseconds):
        reply.put(26, le32(2) + le32(milliseconds))

    def set_basic_info(self, request, reply):
        port, mode = request.number(218), request[238]
        if port in (0, 8088):
            return 3
        if mode > 1:
            return 8
        write = self.settings.write
        write("CAMSYSTEM", "CameraName", request.text(150, 63))
        write("HTTP", "Port", port)
        write("NETWORK_V4", "BootProto", mode)
        if mode == 0:
            for key, at in (("IP", 214), ("SubnetMask", 222), ("Gateway", 226), ("DNS0", 230), ("DNS1", 234)):
                write("NETWORK_V4", key, request.dotted(at))
        self.asked_for |= {"name", "web server", "network"}
        self._accept(reply, 10000)
        return None

    def change_password(self, request, reply):
        new = decoded(request.text(214, 64))
        self.settings.write("USER_ADMIN", "Password1", new)
        name = self.settings.text("USER_ADMIN", "Username1").decode("latin-1")
        escaped = re.sub(rb'(["`\\$])', rb"\\\1", new).decode("latin-1")
        self.events.append(f'run /usr/sbin/set_passwd -u "{name}" -p "{escaped}" {afterwards.QUIETLY}')
        self.asked_for.add("password")

    def set_network(self, request, reply):
        values, mask = request[279], request[280]
        if request[150] > 1:
            return 0
        if request[281] != 0:
            return 304
        upnp = values & 1 if mask & 1 else 0
        write = self.settings.write
        if mask & 1:
            write("UPnP", "Enable", upnp)
        if mask & 2:
            write("DDNS", "Enable", upnp)
            write("DDNS", "PROVIDER", 4)
            for key, at in (("UID", 282), ("PWD", 346), ("HOST", 410)):
                write("DDNS", key, request.text(at))
        return None

    def set_wifi(self, request, reply):
        region = str(self.settings.number("HWMIB", "Region"))
        allowed = {channel for channel in self.board.channels.get(region, ()) if channel != 0}
        return self._after_wifi(wireless.set_full(request, self.settings, allowed), reply)

    def set_simple_wifi(self, request, reply):
        return self._after_wifi(wireless.set_simple(request, self.settings), reply)

    def _after_wifi(self, code, reply):
        if code is None:
            self.asked_for.add("wireless")
            self._accept(reply, 5000)
        return code

    def set_datetime(self, request, reply):
        numbers = clock.six_numbers(request.text(150))
        if numbers is None or (any(numbers) and not clock.in_range(numbers)):
            return 101
        zone = self.zones.stored.get(request.number(166))
        saving, ntp = request[168], request[169]
        if zone is None:
            return 102
        if saving > 1:
            return 103
        if ntp > 1:
            return 104
        write = self.settings.write
        write("DATETIME", "TimeZone", zone)
        write("DATETIME", "DayLightSaving", saving)
        write("DATETIME", "Protocol", ntp)
        write("DATETIME", "NTPServerIP", request.text(170))
        self.asked_for.add("time")
        self.time_to_set = numbers if any(numbers) else None
        return None

    def start_survey(self, request, reply):
        self.asked_for.add("survey")
        self._accept(reply, 20000)

    def commit(self, request, reply):
        pass

    def factory_reset(self, request, reply):
        if self.board.upgrade_state != 1:
            self.asked_for.add("factory reset")

    def reboot(self, request, reply):
        if self.board.upgrade_state != 1:
            self.asked_for.add("reboot")
