"""What is claimed can be shown: each claim has its command, the same in both documents, and there is such a test.

Usage: evidence_test.py SOURCE_FOLDER BUILD_FOLDER
"""
import re
import subprocess
import sys
from pathlib import Path

TREE, BUILD = Path(sys.argv[1]), Path(sys.argv[2])
HAS_ALL = "QVP_TEST_ALL:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text()


def rows(page, heading):
    """The first two cells of each row of the table under that heading."""
    part = (TREE / page).read_text().split(f"| {heading} |", 1)[1].split("\n\n", 1)[0]
    return [tuple(cell.strip() for cell in line.strip("|").split("|")[:2]) for line in part.splitlines()[2:]]


def names_of_tests():
    listed = subprocess.run(["ctest", "--test-dir", BUILD, "-N"], capture_output=True, text=True, check=True).stdout
    return re.findall(r"Test +#\d+: (.*)", listed)


def faults_of(command, names):
    words = [word for word in command.split() if "=" not in word]
    if not (TREE / words[0]).is_file():
        yield f"{command}: there is no {words[0]}"
    elif "-R" in words and (HAS_ALL or "--all" not in words):
        pattern = words[words.index("-R") + 1]
        if not any(re.search(pattern, name) for name in names):
            yield f"{command}: there is no such test"


claimed, shown = rows("CONTRIBUTING.md", "Claim"), rows("docs/evidence.md", "Claim")
faults = [f"not in both documents, with one command: {claim}" for claim, _ in set(claimed) ^ set(shown)]
commands = [command for _, cell in shown for command in re.findall(r"`([^`]+)`", cell)]
if len(commands) < 10:
    faults.append(f"only {len(commands)} commands")
names = names_of_tests()
for command in commands:
    faults += faults_of(command, names)
print("\n".join(faults))
sys.exit(bool(faults))
