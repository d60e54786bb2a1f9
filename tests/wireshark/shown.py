"""What tshark makes of a capture with the dissector of this tree."""
import os
import re
import subprocess
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
DISSECTOR = TREE / "wireshark/qvp/qvp.lua"
COLUMNS = '"No.","%m","Source","%s","Destination","%d","Protocol","%p","Info","%i"'
LINE = re.compile(r"^ *(\d+) +(\S+) +→ +(\S+) +(\S+) (.*)$")
PATIENCE = 240


def tshark(capture, home, *arguments, script=("-X", f"lua_script:{DISSECTOR}")):
    """In a home of its own, where nobody's plugins and preferences are."""
    environment = {"PATH": os.environ["PATH"], "HOME": str(home), "LC_ALL": "C.UTF-8", "TZ": "UTC"}
    done = subprocess.run(["tshark", "-n", "-r", capture, *script, *arguments], env=environment,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert done.returncode == 0, done.stderr
    assert "Lua" not in done.stderr, done.stderr
    return done.stdout


class Frame:
    """One datagram: its line in the list, and the lines of the dissector's tree."""

    def __init__(self, source, target, protocol, info):
        self.source, self.target, self.protocol, self.info = source, target, protocol, info
        self.tree = []

    @property
    def is_ours(self):
        return self.protocol in ("QVP", "LANDAP")

    @property
    def line(self):
        return f"{self.source} → {self.target} {self.protocol}: {self.info}"

    def experts(self):
        """[(severity and group, what it says)]"""
        return re.findall(r"\[Expert Info \(([^)]*)\): (.*)\]", "\n".join(self.tree))

    def links(self):
        """What Wireshark made out by itself."""
        return re.findall(r"^ +(\[(?!Expert|Severity|Group)[^:\]]*: .*\])$", "\n".join(self.tree), re.M)


def frames(capture, home, *arguments):
    """{number: Frame}"""
    text = tshark(capture, home, "-P", "-O", "qvp", "-o", f"gui.column.format:{COLUMNS}", *arguments)
    faults = re.findall(r".*(?:Lua Error|Malformed Packet: (?:QVP|LANDAP)).*", text)
    assert not faults, faults[:5]
    found, frame, is_ours = {}, None, False
    for line in text.split("\n"):
        if match := LINE.match(line):
            frame = found[int(match[1])] = Frame(*match.groups()[1:])
            is_ours = False
        elif line and not line.startswith(" "):
            is_ours = line.startswith("IP Camera Configuration")
        if frame and is_ours and line:
            frame.tree.append(line)
    return found


def stable(text, number):
    """Without what differs from run to run: the camera's time; frames are counted from the one that is shown."""
    text = re.sub(r"\b20\d{12}\b", "YYYYMMDDhhmmss", text)
    text = re.sub(r"\b20\d\d-\d\d-\d\d \d\d:\d\d:\d\d\b", "YYYY-MM-DD hh:mm:ss", text)
    text = re.sub(r"(revious report(?: in)?: )[-+\d.]+", r"\1N", text)
    return re.sub(r"((?:in|to): )(\d+)(?=[\] ])", lambda match: f"{match[1]}{int(match[2]) - number:+d}", text)
