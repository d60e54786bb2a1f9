"""What people do with a camera, through qvpctl alone: its page, its clock and its addresses have to follow.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/stories_test.py
"""
import base64
import datetime
import ipaddress
import os
import urllib.error
import urllib.request
from pathlib import Path
from zoneinfo import ZoneInfo

import pytest
from cameras import JSON, PLAIN, columns, discover, living, mac, run, value
from support.waiting import PATIENCE, wait_until

both_forms = pytest.mark.parametrize("form", [PLAIN, JSON], ids=["plain", "json"])
POOL = ipaddress.ip_network("198.19.0.0/16")


def page(address, port, password):
    """Status and text of a camera's page."""
    request = urllib.request.Request(f"http://{address}:{port}/")
    request.add_header("Authorization", "Basic " + base64.b64encode(f"admin:{password}".encode()).decode())
    try:
        with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
            return answer.status, answer.read().decode()
    except urllib.error.HTTPError as refusal:
        return refusal.status, ""


def wait_for_page(address, port, password):
    """A boot starts it beside the daemon, so an answer of the daemon's does not mean that it is there."""
    def opens():
        try:
            return page(address, port, password)[0] == 200
        except urllib.error.URLError:
            return False

    wait_until(opens, "the page")


@both_forms
def test_rename(camera, form):
    run(form, "set", mac(camera), "name=Front <door>")
    assert discover(form, "--expect", "1") == {mac(camera): (camera.address, "Front <door>", [])}
    assert "<h1>Front &lt;door&gt;</h1>" in page(camera.address, 80, "admin")[1]


@both_forms
def test_static_to_dhcp_and_back(camera, form):
    run(form, "set", mac(camera), "ipv4.method=dhcp")
    leased = discover(form, "--expect", "1")[mac(camera)][0]
    assert ipaddress.ip_address(leased) in POOL
    assert value(form, camera, "ipv4.method") == "dhcp"
    assert value(form, camera, "ipv4.address") == f"{leased}/15"
    fixed = f"198.18.44.{camera.number}"
    run(form, "set", leased, "ipv4.method=static", f"ipv4.address={fixed}/15")
    assert discover(form, "--expect", "1")[mac(camera)][0] == fixed
    assert value(form, camera, "ipv4.method") == "static"


@both_forms
def test_the_port_of_its_page(camera, form):
    assert page(camera.address, 80, "admin")[0] == 200
    run(form, "set", mac(camera), "http-port=8090")
    status, text = page(camera.address, 8090, "admin")
    assert (status, f"<h1>Camera {camera.number}</h1>" in text) == (200, True)
    with pytest.raises(urllib.error.URLError):
        page(camera.address, 80, "admin")


@both_forms
def test_the_password(camera, tmp_path, form):
    new = 'a "new" $one\\'
    (tmp_path / "new").write_text(new + "\n")
    run(form, "passwd", mac(camera), "--new", f"@{tmp_path / 'new'}")
    run(form, "verify", mac(camera), password="admin", status=4)
    run(form, "set", mac(camera), "upnp=off", password="admin", status=4)
    assert camera.store()["UPnP"]["Enable"] == b"1"
    run(form, "verify", mac(camera), password=new)
    assert [page(camera.address, 80, password)[0] for password in ("admin", new)] == [401, 200]


@both_forms
def test_joining_a_network_from_the_survey(lan, tmp_path, form):
    camera = living(lan.camera("--wireless", "iw"))
    result = run(form, "scan", mac(camera))
    if form:
        found = {site["ssid"]: (site["security"], site["channel"]) for site in result.records}
    else:
        found = {site["SSID"]: (site["SECURITY"], int(site["CHANNEL"])) for site in columns(result.out)}
    assert camera.commands() == ["/usr/sbin/iw dev wlan0 scan"]
    assert found["Rooftop"] == ("wpa2-aes", 6)
    (tmp_path / "key").write_text("under the tiles\n")
    security, channel = found["Rooftop"]
    run(form, "set", mac(camera), "wifi.ssid=Rooftop", f"wifi.security={security}", f"wifi.channel={channel}",
        f"wifi.key=@{tmp_path / 'key'}")
    camera.wait_for_command("/usr/sbin/msger httpdmgr 0 reset_wifi 0 0")
    wireless = camera.store()["WIRELESS"]
    assert [wireless[key] for key in ("SSID", "Channel", "PreSharedKey")] == [b"Rooftop", b"6", b"under the tiles"]
    assert value(form, camera, "wifi.ssid") == "Rooftop"


# --- Its clock --------------------------------------------------------------------------------------------------------

@pytest.fixture
def years_ahead():
    """The LAN's time server is ten years ahead, and says so again afterwards as before."""
    file = Path(os.environ["QVP_LAN"]) / "time_offset"
    file.write_text(str(3652 * 86400))
    yield 10
    file.unlink()


def camera_time(form, camera):
    return datetime.datetime.fromisoformat(value(form, camera, "time.now"))


def a_zone_without_zeros():
    """Cameras refuse an hour or a minute of zero: somewhere it is neither, nor will be soon."""
    for name in ("Asia/Tokyo", "Asia/Kolkata", "Europe/Berlin"):
        now = datetime.datetime.now(ZoneInfo(name))
        if now.hour not in (0, 23) and 0 < now.minute < 58:
            return name
    raise AssertionError("there is no such moment")


@both_forms
def test_zone_and_time_server_and_the_time_of_this_machine(camera, years_ahead, form):
    run(form, "set", mac(camera), "time.zone=Asia/Tokyo", "time.ntp=ntp.example.com")

    def is_ahead():
        """Once the time server has answered; the change does not wait for that."""
        tokyo = datetime.datetime.now(ZoneInfo("Asia/Tokyo")).replace(tzinfo=None)
        return abs((camera_time(form, camera) - tokyo).total_seconds() - 3652 * 86400) < PATIENCE

    wait_until(is_ahead, "the time of the server")
    zone = a_zone_without_zeros()
    run(form, "set", mac(camera), f"time.zone={zone}", "time.ntp=off", "time.now=now")
    here = datetime.datetime.now(ZoneInfo(zone)).replace(tzinfo=None)
    assert abs((camera_time(form, camera) - here).total_seconds()) < PATIENCE
    assert (value(form, camera, "time.zone"), value(form, camera, "time.ntp")) == (zone, "off")


# --- Starting anew ----------------------------------------------------------------------------------------------------

def settings(form, camera, **options):
    """All that `get` shows but the time."""
    result = run(form, "get", mac(camera), **options)
    if form:
        rows = {record["key"]: record["value"] for record in result.records}
    else:
        rows = {row["KEY"]: row["VALUE"] for row in columns(result.out)}
    del rows["time.now"]
    return rows


@both_forms
def test_reboot_and_back(lan, form):
    camera = living(lan.camera("--reboot-delay", "0.5"))
    run(form, "set", mac(camera), "name=Gate", "http-port=8090")
    before, changed = camera.daemon_pid(), settings(form, camera)
    result = run(form, "reboot", mac(camera))
    assert camera.daemon_pid() != before
    assert "back" in (result.records[0]["result"] if form else result.out)
    assert settings(form, camera) == changed
    wait_for_page(camera.address, 8090, "admin")


@both_forms
def test_factory_reset_and_the_first_state_again(lan, tmp_path, form):
    camera = living(lan.camera("--reboot-delay", "0.5"))
    first, store = settings(form, camera), camera.store()
    (tmp_path / "new").write_text("new\n")
    run(form, "set", mac(camera), "name=Gate", "http-port=8090", "upnp=off", "time.zone=Asia/Tokyo",
        f"password=@{tmp_path / 'new'}")
    assert settings(form, camera, password="new") != first
    run(form, "factory-reset", mac(camera), "--yes", password="new")
    assert discover(form, "--expect", "1") == {mac(camera): (camera.address, f"Camera {camera.number}", [])}
    assert settings(form, camera) == first
    assert camera.store() == store
    wait_for_page(camera.address, 80, "admin")
