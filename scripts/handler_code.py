"""What the daemon's sources say of its commands, for pages and tests."""
import re

OPCODE = re.compile(r"constexpr uint16_t (k\w+) += 0x([0-9A-F]{4});")
NAME = re.compile(r'\{opcode::(k\w+), +"([^"]+)" *\}')
ROW = re.compile(r"\{opcode::(k\w+), +(\w+) *\}")
TABLE = re.compile(r"static constexpr Row k(\w+)Rows\[\] = \{\n(.*?)\n\};", re.S)
SERVE = re.compile(r"^int (\w+)\([^)]*\) \{\n    return (?:serve|checkSiteSurvey)\(k\w+, (?:(k\w+), )?", re.M)
COMMAND = re.compile(r'^const Command (k\w+)\{\s*"\w+",\s*Addressing::\w+,\s*Protection::(\w+),\s*sizeof\((\w+)\),\s*(\w+)\};', re.M)


class Commands:
    """By the constant of its opcode: number, name, and by family the row that serves it."""

    def __init__(self, top):
        sources = {path: path.read_text() for path in sorted((top / "src").rglob("*.cpp"))}
        text = "\n".join(sources.values())
        self.number = {name: int(digits, 16) for name, digits in OPCODE.findall((top / "protocol/opcodes.h").read_text())}
        self.name = dict(NAME.findall((top / "client/commands/supported.cpp").read_text()))
        self.row = {name: (protection, reply, work) for name, protection, reply, work in COMMAND.findall(text)}
        handlers = dict(SERVE.findall(text))
        self.served = {}
        for family, rows in TABLE.findall((top / "src/service/dispatch.cpp").read_text()):
            self.served[family] = {opcode: handlers[handler] for opcode, handler in ROW.findall(rows)}
            self.served[family]["kSiteSurvey"] = "kCheckSiteSurveyRequest"
