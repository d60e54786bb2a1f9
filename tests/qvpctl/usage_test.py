"""What the tool says of itself, and of a command line that makes no sense: nothing is sent."""
import json
import os
import pathlib
import re
import subprocess

import pytest
from output_schema import check_output

TOOL = os.environ.get("QVPCTL", str(pathlib.Path(__file__).parents[2] / "build/release/qvpctl"))
PATIENCE = 60
COMMANDS = ["", "discover", "watch", "show", "get", "set", "passwd", "verify", "plan", "apply", "revert",
            "diff", "export", "scan", "open", "reboot", "factory-reset", "commit", "supported", "alert", "raw", "web", "completion", "help"]


@pytest.mark.parametrize("arguments", [
    [], ["frobnicate"], ["--frobnicate"], ["discover", "extra"], ["discover", "--wait", "0"],
    ["discover", "--wait", "nan"], ["discover", "-i"], ["discover", "-i", ""], ["watch", "--count", "0"],
    ["watch", "--count", "-1"], ["watch", "--retries", "1"], ["watch", "--wait", "1"], ["watch", "--metrics", ""],
    ["watch", "--frobnicate"], ["discover", "--expect", "0"], ["get"], ["set", "Gate"],
    ["discover", "--retries", "-1"], ["discover", "--family", "other"], ["help", "frobnicate"],
    ["help", "manual", "frobnicate"], ["passwd", "a", "b"], ["plan"], ["apply"], ["diff"], ["export"], ["revert"],
    ["apply", "site.csv", "--parallel", "65"], ["web", "--port", "0"], ["web", "--port", "65536"], ["web", "x"],
], ids=" ".join)
def test_wrong_usage_ends_with_2(arguments):
    result = subprocess.run([TOOL, *arguments], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stdout) == (2, b"")
    assert re.fullmatch(rb"qvpctl: .+\nTry 'qvpctl .*--help'\.\n", result.stderr)


@pytest.mark.parametrize("command", COMMANDS)
def test_help_leads_with_examples(command):
    result = subprocess.run([TOOL, *command.split(), "--help"], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stderr) == (0, b"")
    text = result.stdout.decode()
    assert 0 < text.index(f"Examples:\n  qvpctl {command}") < text.index("Usage:") < text.index("Options:")
    assert "Exit status:" in text


def test_wrong_usage_in_json():
    result = subprocess.run([TOOL, "discover", "--json", "--wait", "0"], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stdout) == (2, b"")
    assert json.loads(result.stderr)["error"]["code"] == "usage"


@pytest.mark.parametrize("arguments", [["passwd", "Gate", "MARKED"], ["set", "Gate", "MARKED"], ["set", "Gate", "--password=MARKED"],
                                       ["verify", "Gate", "--password", "MARKED"], ["passwd", "Gate", "--new", "MARKED"],
                                       ["set", "Gate", "wifi.key=MARKED"]], ids=" ".join)
@pytest.mark.parametrize("form", [[], ["--json"]], ids=["plain", "json"])
def test_a_secret_on_the_command_line_is_refused_and_not_shown(arguments, form):
    result = subprocess.run([TOOL, *arguments, *form], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr and b"MARKED" not in result.stderr


@pytest.mark.parametrize("topic, content", [
    ("exit-status", "4  the camera refused user name or password"), ("settings", "ipv4.address"),
    ("time-zones", "122  Asia/Tokyo                       Tokyo, Osaka")])
def test_help_topics(topic, content):
    result = subprocess.run([TOOL, "help", topic], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stderr) == (0, b"")
    assert content in result.stdout.decode()


@pytest.mark.parametrize("arguments", [["help", "exit-status"], ["completion", "bash"]])
def test_a_text_in_json(arguments):
    text = subprocess.run([TOOL, *arguments], capture_output=True, timeout=PATIENCE, check=True).stdout.decode()
    form = subprocess.run([TOOL, *arguments, "--json"], capture_output=True, timeout=PATIENCE, check=True).stdout.decode()
    assert check_output(arguments[0], form, "")[0] == [{"text": text}]


def test_version():
    result = subprocess.run([TOOL, "--version"], capture_output=True, timeout=PATIENCE, check=False)
    assert re.fullmatch(r"qvpctl \d+\.\d+\.\d+\n", result.stdout.decode())


@pytest.mark.parametrize("command", COMMANDS[1:])
def test_each_command_has_a_page_of_the_manual(command):
    result = subprocess.run([TOOL, "help", "manual", command], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stderr) == (0, b"")
    page = result.stdout.decode()
    typed = command.replace("-", "\\-")
    assert f".TH QVPCTL\\-{typed.upper()} 1\n" in page and f"\nqvpctl\\-{typed} \\- " in page
    sections = re.findall(r"^\.SH (.*)", page, re.M)
    assert sections[:4] == ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS"]
    assert ("SETTINGS" in sections) == (command in ("get", "set"))
    assert ("SECRETS" in sections) == (command in ("set", "passwd", "revert"))


def test_only_the_manual_has_pages_of_commands():
    result = subprocess.run([TOOL, "help", "settings", "get"], capture_output=True, timeout=PATIENCE, check=False)
    assert (result.returncode, result.stdout) == (2, b"")
    assert result.stderr == b"qvpctl: only the manual has a page for each command\n"


def test_the_pages_of_the_manual_are_completed():
    result = subprocess.run([TOOL, "__complete", "words", "help", "manual", "re"], capture_output=True, timeout=PATIENCE, check=True)
    assert result.stdout == b"revert\nreboot\n"
