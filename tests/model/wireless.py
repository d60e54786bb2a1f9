"""The wireless commands' checks, and the values that they keep."""
import string

from settings import KEYS_OF_WEP

STORED = {0: 0, 1: 1, 3: 2, 4: 3, 5: 4}  # authentication, by its code on the wire
ON_THE_WIRE = {stored: code for code, stored in STORED.items()}
CAPABILITIES = bytes([0xFF, 0, 0, 0, 3, 0x0F, 0x1B, 3, 3, 0x0F])
WEP_LENGTHS = {(0, 0): 5, (0, 1): 13, (1, 0): 10, (1, 1): 26}  # of a key's text, by format and length
NUMBERS = ("Channel", "Authentication", "Encryption", "WEPKeyFormat", "WEPKeyLength", "WEPActiveKey")
WITH_WEP, WITH_PRE_SHARED_KEY = (1,), (2, 3, 4)


def is_hexadecimal(text):
    return all(byte in string.hexdigits.encode() for byte in text)


def is_printable(text):
    return all(32 <= byte <= 127 for byte in text)


def is_wep_key(text, key_format, length):
    """A key is not looked at where the camera keeps a format or a length that there is not."""
    wanted = WEP_LENGTHS.get((key_format, length))
    if wanted is None:
        return True
    return len(text) == wanted and (is_hexadecimal if key_format else is_printable)(text)


def is_pre_shared_key(text):
    return is_hexadecimal(text) if len(text) == 64 else 8 <= len(text) <= 63 and is_printable(text)


def refusal_of_key(encryption, key, key_format, length):
    if encryption in WITH_WEP and not is_wep_key(key, key_format, length):
        return 211
    if encryption in WITH_PRE_SHARED_KEY and not is_pre_shared_key(key):
        return 210
    return None


def first_refusal(*checks):
    """The code of the first check, (code, whether it holds), that does not hold."""
    return next((code for code, holds in checks if not holds), None)


def mirror(settings):
    """The camera as a repeater has the same settings, if it is told to."""
    if not settings.flag("WIRELESS_REP", "SameWithClient"):
        return
    for key in NUMBERS:
        settings.write("WIRELESS_REP", key, settings.number("WIRELESS", key))
    for key in ("SSID", *KEYS_OF_WEP, "PreSharedKey"):
        settings.write("WIRELESS_REP", key, settings.text("WIRELESS", key))


def full_refusal(request, allowed, fields, key):
    checks = first_refusal(
        (201, request[150] == 1),
        (202, request[151] in allowed),
        (204, fields["Mode"] < 2),
        (205, fields["Encryption"] < 5),
        (206, fields["Authentication"] in STORED),
        (207, fields["WEPKeyLength"] < 2),
        (208, fields["WEPKeyFormat"] < 2),
        (212, fields["WEPActiveKey"] < 4),
    )
    return checks or refusal_of_key(fields["Encryption"], key, fields["WEPKeyFormat"], fields["WEPKeyLength"])


def set_full(request, settings, allowed):
    """Opcode 0xA9; the code that it is refused with, if it is."""
    fields = {
        "Mode": request[188] & 15,
        "Authentication": request[189] & 15,
        "Encryption": request[188] >> 4,
        "WEPKeyFormat": request[190] & 15,
        "WEPKeyLength": request[189] >> 4,
        "WEPActiveKey": request[190] >> 4,
    }
    with_wep = fields["Encryption"] in WITH_WEP
    key = request.text(192 + 32 * fields["WEPActiveKey"] if with_wep else 320)
    code = full_refusal(request, allowed, fields, key)
    if code:
        return code
    settings.write("WIRELESS", "Channel", request[151])
    settings.write("WIRELESS", "SSID", request.text(152))
    fields["Authentication"] = STORED[fields["Authentication"]]
    for name, value in fields.items():
        settings.write("WIRELESS", name, value)
    keep_key(settings, fields["Encryption"], fields["WEPActiveKey"], key)
    mirror(settings)
    return None


def keep_key(settings, encryption, active, key):
    if encryption in WITH_WEP and 0 <= active < 4:
        settings.write("WIRELESS", KEYS_OF_WEP[active], key)
    if encryption in WITH_PRE_SHARED_KEY:
        settings.write("WIRELESS", "PreSharedKey", key)


def set_simple(request, settings):
    """Opcode 0xB0; the code that it is refused with, if it is."""
    mode, channel, authentication, encryption = request.bytes[187:191]
    key = request.text(191)
    code = first_refusal((201, request[150] == 1), (204, mode < 2), (205, encryption < 5),
                         (206, authentication in STORED))
    code = code or refusal_of_key(encryption, key, settings.number("WIRELESS", "WEPKeyFormat"),
                                  settings.number("WIRELESS", "WEPKeyLength"))
    if code:
        return code
    settings.write("WIRELESS", "Channel", channel)
    settings.write("WIRELESS", "SSID", request.text(151))
    settings.write("WIRELESS", "Mode", mode)
    settings.write("WIRELESS", "Authentication", STORED[authentication])
    settings.write("WIRELESS", "Encryption", encryption)
    keep_key(settings, encryption, settings.number("WIRELESS", "WEPActiveKey"), key)
    mirror(settings)
    return None


def low(settings, key):
    return settings.number("WIRELESS", key) & 0xFF


def code_of(settings):
    return ON_THE_WIRE.get(settings.number("WIRELESS", "Authentication"), 0)


def tell_full(reply, settings):
    """Opcode 0xA8. A value that is out of range spills into its neighbour."""
    reply.put(22, bytes([settings.flag("WIRELESS", "Enable"), low(settings, "Channel")]))
    reply.put_text(24, settings.text("WIRELESS", "SSID"), 35)
    reply.put(60, bytes([
        (low(settings, "Mode") | low(settings, "Encryption") << 4) & 0xFF,
        (code_of(settings) | low(settings, "WEPKeyLength") << 4) & 0xFF,
        (low(settings, "WEPKeyFormat") | low(settings, "WEPActiveKey") << 4) & 0xFF,
    ]))  # fmt: skip
    for index, key in enumerate(KEYS_OF_WEP):
        reply.put_text(64 + 32 * index, settings.text("WIRELESS", key), 31)
    reply.put_text(192, settings.text("WIRELESS", "PreSharedKey"), 67)
    reply.put(260, CAPABILITIES)


def tell_simple(reply, settings):
    """Opcode 0xAF."""
    encryption = settings.number("WIRELESS", "Encryption")
    key = b""
    if encryption in WITH_WEP:
        active = settings.number("WIRELESS", "WEPActiveKey")
        key = settings.text("WIRELESS", KEYS_OF_WEP[active]) if 0 <= active < 4 else b""
    elif encryption in WITH_PRE_SHARED_KEY:
        key = settings.text("WIRELESS", "PreSharedKey")
    reply.put(22, bytes([settings.flag("WIRELESS", "Enable")]))
    reply.put_text(23, settings.text("WIRELESS", "SSID"), 35)
    reply.put(59, bytes([low(settings, "Mode"), low(settings, "Channel"), code_of(settings), encryption & 0xFF]))
    reply.put_text(63, key, 64)
    reply.put(128, b"\x0f\x1b")
