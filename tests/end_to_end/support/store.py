"""A reader and an editor of a camera's store that know no more of it than its manual says."""
import re

ESCAPES = {b"\\": b"\\", b'"': b'"', b"n": b"\n", b"r": b"\r", b"t": b"\t"}


def _unescape(match):
    return bytes.fromhex(match[2].decode()) if match[2] else ESCAPES[match[1]]


def _value(text):
    if not text.startswith(b'"'):
        return text
    assert text.endswith(b'"') and len(text) > 1, text
    return re.sub(rb"\\(?:([\\\"nrt])|x([0-9A-Fa-f]{2}))", _unescape, text[1:-1], flags=re.DOTALL)


def parse(content):
    """{section: {key: value}}, all bytes to the value's last escape."""
    sections, section = {}, None
    for line in content.split(b"\n"):
        line = line.strip()
        if line.startswith(b"["):
            section = sections.setdefault(line[1:-1].decode(), {})
        elif line and line[:1] not in b"#;":
            key, _, value = line.partition(b"=")
            section.setdefault(key.strip().decode(), _value(value.strip()))
    return sections


def edit(content, section, key, text):
    """`content` with the line of a key that stands there replaced, or taken out when `text` is None."""
    lines = content.split(b"\n")
    start = lines.index(f"[{section}]".encode())
    at = next(i for i in range(start + 1, len(lines)) if lines[i].startswith(f"{key}=".encode()))
    assert not any(line.startswith(b"[") for line in lines[start + 1 : at]), f"{section}/{key} does not stand there"
    lines[at : at + 1] = [] if text is None else [f"{key}=".encode() + text]
    return b"\n".join(lines)
