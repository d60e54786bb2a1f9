"""Many cameras from a policy (TOML) with a table beside it, through qvpctl alone.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/policy_test.py
"""
from pathlib import Path

import pytest
from cameras import JSON, MARK, PLAIN, get, living, mac
from fleet_files import MORE, by_mac, cut_off, results, run, write

POLICY = """
table = "site.csv"

[defaults]
time.zone = "Asia/Tokyo"
password = { file = "new" }
[defaults.ipv4]
address = "198.18.50.20-29/15"

[[group]]
product = "VC-2*"
[group.set]
upnp = false
time.zone = "Europe/Berlin"
ipv4.address = "198.18.50.10-11/15"

[[group]]
name = "Yard *"
set.wifi.ssid = "Yard"
"""


def product(camera):
    return f"VC-{camera.number % 3 + 1}000"


def policy(folder, text=POLICY):
    file = folder / "site.toml"
    file.write_text(text)
    return str(file)


@pytest.fixture
def site(lan, tmp_path):
    """Three cameras of a product each, in that order, and the policy."""
    cameras = sorted((living(camera) for camera in lan.cameras(3)), key=product)
    (tmp_path / "new").write_text(MARK + "\n")
    first, second, third = cameras
    write(tmp_path, "mac,product,name,ipv4.address", (third, "", "Yard 3", ""), (first, product(first), "", "198.18.50.20/15"),
          (second, "", "", ""))
    return cameras, policy(tmp_path)


def test_a_building_from_a_policy(site, tmp_path):
    """The third gets the first address that no row has, and the second time there is nothing to do."""
    (first, second, third), file = site
    planned = run(JSON, "plan", file, "-o", str(tmp_path / "monday"))
    assert "these columns are for people" not in planned.err
    assert [change["key"] for change in by_mac(planned)[0][mac(third)]["changes"]] == [
        "name", "wifi.ssid", "ipv4.address", "time.zone", "password"]
    applied = run(JSON, "apply", str(tmp_path / "monday"))
    assert results(by_mac(applied)[0], (first, second, third)) == ["changed"] * 3
    keys = ("ipv4.address", "time.zone", "upnp", "wifi.ssid")
    assert [[get(camera, key, password=MARK) for key in keys] for camera in (first, second, third)] == [
        ["198.18.50.20/15", "Asia/Tokyo", "on", "Workshop"], ["198.18.50.10/15", "Europe/Berlin", "off", "Workshop"],
        ["198.18.50.21/15", "Asia/Tokyo", "on", "Yard"]]
    again = run(PLAIN, "apply", file)
    assert again.out.endswith("3 cameras: 3 unchanged; nothing had to change\n")
    second.change_store("UPnP", "Enable", b"1")
    drift = run(JSON, "diff", file, "--exit-code", status=7)
    assert drift.records == [{"mac": mac(second), "key": "upnp", "file": "off", "camera": "on"}]
    back = run(JSON, "revert", file + ".journal", password=MARK)
    assert results(by_mac(back)[0], (first, second, third)) == ["changed"] * 3
    assert get(third, "ipv4.address", password=MARK) == f"{third.address}/15"
    texts = [part for result in (planned, applied, again, drift, back) for part in (result.out, result.err)]
    files = [(tmp_path / name).read_text() for name in ("monday", "site.toml.journal")]
    assert MARK not in "".join(texts + files)


def test_a_run_is_bound_to_both_files_and_to_the_groups(site, tmp_path):
    (first, second, third), file = site
    second.change_store("CAMSYSTEM", "CameraName", b"Yard 2")
    run(PLAIN, "plan", file, "-o", str(tmp_path / "monday"))
    cut_off(file, f"{mac(second)}: sent: network services")
    get(second, "name")  # so that nothing of what it was sent is still to come
    second.change_store("CAMSYSTEM", "CameraName", b"Hall 2")
    objection = "the policy gives it something else than when "
    elsewhere = ["--journal", str(tmp_path / "other")]
    for words, command in (("the plan was made", ["apply", str(tmp_path / "monday"), *elsewhere]),
                           ("it was cut off", ["apply", file, "--resume"])):
        records = by_mac(run(JSON, *command, status=2))[0]
        assert results(records, (second, third)) == ["failed", "unchanged"]
        assert records[mac(second)]["reason"] == f"{objection}{words}: its groups have changed"
    third.change_store("CAMSYSTEM", "CameraName", b"Elsewhere")
    table = tmp_path / "site.csv"
    table.write_text(table.read_text().replace("Yard 3", ""))
    for command in (["apply", file, "--resume"], ["apply", str(tmp_path / "monday")]):
        assert "was changed since" in run(PLAIN, *command, status=2).err


def test_faults_of_both_files_are_told_at_once(tmp_path):
    file = policy(tmp_path, '[defaults]\ntime.zome = "x"\npassword = "' + MARK + '"\nipv4.address = "198.18.50.1-2/15"\n'
                  '[[group]]\nname = "*"\nset.wifi.key.env = "MISSING"\n')
    Path(file).write_text('table = "lists/site.csv"\n' + Path(file).read_text())
    (tmp_path / "lists").mkdir()
    table = write(tmp_path / "lists", "mac,wifi.key", ("02:51:56:50:00:01", MARK), ("02:51:56:50:00:02", "file:missing"))
    plain, form = run(PLAIN, "plan", file, status=2), run(JSON, "plan", file, status=2)
    assert form.error["message"] in plain.err and MARK not in plain.err + form.err
    first, *lines = form.error["message"].splitlines()
    assert first == f"nothing is sent: {file} has 5 faults"
    places = [f"{file}:3: column 6: there is", f"{file}:4: column 12: password is a secret", f"{file}:8: column 10: wifi.key: there is no",
              f"{table}:2: column 2: wifi.key is a secret", f"{table}:3: column 2: wifi.key: cannot read {table.removesuffix('site.csv')}missing"]
    assert all(line.strip().startswith(place) for line, place in zip(lines, places, strict=True)), lines
    policy(tmp_path, "[defaults]\npassword = " + MARK + "\n")
    broken = run(PLAIN, "apply", file, status=2)
    assert f"{file}:2: column 12: is no TOML: " in broken.err and MARK not in broken.err


def test_conflicts_are_told_at_the_range(lan, tmp_path):
    first, other = (living(camera) for camera in lan.cameras(2))
    address = other.address
    file = policy(tmp_path, f'[defaults]\nipv4.address = "{address}/15"\n[[group]]\nproduct = "none"\nset.upnp = true\n'
                  f'[[camera]]\nmac = "{mac(first)}"\n')
    result = run(PLAIN, "plan", file, *MORE, status=2)
    assert (f"{file}:2: column 16: ipv4.address {address} is that of camera {mac(other)} (camera {mac(first)})") in result.err
    assert f"{file}:3: no camera is in this group" in result.err


def test_a_range_may_turn_out_too_small(lan, tmp_path):
    cameras = [living(camera) for camera in lan.cameras(2)]
    lists = "".join(f'[[camera]]\nmac = "{mac(camera)}"\n' for camera in cameras)
    file = policy(tmp_path, '[[group]]\nproduct = "VC-*"\nset.ipv4.address = "198.18.50.1/15"\n' + lists)
    for command in ("plan", "diff", "apply"):
        result = run(PLAIN, command, file, status=2)
        assert f"{file}:3: column 20: ipv4.address 198.18.50.1/15 has room for 1 of 2 cameras" in result.err
    assert [camera.board_log() for camera in cameras] == [[], []]
