"""What a file of cameras would change, through qvpctl alone: nothing is sent that changes a camera.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/plan_test.py
"""
import csv
import os
import subprocess
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress

import pytest
from cameras import JSON, MARK, PLAIN, columns, living, mac
from fleet_files import MORE, by_mac, run, write


@pytest.fixture
def pair(lan):
    cameras = [living(camera) for camera in lan.cameras(2)]
    stores = [camera.store() for camera in cameras]
    yield cameras
    assert [camera.store() for camera in cameras] == stores
    assert [camera.board_log() for camera in cameras] == [[], []]


def test_what_discover_prints_is_a_file_without_changes(pair, tmp_path):
    table = run(PLAIN, "discover", "--wait", "20", "--expect", "2", "--csv", "--columns",
                "mac,address,name,brand,product,model,firmware,hardware,httpPort,netmask,gateway,dns,dhcp,localTime,timezone,"
                "daylightSaving,url,interface,answered,problems").out
    (tmp_path / "site.csv").write_text(table)
    for form in (PLAIN, JSON):
        result = run(form, "plan", str(tmp_path / "site.csv"), "--exit-code")
        assert "set nothing: address, brand, product" in result.err
    cameras, summary = by_mac(result)
    assert {record["result"] for record in cameras.values()} == {"unchanged"}
    assert (summary["cameras"], summary["unchanged"], summary["seconds"]) == (2, 2, 0)


def test_changes_and_what_they_take(pair, tmp_path):
    first, second = pair
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,ipv4.address,upnp,password", (first, "Gate", "198.18.40.1/15", "off", "file:new"),
                 (second, f"Camera {second.number}", "", "", ""))
    result = run(JSON, "plan", site)
    cameras, summary = by_mac(result)
    one, other = cameras[mac(first)], cameras[mac(second)]
    assert (one["result"], one["line"], one["address"], one["reason"]) == ("to-change", 2, first.address, None)
    assert one["changes"] == [
        {"key": "name", "before": f"Camera {first.number}", "after": "Gate"},
        {"key": "ipv4.address", "before": f"{first.address}/15", "after": "198.18.40.1/15"},
        {"key": "upnp", "before": "on", "after": "off"}, {"key": "password", "before": None, "after": None}]
    assert [(effect["settings"], effect["seconds"]) for effect in one["effects"]] == [
        ("network services", 0), ("password", 3), ("name, port and address", 10)]
    assert one["seconds"] == 13
    assert (other["result"], other["changes"], other["effects"]) == ("unchanged", [], [])
    assert (summary["toChange"], summary["unchanged"], summary["seconds"]) == (1, 1, 13)
    plain = run(PLAIN, "plan", site)
    changes, cameras = [columns(table) for table in plain.out.rsplit("\n", 2)[0].split("\n\n")]
    assert {"CAMERA": mac(first), "KEY": "password", "FROM": "(secret)", "TO": "(secret)"} in changes
    assert {"CAMERA": mac(first), "KEY": "name", "FROM": f"Camera {first.number}", "TO": "Gate"} in changes
    assert "restarts its web server and its network" in cameras[0]["WHY"]
    assert plain.out.endswith("2 cameras: 1 to change, 1 as the file has it, 0 unreachable, 0 failed; "
                              "about 13 s with 8 at a time\n")
    assert MARK not in plain.out + plain.err + result.out + result.err


def test_the_exit_status(pair, tmp_path):
    first, second = pair
    changed = write(tmp_path, "mac,name", (first, "Gate"))
    run(PLAIN, "plan", changed, status=0)
    for form in (PLAIN, JSON):
        run(form, "plan", changed, "--exit-code", status=7)
        run(form, "diff", changed, "--exit-code", status=7)
    run(PLAIN, "diff", changed, status=0)
    refused = run(JSON, "plan", changed, "--exit-code", password="wrong", status=4)
    assert by_mac(refused)[0][mac(first)]["result"] == "failed"


def test_drift(pair, tmp_path):
    first, second = pair
    site = write(tmp_path, "mac,name,wifi.ssid", (first, f"Camera {first.number}", "Office"), (second, "", "Workshop"))
    assert run(JSON, "diff", site).records == [
        {"mac": mac(first), "key": "wifi.ssid", "file": "Office", "camera": "Workshop"}]
    assert columns(run(PLAIN, "diff", site).out) == [
        {"CAMERA": mac(first), "KEY": "wifi.ssid", "WANTED": "Office", "PRESENT": "Workshop"}]
    assert run(PLAIN, "diff", write(tmp_path, "mac,wifi.ssid", (second, "Workshop")), "--exit-code").out == ""


def faults(site, *more, **options):
    """The places and the words of what is wrong, the same in both forms."""
    with ThreadPoolExecutor(2) as pool:
        plain, form = pool.map(lambda form: run(form, "plan", site, *more, status=2, **options), (PLAIN, JSON))
    assert form.error["code"] == "bad-value"
    assert form.error["message"] in plain.err
    first, *lines = form.error["message"].splitlines()
    assert first.startswith("nothing is sent: ") and f" {len(lines)} fault" in first
    return [line.strip().removeprefix(site) for line in lines]


def test_faults_of_the_file_are_told_all_at_once(tmp_path):
    site = write(tmp_path, "mac,nmae,ipv4.address,wifi.key", ("02:00:5e:10:00:01", "", "1.2.3.4", MARK),
                 ("02:00:5e:10:00:01", "", "1.2.3.4/24", ""), ("", "", "9.2.3.4/24", ""))
    found = faults(site)
    assert [fault.split(" ")[0] for fault in found] == [":1:", ":2:", ":2:", ":3:", ":4:"]
    assert "column 2: there is no setting nmae; did you mean name?" in found[0]
    assert "column 3: ipv4.address needs the length" in found[1]
    assert "column 4: wifi.key is a secret and must not stand in the file" in found[2]
    assert "stands in line 2 already" in found[3] and "mac is missing" in found[4]
    assert MARK not in "".join(found)


def test_conflicts_are_found_before_anything_is_sent(lan, pair, tmp_path):
    first, second = pair
    third = lan.camera()
    site = write(tmp_path, "mac,ipv4.address,ipv4.gateway", (first, f"{third.address}/15", ""), (second, "10.0.0.1/24", "none"))
    found = faults(site, *MORE)
    assert found[0] == f":2: column 2: ipv4.address {third.address} is that of camera {mac(third)}"
    assert "column 2: ipv4.address 10.0.0.1 is outside the network of lan0" in found[1]
    swapped = faults(write(tmp_path, "mac,ipv4.address", (first, f"{second.address}/15"), (second, f"{first.address}/15")))
    assert all("first give one of them a free address, with a file of its own" in fault for fault in swapped)
    leaving = faults(write(tmp_path, "mac,ipv4.address", (first, f"{second.address}/15"), (second, "198.18.41.9/15")))
    assert leaving[0].endswith("until that is moved: do that first, with a file of its own")
    run(PLAIN, "plan", write(tmp_path, "mac,ipv4.address,ipv4.gateway", (second, "10.0.0.1/24", "none")), "--elsewhere")
    found = faults(write(tmp_path, "mac,ipv4.address", (first, "198.18.0.1/15")))
    assert [fault.split("198.18.0.1 ")[1] for fault in found] == ["is that of its gateway", "is that of this machine"]
    assert "is not in the network" in faults(write(tmp_path, "mac,ipv4.gateway", (first, "10.9.9.9")))[0]
    assert "has 64 bytes; at most 63 fit" in faults(write(tmp_path, "mac,name", (first, "x" * 64)))[0]


def test_an_address_that_some_other_host_has(lan, pair, tmp_path):
    first, _ = pair
    host = lan.camera("--no-daemon")
    found = faults(write(tmp_path, "mac,ipv4.address", (first, f"{host.address}/15")))
    assert found == [f":2: column 2: ipv4.address {host.address} is in use: {mac(host)} answers there"]


def test_export_is_a_file_without_changes(lan, tmp_path):
    named = living(lan.camera("--set", 'CAMSYSTEM/CameraName=-a\\b;"c', "--set", "DDNS/PWD=" + MARK))
    leased = living(lan.camera("--set", "NETWORK_V4/BootProto=1"))
    site = tmp_path / "site.csv"
    result = run(JSON, "export", str(site), *MORE)
    assert (result.records[0]["cameras"], result.records[0]["file"]) == (2, str(site))
    rows = {row["mac"]: row for row in csv.DictReader(site.read_text().splitlines())}
    assert rows[mac(named)]["ipv4.address"] == f"{named.address}/15"
    assert (rows[mac(leased)]["ipv4.method"], rows[mac(leased)]["ipv4.address"]) == ("dhcp", "")
    assert not {"password", "wifi.key", "ddns.password", "time.now"} & rows[mac(named)].keys()
    assert MARK not in site.read_text()
    assert run(PLAIN, "diff", str(site), "--exit-code").out == ""
    run(PLAIN, "export", str(site), status=3)
    run(PLAIN, "export", str(site), "--replace")
    refused = run(PLAIN, "export", str(site), "--replace", *MORE, password="wrong", status=4)
    assert f"{mac(named)}: only what it tells everybody is in the file" in refused.err
    rows = {row["mac"]: row for row in csv.DictReader(site.read_text().splitlines())}
    assert (rows[mac(named)]["http-port"], rows[mac(named)]["wifi.ssid"]) == ("80", "")


def test_a_full_disk_leaves_what_was_there(lan, tmp_path):
    camera = living(lan.camera())
    site = write(tmp_path, "mac,name", (camera, "Hall"))
    disk = tmp_path / "disk"
    disk.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16k", "disk", disk], check=True)
    try:
        run(PLAIN, "plan", site, "-o", str(disk / "plan"))
        run(PLAIN, "export", str(disk / "site.csv"))
        (disk / "site.csv").chmod(0o640)
        subprocess.run(["ln", "-s", "site.csv", disk / "link"], check=True)
        before = {file.name: file.read_bytes() for file in disk.iterdir()}
        with suppress(OSError), open(disk / "rest", "wb", buffering=0) as rest:
            while rest.write(bytes(1024)):
                pass
        for command in (["plan", site, "-o", str(disk / "plan")], ["export", str(disk / "site.csv"), "--replace"]):
            assert "No space left on device" in run(PLAIN, *command, status=3).err
        (disk / "rest").unlink()
        assert {file.name: file.read_bytes() for file in disk.iterdir()} == before

        camera.change_store("CAMSYSTEM", "CameraName", b"Elsewhere")
        run(PLAIN, "export", str(disk / "link"), "--replace")
        assert (disk / "link").is_symlink()
        assert "Elsewhere" in (disk / "site.csv").read_text()
        assert (disk / "site.csv").stat().st_mode & 0o777 == 0o640
    finally:
        subprocess.run(["umount", disk], check=True)


def test_only_a_file_is_replaced(lan, tmp_path):
    site = write(tmp_path, "mac,name", (living(lan.camera()), "Hall"))
    os.mkfifo(tmp_path / "pipe")
    for command in (["plan", site, "-o", str(tmp_path / "pipe")], ["export", str(tmp_path / "pipe"), "--replace"]):
        assert f"cannot write {tmp_path / 'pipe'}: it is no regular file" in run(PLAIN, *command, status=3).err
    assert (tmp_path / "pipe").is_fifo()


def test_cameras_of_one_address_are_told_apart(lan, tmp_path):
    first = living(lan.camera())
    second = living(lan.camera("--set", f"NETWORK_V4/IP={first.address}"))
    site = write(tmp_path, "mac,wifi.ssid,ipv4.address", (first, "One", ""), (second, "Two", "198.18.41.2/15"))
    cameras, _ = by_mac(run(JSON, "plan", site))
    assert [cameras[mac(camera)]["changes"][0]["after"] for camera in (first, second)] == ["One", "Two"]


def test_a_secret_of_the_environment_is_read_once_for_all(pair, tmp_path):
    first, second = pair
    site = write(tmp_path, "mac,wifi.key", (first, "env:KEY"), (second, "env:KEY"))
    result = run(JSON, "plan", site, KEY=MARK)
    assert {record["result"] for record in by_mac(result)[0].values()} == {"to-change"}
    assert MARK not in result.out + result.err
    assert "there is no environment variable KEY" in faults(site)[0]


def test_a_file_that_is_not_there():
    assert "cannot read /nowhere/site.csv: No such file" in run(PLAIN, "plan", "/nowhere/site.csv", status=3).err


def test_how_many_at_a_time():
    for count in ("0", "65", "x"):
        run(PLAIN, "plan", "site.csv", "--parallel", count, status=2)
