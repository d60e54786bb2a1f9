"""The settings that a camera keeps: sections of named keys, each a text, a number, a short number or a flag."""
import functools
import re

ESCAPED = re.compile(rb"\\(?:x([0-9A-Fa-f]{2})|(.))", re.DOTALL)
BY_LETTER = {b"n": b"\n", b"r": b"\r", b"t": b"\t"}
KEYS_OF_WEP = ("WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3")


class Settings:
    """What stands in the store as {section: {key: text}}, read and written by the kinds of the keys."""

    def __init__(self, sections):
        self.sections = {name: dict(keys) for name, keys in sections.items()}
        self.written = False

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
        self.written = True


# The store's file: printable values stand plain, all others in double quotes.


def quoted(value):
    if re.fullmatch(rb"[!$-:<-Z\\^-~](?:[ -~]*[!-~])?|", value):
        return value
    return b'"%s"' % b"".join(b"\\x%02X" % byte if not 32 <= byte < 127 or byte in b'"\\' else b"%c" % byte
                              for byte in value)


def ini(sections):
    lines = [b"# A comment of the board's."]
    for section, keys in sections.items():
        lines += [b"", b"[%s]" % section.encode(), b"; and one of " + section.encode()]
        lines += [b"%s=%s" % (key.encode(), quoted(value)) for key, value in keys.items()]
    return b"\n".join(lines) + b"\n"


@functools.lru_cache(maxsize=4096)  # most lines of a store are those of the one before
def entry(line):
    key, _, value = line.partition(b"=")
    key, value = key.strip().decode(), value.strip()
    if value.startswith(b'"'):
        assert value.endswith(b'"') and len(value) > 1, value
        value = ESCAPED.sub(lambda found: bytes.fromhex(found[1].decode()) if found[1] else
                            BY_LETTER.get(found[2], found[2]), value[1:-1])
    return key, value


def parsed(content):
    sections, section = {}, None
    for line in content.split(b"\n"):
        if line.startswith(b"["):
            section = sections.setdefault(line[1:-1].decode(), {})
        elif line and line[:1] not in b"#;":
            key, value = entry(line)
            assert key not in section, f"{key} stands there twice"
            section[key] = value
    return sections
