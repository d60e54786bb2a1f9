"""The inventory of cameras, over a qvpctl that says what a test gives it, and an ssh that tells how it was called."""
import json
import os
import re
import stat

import pytest
from ansible.errors import AnsibleError

HOSTILE = "{{ lookup('pipe','touch MADE') }}"
PROGRAM = """#!/usr/bin/python3
import json, os, sys
place = os.path.dirname(os.path.abspath(__file__))
with open(place + "/calls", "a") as calls:
    calls.write(json.dumps(sys.argv) + "\\n")
if os.path.exists(place + "/errors"):
    sys.stderr.write(open(place + "/errors").read())
    sys.exit(int(open(place + "/status").read()))
sys.stdout.write(open(place + "/cameras").read())
"""


def camera(number, **fields):
    return {"mac": f"02:51:56:50:00:{number:02x}", "address": f"198.18.1.{number}", "name": f"Camera {number}",
            "product": "VC-2000", "firmware": "1.01", "httpPort": 80, "dns": ["198.18.0.2"], "interface": "eth0",
            "answered": True, "problems": [], **fields}


def host(number, site="here"):
    return f"{site}-02-51-56-50-00-{number:02x}"


class Site:
    """A program in the place of qvpctl, or of ssh."""

    def __init__(self, folder, name="qvpctl"):
        self.folder, self.program = folder, folder / name
        folder.mkdir()
        self.program.write_text(PROGRAM)
        self.program.chmod(self.program.stat().st_mode | stat.S_IXUSR)

    def has(self, *cameras):
        (self.folder / "cameras").write_text("".join(json.dumps(one) + "\n" for one in cameras))
        return self

    def fails(self, status, text):
        (self.folder / "status").write_text(str(status))
        (self.folder / "errors").write_text(text)
        return self

    def recovers(self):
        (self.folder / "errors").unlink()

    def calls(self):
        file = self.folder / "calls"
        return [json.loads(line) for line in file.read_text().splitlines()] if file.exists() else []


@pytest.fixture(name="here")
def site_here(tmp_path):
    return Site(tmp_path / "here").has(camera(1), camera(2))


class Found:
    """An inventory as its plugin has made it, in this process."""

    def __init__(self, inventory):
        self.inventory = inventory

    def __getitem__(self, group):
        return [one.name for one in self.inventory.groups[group].get_hosts()]

    def groups(self):
        return set(self.inventory.groups)

    def variables(self, name):
        """Those of the plugin."""
        of_itself = ("inventory_file", "inventory_dir", "inventory_hostname", "inventory_hostname_short", "group_names")
        return {key: value for key, value in self.inventory.get_host(name).get_vars().items() if key not in of_itself}


@pytest.fixture(name="ask")
def asker(ansible, tmp_path, here, monkeypatch):
    """Runs the plugin; its sites are the one of this machine unless others are given."""
    for name in ("ANSIBLE_CONFIG", "ANSIBLE_HOME", "HOME"):
        monkeypatch.setenv(name, ansible.variables[name])
    from ansible.inventory.manager import InventoryManager  # reads the variables
    from ansible.parsing.dataloader import DataLoader
    from ansible.utils.display import Display

    def ask(sites=None, refresh=False, **configuration):
        notes = []
        monkeypatch.setattr(Display, "warning", lambda self, message, formatted=False: notes.append(message))
        file = tmp_path / "sites.qvp.yml"
        sites = sites or {"here": {"qvpctl": str(here.program)}}
        file.write_text(json.dumps({"plugin": "qvp.cameras.qvp", "sites": sites, **configuration}))
        try:
            return Found(InventoryManager(DataLoader(), [str(file)], cache=not refresh)), " ".join(notes)
        except AnsibleError as error:
            raise Refused(" ".join(notes)) from error
    return ask


class Refused(Exception):
    """With what was said before."""


def is_data(value):
    """Marked as one never to be taken for a template."""
    return getattr(value, "__UNSAFE__", False)


def test_cameras_become_hosts(ask, here):
    found, notes = ask()
    assert notes == ""
    assert found["site_here"] == [host(1), host(2)]
    assert found["qvp_sites"] == ["here"]
    assert found.variables("here") == {"ansible_connection": "local", "qvp_executable": str(here.program)}
    known = found.variables(host(2))
    assert known["qvp_site"] == "here" and known["qvp_http_port"] == 80 and known["qvp_answered"] is True
    assert {known[name] for name in ("qvp_mac", "qvp_address", "qvp_product", "qvp_firmware")} == {
        "02:51:56:50:00:02", "198.18.1.2", "VC-2000", "1.01"}
    assert here.calls() == [[str(here.program), "discover", "--json", "--wait=2.0"]]


def test_what_cameras_say_is_never_a_template(ask, here, ansible, tmp_path):
    """Neither in the inventory, nor in what is made of it, nor in a playbook that uses it."""
    made = tmp_path / "MADE"
    hostile = HOSTILE.replace("MADE", str(made))
    names = [hostile, "two\nlines: {{ 1 + 1 }}", "Hof \u00fc\u4e2d\u202e\x1b[31m", "-e", "{% raw %}"]
    here.has(*(camera(number, name=name, product=name) for number, name in enumerate(names, 1)))
    options = {"keyed_groups": [{"key": "qvp_product", "prefix": "of"}], "groups": {"two": "'lines' in qvp_name"},
               "compose": {"copy": "qvp_name", "trimmed": "qvp_name | trim", "longer": "qvp_name ~ ''",
                                                                "held": "{'in': [qvp_name ~ '']}"}, "strict": True}
    found, _ = ask(**options)
    for number, name in enumerate(names, 1):
        known = found.variables(host(number))
        assert [known[one] for one in ("qvp_name", "copy", "trimmed", "longer")] == [name] * 4
        assert all(is_data(known[one]) for one in ("qvp_name", "copy", "trimmed", "longer"))
        assert is_data(known["held"]["in"][0])
    assert all(re.fullmatch(r"[A-Za-z0-9_]+", group) for group in found.groups())
    assert found["two"] == [host(2)]
    said = ansible.run("ansible", "-i", tmp_path / "sites.qvp.yml", "qvp_cameras", "-c", "local", "-m",
                       "ansible.builtin.debug", "-a", "msg={{ qvp_name }}{{ trimmed }}{{ longer }}")
    assert "lookup('pipe'" in said and "{{ 1 + 1 }}" in said
    assert not made.exists()


@pytest.mark.parametrize("pattern, left", [
    ("02:51:56:50:00:01", [2, 3]), ("02:51:56:*", []), ("198.18.1.3", [1, 2]), ("198.18.1.2/31", [1]),
    ("camera [12]", [3]), ("Nobody", [1, 2, 3])])
def test_exclude(ask, here, pattern, left):
    here.has(camera(1), camera(2), camera(3))
    found, _ = ask(exclude=[pattern])
    assert found["site_here"] == [host(number) for number in left]


def test_a_name_is_no_pattern(ask, here):
    here.has(camera(1, name="*"), camera(2))
    found, _ = ask(exclude=["Camera 2"])
    assert found["site_here"] == [host(1)]


def test_groups_are_constructed(ask, here):
    here.has(camera(1, product="VC 3000"), camera(2, firmware="1.20"))
    found, _ = ask(keyed_groups=[{"key": "qvp_product", "prefix": "product"}], compose={"label": "qvp_site ~ ' ' ~ qvp_name"},
                   groups={"old": "qvp_firmware is version('1.10', '<')"})
    assert found["product_VC_3000"] == found["old"] == [host(1)]
    assert found["product_VC_2000"] == [host(2)]
    assert found.variables(host(1))["label"] == "here Camera 1"


def test_strict_is_strict(ask, here):
    ask(compose={"none": "no_such_variable"})
    with pytest.raises(Refused, match="no_such_variable"):
        ask(compose={"none": "no_such_variable"}, strict=True)


def test_cache(ask, here, tmp_path):
    """A site that did not answer is asked again, and so is one that is asked in another way."""
    other = Site(tmp_path / "other").fails(3, '{"error":{"code":"this-machine","message":"no such interface"}}\n')
    sites = {"here": {"qvpctl": str(here.program)}, "other": {"qvpctl": str(other.program)}}
    cache = {"cache": True, "cache_plugin": "ansible.builtin.jsonfile", "cache_connection": str(tmp_path / "cache")}
    _, notes = ask(sites=sites, **cache)
    assert "site other cannot tell its cameras: no such interface" in notes
    other.has(camera(7)).recovers()
    here.has(camera(5, name=HOSTILE))
    found, notes = ask(sites=sites, **cache)
    assert (found["site_here"], found["site_other"], notes) == ([host(1), host(2)], [host(7, "other")], "")
    assert (len(here.calls()), len(other.calls())) == (1, 2)
    sites["here"]["interface"] = "eth7"
    for _ in range(2):
        found, _ = ask(sites=sites, **cache)
        assert found["site_here"] == [host(5)]
        name = found.variables(host(5))["qvp_name"]
        assert name == HOSTILE and is_data(name)
    assert (len(here.calls()), len(other.calls())) == (2, 2)
    assert here.calls()[1][-1] == "--interface=eth7"
    ask(sites=sites, refresh=True, **cache)
    assert (len(here.calls()), len(other.calls())) == (3, 3)


def test_a_site_is_asked_over_ssh(ask, tmp_path, monkeypatch):
    ssh = Site(tmp_path / "bin", "ssh").has(camera(1))
    monkeypatch.setenv("PATH", f"{ssh.folder}:{os.environ['PATH']}")
    site = {"host": "-oProxyCommand=touch", "user": "installer", "port": 2222, "private_key_file": "/keys/one",
            "ssh_args": ["-o", "ProxyJump=gate"], "interface": "eth1; reboot", "wait": 31, "vars": {"rack": "A 4"}}
    found, _ = ask(sites={"far": site})
    assert ssh.calls() == [[str(ssh.program), "-o", "ProxyJump=gate", "-T", "-o", "BatchMode=yes", "-o", "ConnectTimeout=20",
                            "-p", "2222", "-i", "/keys/one", "-l", "installer", "--", "-oProxyCommand=touch",
                            "qvpctl discover --json --wait=31 '--interface=eth1; reboot'"]]
    assert found.variables("far") == {
        "ansible_host": "-oProxyCommand=touch", "ansible_user": "installer", "ansible_port": 2222, "rack": "A 4",
        "ansible_ssh_private_key_file": "/keys/one", "ansible_ssh_common_args": "-o ProxyJump=gate",
        "qvp_executable": "qvpctl"}
    assert found["site_far"] == [host(1, "far")]


def test_a_site_that_fails_does_not_stop_the_others(ask, here, tmp_path):
    down = Site(tmp_path / "down").fails(255, "ssh: connect to host down port 22: No route to host\n")
    gone = {"qvpctl": str(tmp_path / "nowhere")}
    empty = Site(tmp_path / "empty").fails(1, '{"error":{"code":"not-found","message":"no camera answered on eth0"}}\n')
    sites = {"down": {"qvpctl": str(down.program)}, "gone": gone, "empty": {"qvpctl": str(empty.program)},
             "here": {"qvpctl": str(here.program)}}
    found, notes = ask(sites=sites)
    assert "site down cannot tell its cameras: ssh: connect to host down port 22: No route to host" in notes
    assert "site gone cannot tell its cameras" in notes and "cannot be run: No such file" in notes
    assert "site empty" not in notes
    assert found["site_here"] == [host(1), host(2)]
    assert sorted(found["qvp_sites"]) == ["down", "empty", "gone", "here"]
    with pytest.raises(Refused, match="site down: ssh: connect"):
        ask(sites=sites, strict_sites=True)


def test_what_is_no_camera_is_left_out(ask, here):
    (here.folder / "cameras").write_text('garbage\n[]\n{"mac":"../../etc"}\n{"mac":"02:51:56:50:00:01\\n"}\n'
                                         '{"mac":"02:51:56:50:00:02"}\n')
    found, _ = ask()
    assert found["site_here"] == [host(2)]


def test_a_table_says_what_cameras_become(ask, here, tmp_path):
    (tmp_path / "here.csv").write_bytes(
        "\ufeffmac;name;ipv4.address;upnp\r\n02-51-56-50-00-02;\"Hof; \\u{fc}\";198.18.7.2/15;\r\n"
        "02:51:56:50:00:03;'=1+1\\\\;;off\r\n".encode())
    found, notes = ask(sites={"here": {"qvpctl": str(here.program), "table": "here.csv"}})
    assert "site here: its table has cameras that were not heard: 02:51:56:50:00:03" in notes
    settings = [found.variables(host(number)).get("qvp_settings") for number in (1, 2, 3)]
    assert settings == [
        None, {"name": "Hof; \u00fc", "ipv4.address": "198.18.7.2/15"}, {"name": "=1+1\\", "upnp": "off"}]
    assert found.variables(host(3))["qvp_answered"] is False


@pytest.mark.parametrize("table, words", [
    ("name\nx\n", "line 1: no column is named mac"),
    ("mac,name\nnone,x\n", "line 2: mac must be of the form"),
    ("mac,name\n02:51:56:50:00:01,a,b\n", "line 2: a cell has no heading"),
    ("mac,name\n02:51:56:50:00:01,a\n02:51:56:50:00:01,b\n", "line 3: mac 02:51:56:50:00:01 stands in line 2 already"),
    ("mac,ipv4.address\n02:51:56:50:00:01,10.0.0.1/8\n02:51:56:50:00:02,10.0.0.1/16\n", "line 3: ipv4.address 10.0.0.1")])
def test_a_table_with_faults_is_refused(ask, here, tmp_path, table, words):
    (tmp_path / "here.csv").write_text(table)
    with pytest.raises(Refused, match=words):
        ask(sites={"here": {"qvpctl": str(here.program), "table": "here.csv"}})


@pytest.mark.parametrize("sites, words", [
    ({"a b": {}}, "the name of a site"), ({"all": {}}, "the name of a site"), ({"one": {"hots": "x"}}, "no option hots"),
    ({"one": {"port": "x"}}, "port has a value of a wrong type")])
def test_a_wrong_site_is_refused(ask, sites, words):
    with pytest.raises(Refused, match=words):
        ask(sites=sites)
