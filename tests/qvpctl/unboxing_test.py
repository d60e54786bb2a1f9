"""A camera out of its box, through qvpctl alone. Most of the time goes by waiting for its presence reports.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/unboxing_test.py
"""
import cameras
import pytest
from cameras import JSON, PLAIN, assert_fails, discover, living, mac, reporting, run, value
from support.waiting import wait_until


@pytest.fixture(autouse=True)
def no_more_patience_than_by_itself(monkeypatch):
    """For answers that cannot come."""
    monkeypatch.setattr(cameras, "LONGER", [])


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_unboxing(lan, form):
    """A camera of another subnet is heard of by its own report, and set up by its MAC alone."""
    camera = living(lan.camera("--born", "other-subnet"))
    known = discover(form, "--wait", "90", "--expect", "1")
    assert known == {mac(camera): ("192.168.0.20", f"Camera {camera.number}", ["other-subnet"])}
    run(form, "set", mac(camera), "name=Front door", "ipv4.address=198.18.77.7/15", "ipv4.gateway=198.18.0.1",
        "upnp=off", "wifi.ssid=Warehouse")
    assert discover(form, "--expect", "1") == {mac(camera): ("198.18.77.7", "Front door", [])}
    assert value(form, camera, "ipv4.gateway") == "198.18.0.1"
    assert (value(form, camera, "upnp"), value(form, camera, "wifi.ssid")) == ("off", "Warehouse")
    run(form, "verify", "198.18.77.7")


def test_what_can_only_be_set_once_the_camera_answers(lan):
    camera = living(lan.camera("--born", "other-subnet"))
    store = camera.store()
    with reporting(camera):
        assert_fails(1, "set", mac(camera), "upnp=off", words="set its ipv4.address as well")
        assert_fails(1, "set", mac(camera), "name=Gate", words="set its ipv4.address as well")
        assert_fails(2, "set", mac(camera), "upnp=off", "ipv4.address=198.18.77.7/15", "--no-wait", words="not with --no-wait")
    assert camera.store() == store


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_unboxing_without_waiting(lan, form):
    camera = living(lan.camera("--born", "other-subnet"))
    with reporting(camera):
        run(form, "set", mac(camera), "name=Front door", "ipv4.address=198.18.77.7/15", "--no-wait")
    wait_until(lambda: camera.store()["CAMSYSTEM"]["CameraName"] == b"Front door", "the name")


def test_a_camera_nearby_whose_answers_are_lost_is_left_alone(lan):
    camera = living(lan.camera())
    store = camera.store()
    camera.run("ip", "neighbour", "replace", "198.18.0.1", "lladdr", "02:00:00:00:00:99", "nud", "permanent", "dev", "eth0")
    with reporting(camera):
        assert_fails(1, "set", mac(camera), "name=Gate", "ipv4.address=198.18.77.8/15", "--wait", "1",
                     words="something on the way keeps its answers back")
    assert camera.store() == store


def test_what_is_not_given_is_told(lan):
    camera = living(lan.camera("--born", "other-subnet"))
    with reporting(camera):
        result = run(PLAIN, "set", mac(camera), "ipv4.address=198.18.77.9/15", "ipv4.gateway=198.18.0.1")
    assert "is set anew: http-port (becomes 80), ipv4.dns (none)" in result.err
    network = camera.store()["NETWORK_V4"]
    assert (network["Gateway"], network["DNS0"]) == (b"198.18.0.1", b"0.0.0.0")


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_a_move_out_of_reach_is_seen_by_the_report(lan, form):
    camera = living(lan.camera())
    with reporting(camera):
        result = run(form, "set", mac(camera), "ipv4.address=10.1.2.3/24", "ipv4.gateway=10.1.2.1", "name=Far")
    assert "seen by its report" in result.err
    assert camera.store()["NETWORK_V4"]["IP"] == b"10.1.2.3"


def test_a_wrong_password_that_the_camera_cannot_say(lan):
    camera = living(lan.camera("--born", "other-subnet"))
    with reporting(camera):
        result = run(PLAIN, "set", mac(camera), "ipv4.address=198.18.77.10/15", "--wait", "0.5", status=6, password="wrong")
    assert "or, where it could not answer, the password wrong" in result.err
