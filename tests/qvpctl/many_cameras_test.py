"""Telling cameras apart, through qvpctl alone: two with one address, fifty, and two hundred found again and again.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/many_cameras_test.py
"""
import os
from concurrent.futures import ThreadPoolExecutor

import pytest
from cameras import JSON, PLAIN, discover, living, mac, qvpctl, run

both_forms = pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
TWO_HUNDRED, TIMES = 200, int(os.environ.get("QVP_SEARCHES", "20"))
FIFTY, MUTE, OTHER = 50, 17, 33  # how many cameras; the index of the mute one, and of the one with another password


@both_forms
def test_two_cameras_with_one_address(lan, form):
    first = living(lan.camera())
    second = living(lan.camera("--set", f"NETWORK_V4/IP={first.address}"))
    known = discover(form, "--expect", "2")
    assert [entry[0] for entry in known.values()] == [first.address] * 2
    assert [entry[2] for entry in known.values()] == [["duplicate-address"]] * 2
    run(form, "get", first.address, "name", status=2)
    run(form, "set", mac(second), f"ipv4.address={second.address}/15", "name=Mended")
    assert discover(form, "--expect", "2") == {
        mac(first): (first.address, f"Camera {first.number}", []), mac(second): (second.address, "Mended", [])}
    assert run(form, "get", second.address, "name").status == 0


def test_fifty_cameras(lan):
    """One of them mute, one with another password: each is told precisely, and the others are set up."""
    cameras = lan.cameras(FIFTY, {MUTE: ["--born", "mute"], OTHER: ["--set", "USER_ADMIN/Password1=another"]})
    for form in (PLAIN, JSON):
        known = discover(form, "--expect", str(FIFTY - 1))
        assert sorted(known) == sorted(mac(camera) for camera in cameras if camera is not cameras[MUTE])
    for word, form in [("Hall", PLAIN), ("Yard", JSON)]:
        set_up = lambda camera: qvpctl("set", mac(camera), f"name={word} {camera.number}", *form,  # noqa: E731,B023
                                       *(["--wait", "2"] if camera is cameras[MUTE] else []))  # noqa: B023
        with ThreadPoolExecutor(4) as pool:
            results = list(pool.map(set_up, cameras))
        statuses = {index: result.status for index, result in enumerate(results) if result.status != 0}
        assert statuses == {MUTE: 1, OTHER: 4}
        assert mac(cameras[MUTE]) in results[MUTE].err and "answered" in results[MUTE].err
        assert "refused the user name or the password" in results[OTHER].err
        if form:
            assert [results[index].error["code"] for index in (MUTE, OTHER)] == ["not-found", "credentials-refused"]
        names = {key: entry[1] for key, entry in discover(form, "--expect", str(FIFTY - 1)).items()}
        wanted = {mac(camera): f"{word} {camera.number}" for camera in cameras if camera is not cameras[MUTE]}
        assert names == {**wanted, mac(cameras[OTHER]): f"Camera {cameras[OTHER].number}"}


def test_two_hundred_cameras_again_and_again(lan):
    """All answer a broadcast at once, and none of them is lost in the tool's own receive buffer."""
    cameras = {mac(camera) for camera in lan.cameras(TWO_HUNDRED, {})}
    for _ in range(TIMES):
        done = qvpctl("discover", "--csv", "--expect", str(TWO_HUNDRED))
        assert done.status == 0, done.err
        assert cameras == {line.split(",")[0] for line in done.out.splitlines()[1:]}
