"""What is written down of the tool is what the tool is. Usage: tool_documents_test.py SOURCE_FOLDER QVPCTL"""
import json
import pathlib
import re
import subprocess
import sys


def lines(tool, *arguments):
    return subprocess.run([tool, *arguments], capture_output=True, check=True).stdout.decode().splitlines()


def main(top, tool):
    schema = json.loads((top / "docs/qvpctl.schema.json").read_text())
    commands = set(lines(tool, "__complete", "words", ""))
    keys = [row.split()[0] for row in lines(tool, "help", "settings") if re.match(r"  \S", row)]
    faults = []
    if (top / "docs/qvpctl.1").read_text().splitlines() != lines(tool, "help", "manual"):
        faults.append("docs/qvpctl.1 is not what 'qvpctl help manual' prints")
    for name in sorted(commands | {page.stem.removeprefix("qvpctl-") for page in (top / "docs/man").glob("qvpctl-*.1")}):
        page = top / f"docs/man/qvpctl-{name}.1"
        if name not in commands or not page.exists() or page.read_text().splitlines() != lines(tool, "help", "manual", name):
            faults.append(f"docs/man/{page.name} is not what 'qvpctl help manual {name}' prints")
    if schema["$defs"]["key"]["enum"] != keys:
        faults.append("the settings of docs/qvpctl.schema.json are not those of 'qvpctl help settings'")
    faults += [f"docs/qvpctl.schema.json lacks {name}" for name in sorted(commands - schema["$defs"].keys())]
    examples = re.findall(r"^\$ qvpctl (\S+).* --json", (top / "docs/reference/exit-status-and-json.md").read_text(), re.M)
    faults += [f"docs/reference/exit-status-and-json.md has no example of {name}" for name in sorted(commands - set(examples))]
    print(f"{len(commands)} commands, {len(keys)} settings")
    print("\n".join(faults))
    return 1 if faults or not commands or not keys else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), sys.argv[2]))
