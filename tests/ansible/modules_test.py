"""The modules, run as Ansible runs them, over a qvpctl that says what a test gives it and tells how it was called."""
import csv
import io
import json
import subprocess
import sys

import pytest

MAC, MARK = "02:51:56:50:00:01", "MARKED-secret"
PROGRAM = """#!/usr/bin/python3
import json, os, sys
place = os.path.dirname(os.path.abspath(__file__))
secrets = [word.split("=", 1)[1] for word in sys.argv if word.startswith("--password-file=")]
table = open(sys.argv[2]).read() if sys.argv[1] in ("plan", "apply") else ""
for cell in table.replace(",", "\\n").splitlines():
    if cell.startswith("file:"):
        secrets.append(cell[5:])
json.dump({"line": sys.argv, "table": table, "secrets": [open(path).read() for path in secrets],
           "environment": dict(os.environ), "session": os.getsid(0) == os.getpid()}, open(place + "/call", "w"))
answer = json.load(open(place + "/answer"))
print(answer["output"], end="")
print(answer["notes"], end="", file=sys.stderr)
sys.exit(answer["status"])
"""
SPY = """
import sys
from ansible.module_utils.basic import AnsibleModule
AnsibleModule.log = lambda self, message, log_args=None: print("LOGGED", message, log_args, file=sys.stderr)
from ansible_collections.qvp.cameras.plugins.modules import {name} as module
module.main()
"""


class Result:
    def __init__(self, done, call):
        self.value, self.log = json.loads(done.stdout), done.stderr
        self.call = json.loads(call.read_text()) if call.exists() else None
        self.said = done.stdout + done.stderr


def record(result, changes=(), **more):
    return {"mac": MAC, "address": "198.18.1.1", "name": "Gate", "result": result, "reason": None,
            "changes": [{"key": key, "before": before, "after": after} for key, before, after in changes], **more}


@pytest.fixture(name="run")
def runner(ansible, tmp_path):
    program = tmp_path / "qvpctl"
    program.write_text(PROGRAM)
    program.chmod(0o755)

    def run(name, *records, status=0, error=None, notes="", output=None, **arguments):
        lines = "".join(json.dumps(one) + "\n" for one in records) if output is None else output
        said = notes + (json.dumps({"error": error}) + "\n" if error else "")
        (tmp_path / "answer").write_text(json.dumps({"output": lines, "notes": said, "status": status}))
        given = {"mac": MAC, "executable": str(program), "_ansible_remote_tmp": str(tmp_path / "tmp"), **arguments}
        done = subprocess.run(
            [sys.executable, "-c", SPY.format(name=name)], input=json.dumps({"ANSIBLE_MODULE_ARGS": given}), text=True,
            capture_output=True, check=False, env={**ansible.variables, "PYTHONPATH": str(ansible.folder / "collections"),
                                                   "PYTHONDONTWRITEBYTECODE": "1"})
        assert done.stdout, done.stderr
        assert [folder for folder in (tmp_path / "tmp").rglob("*") if folder.is_file()] == []
        return Result(done, tmp_path / "call")
    return run


def table_of(result):
    heading, row = csv.reader(io.StringIO(result.call["table"], newline=""))
    return dict(zip(heading, row))


def test_settings_become_a_table_of_one_camera(run):
    result = run("qvp_camera", record("changed", [("name", "a", "b"), ("upnp", "on", "off")]), {"summary": {}},
                 mac="02-51-56-50-00-01", wait=0.5, interface="eth1", username="root", elsewhere=True,
                 settings={"name": 'Hof "\u00fc"\\x41\nzwei, drei', "ddns.host": "'=1", "upnp": False, "http-port": 8080,
                           "ddns.user": None, "time.ntp": ""})
    assert table_of(result) == {"mac": MAC, "name": 'Hof "\u00fc"\\\\x41\nzwei, drei', "ddns.host": "\\u{27}=1",
                                "upnp": "off", "http-port": "8080"}
    line = result.call["line"]
    assert line[1] == "apply" and line[3:] == ["--elsewhere", "--json", "--user=root", "--interface=eth1", "--wait=0.5"]
    assert result.call["session"], "it could ask for a password at the terminal"
    value = result.value
    assert (value["changed"], value["verified"], value["name"], value["address"]) == (True, True, "Gate", "198.18.1.1")
    assert (value["before"], value["after"]) == ({"name": "a", "upnp": "on"}, {"name": "b", "upnp": "off"})
    assert value["diff"] == {"before": "name: a\nupnp: on\n", "after": "name: b\nupnp: off\n"}


def test_nothing_to_change(run):
    value = run("qvp_camera", record("unchanged"), {"summary": {}}, settings={"name": "Gate"}).value
    assert (value["changed"], value["verified"], value["diff"]) == (False, True, {"before": "", "after": ""})


def test_check_mode_plans(run):
    effects = [{"settings": "name", "effect": "restarts", "seconds": 10}]
    result = run("qvp_camera", record("to-change", [("name", "a", "b")], effects=effects), {"summary": {}},
                 settings={"name": "b"}, _ansible_check_mode=True)
    assert result.call["line"][1] == "plan"
    assert (result.value["changed"], result.value["verified"], result.value["effects"]) == (True, False, effects)


def test_secrets_are_read_from_memory_alone(run):
    result = run("qvp_camera", record("changed", [("password", None, None)]), {"summary": {}}, password="old " + MARK,
                 secrets={"password": MARK, "wifi.key": MARK + " two"}, _ansible_verbosity=4)
    assert result.call["secrets"] == ["old " + MARK + "\n", MARK + "\n", MARK + " two\n"]
    assert MARK not in json.dumps([result.call[name] for name in ("line", "table", "environment")]) + result.said
    assert result.value["diff"]["after"] == "password: (a secret, not shown)\n"


def test_a_secret_in_the_wrong_place_is_hidden(run):
    error = {"code": "bad-value", "message": "nothing is sent: /x/camera.csv has 1 fault\n  /x/camera.csv:2: column 2: "
                                             "wifi.key is a secret and must not stand in the file"}
    result = run("qvp_camera", status=2, error=error, settings={"wifi.key": MARK})
    assert result.value["failed"] and "LOGGED" in result.log
    assert result.value["msg"] == f"{MAC}: wifi.key is a secret and must not stand in the file (nothing was sent)"
    assert MARK not in result.said


@pytest.mark.parametrize("secret", ["", "two\nlines", "carriage\rreturn"])
def test_a_secret_is_one_line(run, secret):
    result = run("qvp_camera", secrets={"password": secret})
    assert "password has to be one line" in result.value["msg"] and result.call is None


@pytest.mark.parametrize("key", ["address", "product", "mac"])
def test_what_a_camera_tells_is_no_setting(run, key):
    result = run("qvp_camera", settings={key: "198.18.7.7"})
    assert f"{key} is no setting" in result.value["msg"] and result.call is None


@pytest.mark.parametrize("status, code", [
    (1, "not-found"), (3, "this-machine"), (4, "credentials-refused"), (5, "refused"), (6, "unverified")])
def test_what_a_camera_failed_with(run, status, code):
    failed = {**record("failed", [("name", "a", "b")]), "reason": "the camera's reason", "name": None, "address": None}
    value = run("qvp_camera", failed, {"summary": {}}, status=status, settings={"name": "b"}).value
    assert value["failed"] and value["code"] == code and value["msg"].startswith(f"{MAC}: the camera's reason (")


@pytest.mark.parametrize("name", ["qvp_camera", "qvp_facts", "qvp_scan"])
def test_errors_of_every_module(run, name, tmp_path):
    error = {"code": "credentials-refused", "message": "the camera refused"}
    value = run(name, status=4, error=error, notes='{"note":"a note"}\n').value
    assert value["failed"] and value["code"] == "credentials-refused" and "the camera refused" in value["msg"]
    assert "said no JSON: terminate called" in run(name, status=134, notes="terminate called").value["msg"]
    assert "is not on this host" in run(name, executable=str(tmp_path / "none")).value["msg"]
    assert "mac is the camera's MAC" in run(name, mac="Front door").value["msg"]
    assert "mutually exclusive" in run(name, password=MARK, password_file="/x").value["msg"]


def test_facts(run, tmp_path):
    password = tmp_path / "password"
    password.write_text("admin")
    shown = {"mac": MAC, "name": "{{ 1 }}", "settings": {"name": "{{ 1 }}"}}
    result = run("qvp_facts", shown, password_file=str(password))
    assert result.value["ansible_facts"] == {"qvp": shown} and result.value["changed"] is False
    assert result.call["line"][1:3] == ["show", MAC] and f"--password-file={password}" in result.call["line"]


def test_scan(run):
    networks = [{"ssid": "Workshop", "signal": 81, "channel": 6, "security": "wpa2-aes", "adHoc": False}]
    result = run("qvp_scan", *networks, notes='{"note":"the camera scans"}\n', timeout=30)
    assert (result.value["networks"], result.value["notes"]) == (networks, ["the camera scans"])
    assert result.call["line"][1:4] == ["scan", MAC, "--timeout=30"]
    assert run("qvp_scan", *networks, _ansible_check_mode=True).call["line"][3] == "--last"
    assert run("qvp_scan", *networks, last=True).call["line"][3] == "--last"
