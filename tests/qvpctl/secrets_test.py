"""A marked secret walks every path of the commands for many cameras, and shows on none.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/secrets_test.py
"""
from base64 import b64encode

import pytest
from cameras import JSON, PLAIN, living, mac
from fleet_files import by_mac, cut_off, results, run, tools_watched, write

OLD, NEW, KEY, WRONG = "MARKED-old", "MARKED-new", "MARKED-key", "MARKED-wrong"
FORMS = [PLAIN, JSON]


class Paths:
    """Runs the tool and keeps all that it wrote."""

    def __init__(self, folder):
        self.folder, self.written = folder, []

    def run(self, *arguments, **options):
        result = run(*arguments, KEY=KEY, **options)
        self.written += [result.out, result.err]
        return result

    def leaks(self):
        texts = [*self.written, *(file.read_text() for file in self.folder.iterdir() if file.is_file())]
        marks = ["MARKED", *(b64encode(secret.encode()).decode().rstrip("=")[:-1] for secret in (OLD, NEW, KEY, WRONG))]
        return [(mark, text) for text in texts for mark in marks if mark in text]


@pytest.fixture
def paths(tmp_path):
    secrets = tmp_path / "secrets"
    secrets.mkdir()
    (secrets / "new").write_text(NEW + "\n")
    (secrets / "long").write_text("MARKED" * 20 + "\n")
    return Paths(tmp_path)


def table(paths, cameras, name="site.csv"):
    return write(paths.folder, "mac,name,password,wifi.key,ddns.password", *(
        (camera, f"Hall {camera.number}", "file:secrets/new", "env:KEY", "file:secrets/new") for camera in cameras), name=name)


def test_no_path_shows_a_secret(lan, paths):
    """The third camera has a password of its own, so that it refuses what is tried."""
    passwords = [OLD, OLD, "another"]
    cameras = [living(camera) for camera in lan.cameras(3, {
        index: ["--set", f"USER_ADMIN/Password1={password}"] for index, password in enumerate(passwords)})]
    site = table(paths, cameras)
    saved = str(paths.folder / "plan")
    with tools_watched() as seen:
        for form in FORMS:
            paths.run(form, "plan", site, "-o", saved, password=OLD, status=4)
            paths.run(form, "plan", site, password=WRONG, status=4)
            paths.run(form, "diff", site, password=OLD, status=4)
            paths.run(form, "export", str(paths.folder / f"export{len(form)}"), password=OLD, status=4)
        paths.written.append(cut_off(site, f"{mac(cameras[0])}: sent: password", QVPCTL_PASSWORD=OLD, KEY=KEY))
        resumed = paths.run(JSON, "apply", site, "--resume", password=OLD, status=4)
        paths.run(PLAIN, "apply", saved, password=OLD, status=4)
        for form in FORMS:
            paths.run(form, "revert", site + ".journal", password=NEW)
    assert results(by_mac(resumed)[0], cameras)[1:] == ["changed", "failed"]
    assert cameras[1].store()["USER_ADMIN"]["Password1"].decode() in (NEW, b64encode(NEW.encode()).decode())
    assert seen.keys() == {"plan", "diff", "export", "apply", "revert"}
    assert {"--resume", saved, "-o"} <= set().union(*seen.values())
    assert not [text for texts in seen.values() for text in texts if "MARKED" in text]
    assert paths.leaks() == []


def test_no_failure_shows_a_secret(lan, paths):
    camera = living(lan.camera("--set", f"USER_ADMIN/Password1={OLD}"))
    plain_text = write(paths.folder / "secrets", "mac,wifi.key,password", (camera, KEY, "MARKED"))
    too_long = write(paths.folder, "mac,wifi.key,password", (camera, "file:secrets/long", "file:secrets/long"), name="long.csv")
    conflict = write(paths.folder, "mac,ipv4.address,password", (camera, "198.18.0.1/15", "file:secrets/new"), name="conflict.csv")
    stuck = write(paths.folder, "mac,upnp,password,name", (camera, "off", "file:secrets/new", "Hall"), name="stuck.csv")
    for form in FORMS:
        for command in ("plan", "apply", "diff"):
            paths.run(form, command, plain_text, password=OLD, status=2)
            paths.run(form, command, too_long, password=OLD, status=2)
        paths.run(form, "apply", conflict, password=OLD, status=2)
        paths.run(form, "apply", stuck, password=WRONG, status=4)
        paths.run(form, "revert", plain_text, password=OLD, status=2)
    camera.replace_script("/etc/init.d/httpd-0", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    paths.run(JSON, "apply", stuck, password=OLD, status=6)
    paths.run(PLAIN, "revert", stuck + ".journal", "--other-password", WRONG, password=OLD, status=2)
    assert paths.leaks() == []
