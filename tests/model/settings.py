"""The settings that a camera keeps: sections of named keys, each a text, a number, a short number or a flag."""
import re
import struct

KEYS_OF_WEP = ("WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3")


class Settings:
    """What stands in the store as {section: {key: text}}, read and written by the kinds of the keys."""

    def __init__(self, sections):
        self.sections = {name: dict(keys) for name, keys in sections.items()}

    def _read(self, section, key):
        return self.sections.get(section, {}).get(key)

    def text(self, section, key):
        return self._read(section, key) or b""

    def number(self, section, key):
        return int(self._read(section, key) or 0)

    def short(self, section, key):
        return self.number(section, key) & 0xFFFF

    def flag(self, section, key, absent=0):
        value = self._read(section, key)
        return absent if value is None else int(value) & 0xFF

    def write(self, section, key, value):
        text = b"%d" % value if isinstance(value, int) else value
        self.sections.setdefault(section, {})[key] = text


def quoted(value):
    """A value as it stands in the store's file."""
    plain = re.fullmatch(rb"[!#-~](?:[ -~]*[!-~])?|", value)
    if plain and value[:1] not in (b"#", b";", b"["):
        return value
    return b'"%s"' % b"".join(b"\\x%02X" % byte if not 32 <= byte < 127 or byte in b'"\\' else struct.pack("B", byte)
                              for byte in value)


def ini(sections):
    """The store's file."""
    lines = [b"# A comment of the board's."]
    for section, keys in sections.items():
        lines += [b"", b"[%s]" % section.encode(), b"; and one of " + section.encode()]
        lines += [b"%s=%s" % (key.encode(), quoted(value)) for key, value in keys.items()]
    return b"\n".join(lines) + b"\n"
