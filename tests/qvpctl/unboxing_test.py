"""A camera out of its box, through qvpctl alone. Most of the time goes by waiting for its presence reports.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/unboxing_test.py
"""
import pytest
from cameras import JSON, PLAIN, discover, living, mac, run, value


@pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
def test_unboxing(lan, form):
    """A camera of another subnet is heard of by its own report, and set up by its MAC alone."""
    camera = living(lan.camera("--born", "other-subnet"))
    known = discover(form, "--wait", "35", "--expect", "1")
    assert known == {mac(camera): ("192.168.0.20", f"Camera {camera.number}", ["other-subnet"])}
    run(form, "set", mac(camera), "name=Front door", "ipv4.address=198.18.77.7/15", "ipv4.gateway=198.18.0.1")
    assert discover(form, "--expect", "1") == {mac(camera): ("198.18.77.7", "Front door", [])}
    assert value(form, camera, "ipv4.gateway") == "198.18.0.1"
    run(form, "verify", "198.18.77.7")
