"""Requests that are accepted as they stand, for tests to send or to spoil."""
import base64

from support.wire import BY_MAC, PRIMARY, ip, le16, protected, request, text_field

SETTING_REPLY = 38


def discovery(camera, protocol=PRIMARY):
    return request(0x00A1, camera.mac, selector=BY_MAC, protocol=protocol)


def basic_info(camera, name=b"Front door", address=None, port=80, mode=0, gateway="198.18.0.1", **others):
    """Mode 0: the address, or the camera's own; mode 1: DHCP."""
    return protected(0x00A2, camera, {
        150: name,
        214: ip(address or camera.address),
        218: le16(port),
        222: ip("255.254.0.0"),
        226: ip(gateway),
        230: ip("198.18.0.2"),
        234: ip("198.18.0.3"),
        238: bytes([mode]),
    }, **others)  # fmt: skip


BASIC_INFO_COMMANDS = [
    "/etc/init.d/llmnr-0 restart",
    "/etc/init.d/bonjour-0 restart",
    "/usr/sbin/msger httpdmgr 0 hrestart 0 0",
    "/etc/init.d/ipv4 restart",
]


def user_verification(camera, password=b"admin", **others):
    return protected(0x00A3, camera, password=password, **others)


def change_password(camera, new, old=b"admin", **others):
    return protected(0x00A4, camera, {214: text_field(base64.b64encode(new), 64)}, password=old, **others)


def set_datetime(camera, when=b"0" * 14, zone=51, daylight_saving=0, ntp=0, server=b"", **others):
    return protected(0x00AD, camera, {
        150: when,
        166: le16(zone),
        168: bytes([daylight_saving, ntp]),
        170: server + b"\0",
    }, **others)  # fmt: skip


def over(sound, fields):
    """`fields` put over the sound ones, so last of all."""
    fields = fields or {}
    return {offset: data for offset, data in sound.items() if offset not in fields} | fields


def wifi(camera, fields=None, ssid=b"Workshop 2", key=b"a new long secret", **others):
    """Channel 11, WPA2 with AES, and the fields that a test puts over them."""
    sound = {150: b"\x01\x0b", 152: ssid, 188: b"\x30\x04\x00", 320: key}
    return protected(0x00A9, camera, over(sound, fields), length=402, **others)


def simple_wifi(camera, fields=None, ssid=b"Workshop 3", key=b"another secret", **others):
    sound = {150: b"\x01", 151: ssid, 187: b"\x00\x0d\x04\x03", 191: key}
    return protected(0x00B0, camera, over(sound, fields), length=258, **others)
