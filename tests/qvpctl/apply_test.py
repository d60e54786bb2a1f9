"""Many cameras changed from one file, through qvpctl alone.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/apply_test.py
"""
import json
import os
import subprocess

import pytest
from cameras import JSON, MARK, PLAIN, TOOL, columns, get, living, mac, reporting
from fleet_files import (MORE, PATIENCE, by_mac, datagrams_kept, keep_answers_back, let_answers_through, read_until,
                         refusals_counted, results, run, start, write)


def test_cameras_of_one_address_become_what_the_file_says(lan, tmp_path):
    """One has the password of somebody else; the others get a new one, and the second run finds nothing to do."""
    common = "198.18.30.1"
    cameras = [living(camera) for camera in lan.cameras(4, {
        index: ["--set", f"NETWORK_V4/IP={common}", "--set", f"USER_ADMIN/Password1={password}"]
        for index, password in enumerate(["admin", "admin", "another", "admin"])})]
    foreign = cameras[2]
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,ipv4.address,time.zone,password", *(
        (camera, f"Hall {camera.number}", f"198.18.31.{camera.number}/15", "Asia/Tokyo", "file:new") for camera in cameras))
    first = run(JSON, "apply", site, status=4)
    records, summary = by_mac(first)
    assert summary == {"cameras": 4, "unchanged": 0, "changed": 3, "failed": 1, "unreachable": 0, "unverified": 0}
    assert records[mac(foreign)]["result"] == "failed"
    assert "refused the user name or the password" in records[mac(foreign)]["reason"]
    for camera in cameras:
        if camera is foreign:
            assert camera.store()["NETWORK_V4"]["IP"] == common.encode()
            continue
        record = records[mac(camera)]
        assert (record["result"], record["name"]) == ("changed", f"Hall {camera.number}")
        assert record["address"] == f"198.18.31.{camera.number}"
        assert {"key": "password", "before": None, "after": None} in record["changes"]
        assert get(camera, "time.zone", password=MARK) == "Asia/Tokyo"
        camera.forget_commands()
    with refusals_counted() as refusals:
        for password in ("admin", MARK):  # the old one is refused, and the file has the new one
            plain = run(PLAIN, "apply", site, password=password, status=4)
            assert plain.out.endswith("\n4 cameras: 3 unchanged, 1 failed\n")
            assert [row["RESULT"] for row in columns(plain.out.rsplit("\n", 2)[0])] == ["unchanged"] * 2 + ["failed", "unchanged"]
            assert MARK not in plain.out + plain.err + first.out + first.err
    assert refusals[mac(foreign)] == 3, "each password is tried once a run"
    assert [camera.board_log() for camera in cameras if camera is not foreign] == [[], [], []]


def test_a_refused_password_is_not_tried_again(lan, tmp_path):
    """Neither by what reads the cameras nor by what changes them: the second has the new password already."""
    first, second = [living(camera) for camera in lan.cameras(2, {1: ["--set", f"USER_ADMIN/Password1={MARK}"]})]
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,password", *((camera, "Hall", "file:new") for camera in (first, second)))
    with refusals_counted() as refusals:
        run(JSON, "apply", site)
    assert refusals == {mac(second): 1}
    with refusals_counted() as refusals:
        run(JSON, "revert", site + ".journal", "--other-password", f"@{tmp_path / 'new'}", password="somebody's")
    assert refusals == {mac(first): 1, mac(second): 1}
    assert (get(first, "name", password=MARK), get(second, "name", password=MARK)) == (
        f"Camera {first.number}", f"Camera {second.number}")


def test_who_waits_for_one_camera_asks_no_other(lan, tmp_path):
    """Everybody is asked in the roll call, as often as there are tries, and nobody but that camera from then on."""
    camera, other = [living(camera) for camera in lan.cameras(2)]
    with datagrams_kept() as datagrams:
        run(JSON, "apply", write(tmp_path, "mac,name", (camera, "Hall")), *MORE)
    asked = [data[6:12].hex(":") for data in datagrams if data[:2] == b"\xfd\xfd"]
    assert asked[:12] == ["ff:ff:ff:ff:ff:ff"] * 12 and set(asked[12:]) == {mac(camera)}
    everybody = {data[2:4] for data in datagrams if data[6:12] == b"\xff" * 6}
    assert {data[2:4] for data in datagrams if data[6:12] == other.mac} == everybody


def test_nothing_to_change_is_said(camera, tmp_path):
    site = write(tmp_path, "mac,name", (camera, f"Camera {camera.number}"))
    result = run(PLAIN, "apply", site, *MORE)
    assert result.out.endswith("1 camera: 1 unchanged; nothing had to change\n")
    assert (result.err, camera.board_log()) == ("", [])


def test_the_column_address_sets_nothing_and_that_is_said(camera, tmp_path):
    site = write(tmp_path, "mac,name,address", (camera, f"Camera {camera.number}", "198.18.7.77"))
    for command in ("apply", "diff"):
        result = run(PLAIN, command, site)
        assert "its column address says 198.18.7.77: that sets nothing, ipv4.address does" in result.err
    assert camera.board_log() == []


def test_whoever_reads_the_records_may_go(lan, tmp_path):
    cameras = [living(camera) for camera in lan.cameras(3)]
    site = write(tmp_path, "mac,name", *((camera, f"Hall {camera.number}") for camera in cameras))
    reader, writer = os.pipe()
    os.close(reader)
    result = subprocess.run([TOOL, "apply", site, "--json", *PATIENCE], stdout=writer, stderr=subprocess.PIPE, text=True,
                            check=False, timeout=120, env={**os.environ, "QVPCTL_PASSWORD": "admin"})
    os.close(writer)
    assert result.returncode == 3, result
    assert [get(camera, "name") for camera in cameras] == [f"Hall {camera.number}" for camera in cameras]


def test_the_first_camera_is_the_one_that_shows_what_is_wrong(lan, tmp_path):
    """It takes the change and does not come back with it, so the others are left alone."""
    cameras = [living(camera) for camera in lan.cameras(3)]
    stores = [camera.store() for camera in cameras[1:]]
    cameras[0].replace_script("/etc/init.d/httpd-0", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,password,name", *((camera, "file:new", "Hall") for camera in cameras))
    records, summary = by_mac(run(JSON, "apply", site, status=6))
    assert results(records, cameras) == ["unverified", "failed", "failed"]
    assert records[mac(cameras[1])]["reason"] == f"not tried: the first camera, {mac(cameras[0])}, was not changed"
    assert (summary["unverified"], summary["failed"]) == (1, 2)
    assert [camera.store() for camera in cameras[1:]] == stores


def test_each_step_of_each_camera_is_a_line(lan, tmp_path):
    cameras = [living(camera) for camera in lan.cameras(2)]
    site = write(tmp_path, "mac,upnp,name", *((camera, "off", "Hall") for camera in cameras))
    result = run(PLAIN, "apply", site)
    for camera in cameras:
        lines = [line.split(": ", 2)[2] for line in result.err.splitlines() if line.startswith(f"qvpctl: {mac(camera)}: ")]
        assert lines == ["sent: network services", "sent: name, port and address",
                         "away: it restarts its web server and its network", "back", "verified"]
    lines = result.err.splitlines()
    assert all(mac(cameras[1]) not in line for line in lines[:5]), "the second waits for the first"
    assert result.out.endswith("2 cameras: 2 changed\n")


def test_what_the_network_loses_is_tried_again_and_a_refusal_is_not(lan, tmp_path):
    """While the first camera is away, one falls silent for a time, and another one gets the password of somebody else."""
    first, silent, foreign = cameras = [living(camera) for camera in lan.cameras(3)]
    gate = first.gate("/etc/init.d/ipv4")
    process = start("apply", write(tmp_path, "mac,name", *((camera, "Hall") for camera in cameras)), "--json")
    gate.wait()
    keep_answers_back(silent)
    foreign.change_store("USER_ADMIN", "Password1", b"another")
    with refusals_counted() as refusals:
        gate.open()
        read_until(process, f"{mac(silent)}: once more: ")
        let_answers_through(silent)
        output, _ = process.communicate(timeout=120)
    records = {record["mac"]: record for record in map(json.loads, output.splitlines()[:-1])}
    assert (process.returncode, results(records, cameras)) == (4, ["changed", "changed", "failed"])
    assert refusals == {mac(foreign): 1}
    assert get(silent, "name") == "Hall"


def test_a_camera_that_comes_up_late_is_asked_once_more(lan, tmp_path):
    """It is listened for as nobody knows it, and reports; by then it answers."""
    camera = living(lan.camera())
    keep_answers_back(camera)
    process = start("apply", write(tmp_path, "mac,name", (camera, "Late")))
    read_until(process, "listening for presence reports")
    let_answers_through(camera)
    with reporting(camera):
        output, _ = process.communicate(timeout=120)
    assert output.endswith("1 camera: 1 changed\n")


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_conflicts_stop_the_whole(lan, tmp_path, form):
    first, second = [living(camera) for camera in lan.cameras(2)]
    site = write(tmp_path, "mac,ipv4.address,upnp", (first, f"{second.address}/15", "off"), (second, "", "off"))
    assert "is that of camera" in run(form, "apply", site, status=2).err
    assert [camera.board_log() for camera in (first, second)] == [[], []]
    assert first.store()["UPnP"]["Enable"] == b"1"
