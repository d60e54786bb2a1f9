"""docs/protocol.md's tables of commands and of results are the code's. Usage: protocol_commands_test.py SOURCE_FOLDER"""
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from describe_protocol import Layouts  # noqa: E402
from handler_code import Commands  # noqa: E402

TABLE = re.compile(r"^\| 0x([0-9A-F]{4}) \|" + r" ([^|]+) \|" * 7 + "$", re.M)
RESULT = re.compile(r"^\| (\d+) \| [SE][^|]+ \| [^|]+ \|$", re.M)


def request_fault(layouts, protected, struct, length):
    """What is wrong with the request of a row; its layout begins as every request of its kind does."""
    fields = [field[0] for field in layouts.structs["PacketHeader" if struct == "header" else struct]]
    if (fields[:2] == ["PacketHeader", "Credentials"]) != protected:
        return "is protected, and its request is not, or the other way round"
    size = layouts.size("PacketHeader" if struct == "header" else struct)
    return "" if length.split()[-1] == str(size) else f"a request of {length} bytes; {struct} has {size}"


def faults_of(row, commands, layouts):
    number, name, protected, asks, asked, answers, answered, landap = row
    codes = {code: constant for constant, code in commands.number.items()}
    opcode = codes.get(int(number, 16))
    if opcode not in commands.served["Primary"]:
        return ["is not served"]
    protection, reply, _ = commands.row[commands.served["Primary"][opcode]]
    checks = {
        f"the code calls it {commands.name[opcode]}": name.lower() == commands.name[opcode],
        f"the code says {protection}": (protected == "yes") == (protection == "Protected"),
        f"the code answers with {reply}": answers == f"`{reply}`",
        f"a reply of {layouts.size(reply)} bytes": answered == str(layouts.size(reply)),
        "the landap family": (landap == "-") == (opcode not in commands.served["Landap"]),
    }
    return [why for why, holds in checks.items() if not holds] + [
        why for why in [request_fault(layouts, protected == "yes", asks.strip("`"), asked)] if why]


def main(top):
    commands, layouts = Commands(top), Layouts(top / "protocol")
    document = (top / "docs/protocol.md").read_text()
    rows = TABLE.findall(document)
    faults = [f"0x{row[0]}: {why}" for row in rows for why in faults_of(row, commands, layouts)]
    served = sorted(commands.number[opcode] for opcode in commands.served["Primary"])
    if served != [int(row[0], 16) for row in rows]:
        faults.append(f"the daemon serves {[hex(number) for number in served]}")
    codes = re.findall(r"^constexpr uint32_t k\w+ += (\d+);", (top / "protocol/result_codes.h").read_text(), re.M)
    if RESULT.findall(document) != [code for code in codes if code != "0"]:
        faults.append(f"the result codes are {codes}")
    print(f"{len(rows)} commands, {len(codes)} results")
    print("\n".join(faults))
    return 1 if faults or not rows or len(codes) < 2 else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
