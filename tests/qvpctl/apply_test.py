"""Many cameras changed from one file, through qvpctl alone.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/apply_test.py
"""
import pytest
from cameras import JSON, MARK, PLAIN, columns, get, living, mac
from fleet_files import by_mac, results, run, write


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
    asked = foreign.trace().count("user_verification")
    for password in ("admin", MARK):  # the old one is refused, and the file has the new one
        plain = run(PLAIN, "apply", site, password=password, status=4)
        assert plain.out.endswith("\n4 cameras: 3 unchanged, 1 failed\n")
        assert [row["RESULT"] for row in columns(plain.out.rsplit("\n", 2)[0])] == ["unchanged"] * 2 + ["failed", "unchanged"]
        assert MARK not in plain.out + plain.err + first.out + first.err
    assert foreign.trace().count("user_verification") == asked + 3, "each password is tried once a run"
    assert [camera.board_log() for camera in cameras if camera is not foreign] == [[], [], []]


def test_nothing_to_change_is_said(camera, tmp_path):
    site = write(tmp_path, "mac,name", (camera, f"Camera {camera.number}"))
    result = run(PLAIN, "apply", site)
    assert result.out.endswith("1 camera: 1 unchanged; nothing had to change\n")
    assert (result.err, camera.board_log()) == ("", [])


def test_the_first_camera_is_the_one_that_shows_what_is_wrong(lan, tmp_path):
    """It takes the change and does not come back with it, so the others are left alone."""
    cameras = [living(camera) for camera in lan.cameras(3)]
    cameras[0].replace_script("/etc/init.d/ipv4", "#!/bin/sh\n")
    stores = [camera.store() for camera in cameras[1:]]
    cameras[0].replace_script("/etc/init.d/ntpc.sh", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    site = write(tmp_path, "mac,time.ntp,name", *((camera, "ntp.example.com", "Hall") for camera in cameras))
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


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_conflicts_stop_the_whole(lan, tmp_path, form):
    first, second = [living(camera) for camera in lan.cameras(2)]
    site = write(tmp_path, "mac,ipv4.address,upnp", (first, f"{second.address}/15", "off"), (second, "", "off"))
    assert "is that of camera" in run(form, "apply", site, status=2).err
    assert [camera.board_log() for camera in (first, second)] == [[], []]
    assert first.store()["UPnP"]["Enable"] == b"1"
