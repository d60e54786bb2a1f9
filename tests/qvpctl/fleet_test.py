"""Fifty cameras out of their boxes, with one common address: from one file to a building, and back.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/fleet_test.py
"""
from pathlib import Path

from cameras import JSON, MARK, PLAIN, discover, get, living, mac, reporting
from fleet_files import by_mac, cut_off, keep_answers_back, results, run, write

FIFTY, MUTE, FOREIGN = 50, 17, 33  # how many; whose answers get lost, and who has another password, by their index
COMMON = ["--set", "NETWORK_V4/IP=198.18.30.1"]
AT_ONCE = ["--parallel", "16"]


def wanted(camera):
    return f"198.18.40.{camera.number}"


def test_fifty_cameras_from_one_file(lan, tmp_path):
    """Killed twice on the way and gone on with; then there is nothing to change, and then it is as it was."""
    cameras = lan.cameras(FIFTY, {**{index: COMMON for index in range(FIFTY)},
                                  FOREIGN: [*COMMON, "--set", "USER_ADMIN/Password1=another"]})
    mute, foreign = cameras[MUTE], cameras[FOREIGN]
    healthy = [living(camera) for camera in cameras if camera not in (mute, foreign)]
    stores = [camera.store() for camera in cameras]
    keep_answers_back(mute)
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,ipv4.address,time.zone,password", *(
        (camera, f"Hall {camera.number}", f"{wanted(camera)}/15", "Asia/Tokyo", "file:new") for camera in cameras))
    journal = Path(site + ".journal")
    with reporting(mute):
        said = cut_off(site, f"{mac(healthy[10])}: verified", *AT_ONCE)
        said += cut_off(site, ": verified", "--resume", *AT_ONCE)  # the first of those that are left
        resumed = run(JSON, "apply", site, "--resume", *AT_ONCE, status=4)
        again = run(PLAIN, "apply", site, *AT_ONCE, status=4)
    records, summary = by_mac(resumed)
    assert set(results(records, healthy)) <= {"changed", "unchanged"}
    assert results(records, [mute, foreign]) == ["unreachable", "failed"]
    assert "something on the way keeps its answers back" in records[mac(mute)]["reason"]
    assert (summary["cameras"], summary["failed"], summary["unreachable"]) == (FIFTY, 1, 1)
    known = discover(JSON, "--expect", str(FIFTY - 1))
    assert {mac(camera): known[mac(camera)][:2] for camera in healthy} == {
        mac(camera): (wanted(camera), f"Hall {camera.number}") for camera in healthy}
    assert all(get(camera, "time.zone", password=MARK) == "Asia/Tokyo" for camera in healthy[::7])
    assert again.out.endswith("\n50 cameras: 48 unchanged, 1 failed, 1 unreachable\n")
    back = run(JSON, "revert", str(journal), *AT_ONCE, password=MARK)
    assert by_mac(back)[1]["changed"] == FIFTY - 2
    keys = [("NETWORK_V4", "IP"), ("CAMSYSTEM", "CameraName"), ("DATETIME", "TimeZone")]
    for camera, before in zip(cameras, stores):
        assert [camera.store()[section][key] for section, key in keys] == [before[section][key] for section, key in keys]
    texts = [journal.read_text(), said, resumed.out, resumed.err, again.out, again.err, back.out, back.err]
    assert MARK not in "".join(texts)


def test_an_address_that_was_wrong_is_put_back(lan, tmp_path):
    """It sends the camera where its answers do not reach this machine; its reports do."""
    camera = living(lan.camera())
    leased = living(lan.camera("--set", "NETWORK_V4/BootProto=1"))
    site = write(tmp_path, "mac,ipv4.address,ipv4.gateway,upnp", (leased, "198.18.33.7/15", "198.18.0.1", ""),
                 (camera, "10.9.8.7/24", "10.9.8.1", "off"))
    with reporting(camera):
        records, _ = by_mac(run(JSON, "apply", site, "--elsewhere"))
        assert results(records, [leased, camera]) == ["changed", "changed"]
        assert camera.store()["NETWORK_V4"]["IP"] == b"10.9.8.7"
        records, _ = by_mac(run(JSON, "revert", site + ".journal"))
    assert results(records, [leased, camera]) == ["changed", "changed"]
    assert (get(camera, "ipv4.address"), get(camera, "upnp")) == (f"{camera.address}/15", "on")
    assert (get(camera, "ipv4.gateway"), get(camera, "ipv4.dns")) == ("198.18.0.1", "198.18.0.2,198.18.0.3")
    assert get(leased, "ipv4.method") == "dhcp"


def test_a_camera_of_another_network_is_brought_here(lan, tmp_path):
    """And one that is nowhere keeps nobody from that."""
    absent = "02:51:56:50:ff:fe"
    camera = living(lan.camera("--born", "other-subnet"))
    site = write(tmp_path, "mac,name,ipv4.address,ipv4.gateway,upnp", (absent, "Nobody", "", "", ""),
                 (camera, "Gate", "198.18.34.1/15", "198.18.0.1", "off"))
    result = run(JSON, "apply", site, status=1)
    records, _ = by_mac(result)
    assert (records[absent]["result"], records[mac(camera)]["result"]) == ("unreachable", "changed")
    assert "2 cameras have not answered; listening" in result.err
    assert discover(JSON, "--expect", "1")[mac(camera)] == ("198.18.34.1", "Gate", [])
    assert get(camera, "upnp") == "off"
    result = run(JSON, "revert", site + ".journal")
    assert "ipv4.gateway is not known from before, and becomes none with the address" in result.err
    assert by_mac(result)[0][mac(camera)]["result"] == "changed"
    assert discover(JSON, "--wait", "90", "--expect", "1")[mac(camera)][0] == "192.168.0.20"


def test_a_camera_that_is_not_there_shifts_no_address(lan, tmp_path):
    """Whether it takes one is not known from a policy that goes by the product; its row may say it."""
    first, last = (living(camera) for camera in lan.cameras(2))
    absent = "02:51:56:50:ff:fe"
    site = tmp_path / "site.toml"
    site.write_text('table = "site.csv"\n[[group]]\nproduct = "VC-*"\nset.ipv4.address = "198.18.60.1-9/15"\n')
    write(tmp_path, "mac,product", (first, ""), (absent, ""), (last, ""))
    records, _ = by_mac(run(JSON, "apply", str(site), status=2))
    assert [records[key]["result"] for key in (mac(first), absent, mac(last))] == ["changed", "unreachable", "failed"]
    assert records[mac(last)]["reason"] == (f"which address of 198.18.60.1-9/15 it gets depends on camera {absent}, whose "
                                            "groups are not known: give that one a product in its row")
    write(tmp_path, "mac,product", (first, ""), (absent, "VC-1000"), (last, ""))
    records, _ = by_mac(run(JSON, "apply", str(site), status=1))
    assert [records[mac(camera)]["result"] for camera in (first, last)] == ["unchanged", "changed"]
    assert (get(first, "ipv4.address"), get(last, "ipv4.address")) == ("198.18.60.1/15", "198.18.60.3/15")
