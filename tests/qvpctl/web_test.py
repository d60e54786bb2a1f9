"""What the page of 'qvpctl web' does with cameras, request by request.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/web_test.py
"""
import csv
import io
import json
import os
import signal
import socket
import time
from pathlib import Path

import pytest
from cameras import MARK, TREE, every_second, get, living, mac, qvpctl
from fleet_files import MORE
from web_page import Page, opened_words, opener


@pytest.fixture(scope="module")
def page():
    page = Page().enter()
    page.log_in()
    yield page
    said = page.errors()
    assert page.stop() == 0
    assert MARK not in said
    assert all(MARK.encode() not in answer.body + str(answer.headers).encode() for answer in page.answers), "in an answer"


@pytest.fixture(autouse=True)
def known_login(page):
    page.ask("DELETE", "/api/login", {})
    page.log_in()


@pytest.fixture(scope="module", autouse=True)
def lost_change(whole_lan, page):
    """A change that a camera takes and does not come back from: the wait for it is over when the other tests are."""
    camera = living(whole_lan.camera())
    page.log_in()
    page.find(camera)
    camera.replace_script("/etc/init.d/ntpc.sh", "#!/bin/sh\nkill $(cat /run/qvp-eth0.pid)\n")
    begun = page.post(page.path(camera, "/changes"), {"settings": {"time.ntp": "ntp.example.com"}})["id"]
    camera.wait_for_trace("set_system_datetime")  # from here on it is not found
    return begun


def put(data, offset, value):
    data[offset:offset + len(value)] = value


def report(hardware_address, address, name=b"", product=b"", firmware=b""):
    """A presence report of 317 bytes."""
    data = bytearray(317)
    put(data, 0, b"\xff\xff")
    put(data, 4, b"\xa0\x00")
    put(data, 6, hardware_address)
    put(data, 12, bytes(map(int, address.split("."))))
    put(data, 18, b"\x02\x00\x27\x01")
    put(data, 22, product)
    put(data, 118, firmware)
    put(data, 150, hardware_address)
    put(data, 220, name)
    put(data, 284, bytes(map(int, address.split("."))) + b"\xff\xfe\x00\x00")
    return bytes(data)


@pytest.fixture
def shout():
    """Broadcasts a datagram to the cameras' port."""
    sender = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    sender.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
    yield lambda datagram: sender.sendto(datagram, ("255.255.255.255", 62976))
    sender.close()


def heard_in_the_end(shout, datagram):
    """A tool that stood still for a moment has lost what came last."""
    return every_second(lambda: shout(datagram))


HOSTILE = "<script>alert(1)</script>\"'&"


# --- The session and the table of cameras -----------------------------------------------------------------------------

def test_the_session(page):
    session = page.get("/api/session")
    assert session["interfaces"] == [{"name": "lan0", "address": "198.18.0.1", "netmask": "255.254.0.0"}]
    assert (session["isVirtual"], session["virtualCameras"], session["csrf"]) == (True, False, "X-Qvpctl")
    assert qvpctl("--version").out.split()[-1] == session["version"]
    assert page.ask("POST", "/api/virtual-cameras", {}).code == "busy"


def test_the_settings_are_those_of_the_model(page):
    settings = {one["key"]: one for one in page.get("/api/settings")["settings"]}
    assert settings["ipv4.address"] == {
        "key": "ipv4.address", "group": "basic", "groupName": "name, port and address",
        "effect": "restarts its web server and its network", "awaySeconds": 10,
        "summary": "its address and the length of its network's prefix", "values": "such as 192.168.1.20/24",
        "quirk": "makes ipv4.method static", "choices": None, "secret": False, "readOnly": False}
    assert settings["upnp"]["choices"] == ["on", "off"]
    assert [key for key, one in settings.items() if one["secret"]] == ["ddns.password", "wifi.key", "password"]
    assert settings["wifi.mac"]["readOnly"] if "wifi.mac" in settings else True


def test_cameras_are_found_as_the_tool_finds_them(lan, page):
    cameras = lan.cameras(3)
    known = page.find(*cameras)
    told = {record["mac"]: record for record in qvpctl("discover", "--json", "--expect", "3").records}
    for camera in cameras:
        record = dict(known[mac(camera)])
        assert (record.pop("state"), record["problems"], record["answered"]) == ("present", [], True)
        assert time.time() - time.mktime(time.strptime(record.pop("lastSeen")[:19], "%Y-%m-%dT%H:%M:%S")) < 600
        other = told[mac(camera)]
        assert {**record, "localTime": None} == {**other, "localTime": None}
    stream = page.events()
    name, data = stream.next()
    stream.close()
    assert data["search"]["interfaces"] == ["lan0"] and {mac(camera) for camera in cameras} <= {one["mac"] for one in data["cameras"]}


def test_a_camera_appears_by_itself(lan, page):
    """It reports when it starts, and is asked who it is."""
    stream = page.events()
    camera = lan.camera()
    data = stream.until("camera", lambda data: data["mac"] == mac(camera) and data["answered"])
    assert data["url"] == f"http://{camera.address}/"
    stream.close()


def test_cameras_of_one_address_say_so(lan, page):
    first, second = lan.cameras(2, {index: ["--set", "NETWORK_V4/IP=198.18.40.1"] for index in (0, 1)})
    stream = page.events()
    page.post("/api/search")
    shared = set()
    while shared != {mac(first), mac(second)}:
        event, data = stream.next()
        for record in data["cameras"] if event == "snapshot" else [data] if event == "camera" else []:
            if [problem["code"] for problem in record["problems"]] == ["duplicate-address"]:
                assert record["problems"][0]["text"] == "another camera has the same address"
                shared.add(record["mac"])
        if event == "search" and not data["running"]:
            page.post("/api/search")
    stream.close()


def test_what_a_camera_says_is_text(lan, page, shout):
    """Scripts, control characters and bytes that are no text, in all that a camera tells of itself."""
    stream = page.events()
    hostile = HOSTILE.encode() + b"\r\n\r\nid: 7\ndata: x\n\n\xff\x00"
    shout(report(b"\x02\x00\x5e\x00\x00\x01", "198.18.99.1", hostile, hostile, hostile[:32]))
    record = stream.until("camera", lambda data: data["mac"] == "02:00:5e:00:00:01")
    text = HOSTILE + "\r\n\r\nid: 7\ndata: x\n\n\ufffd"
    assert (record["name"], record["product"], record["firmware"]) == (text, text, text[:32].encode().decode())
    assert record["url"] is None and not record["answered"]
    stream.close()
    camera = living(lan.camera("--set", f"CAMSYSTEM/CameraName={HOSTILE}"))
    assert page.find(camera)[mac(camera)]["name"] == HOSTILE
    answer = page.ask("GET", page.path(camera))
    assert answer.headers["Content-Type"] == "application/json" and answer.headers["X-Content-Type-Options"] == "nosniff"
    assert page.values(camera)["name"] == HOSTILE
    refused = page.ask("POST", page.path(camera, "/plan"), {"settings": {"name": HOSTILE * 9, HOSTILE: "x"}})
    assert refused.code == "bad-value"


def test_a_camera_that_changes_its_name_a_hundred_times_a_second(page, shout):
    """It is told of a few times a second, and the last name is the one that stays."""
    stream = page.events()
    stream.next()
    started = time.monotonic()
    for number in range(500):
        shout(report(b"\x02\x00\x5e\x00\x00\x02", "198.18.99.2", f"Name {number}".encode()))
        time.sleep(0.01)
    with heard_in_the_end(shout, report(b"\x02\x00\x5e\x00\x00\x02", "198.18.99.2", b"Name 499")):
        stream.until("camera", lambda data: data["name"] == "Name 499")
    seconds = time.monotonic() - started
    told = [data for event, data in stream.seen if event == "camera" and data["mac"] == "02:00:5e:00:00:02"]
    assert len(told) <= 4 * seconds + 2, (len(told), seconds)
    stream.close()


# --- One camera -------------------------------------------------------------------------------------------------------

def test_reading_a_camera_needs_its_password(lan, page):
    camera = lan.camera()
    page.find(camera)
    page.ask("DELETE", "/api/login", {})
    for password in (None, "wrong"):
        if password:
            page.log_in(password)
        answer = page.get(page.path(camera))
        values = {one["key"]: one["value"] for one in answer["settings"]}
        assert answer["needsLogin"] and answer["mac"] == mac(camera)
        assert (values["name"], values["ipv4.address"], values["upnp"]) == (f"Camera {camera.number}", f"{camera.address}/15", None)
        refused = page.ask("POST", page.path(camera, "/plan"), {"settings": {"upnp": "off"}})
        assert (refused.status, refused.code) == (401, "credentials-refused")
    refused = page.ask("POST", page.path(camera, "/scan"), {})
    assert (refused.status, refused.code) == (401, "credentials-refused")
    page.log_in("admin", camera)
    answer = page.get(page.path(camera))
    assert not answer["needsLogin"]
    told = {record["key"]: record for record in qvpctl("get", mac(camera), "--json").records}
    for one in answer["settings"]:
        assert one["key"] == "time.now" or one == told[one["key"]], one


def test_a_camera_that_nobody_has_heard_of(page):
    for what in ("", "/plan", "/changes", "/scan", "/password", "/reboot", "/factory-reset"):
        answer = page.ask("GET" if what == "" else "POST", f"/api/cameras/02:00:00:00:00:99{what}", {} if what else None)
        assert (answer.status, answer.code) == (404, "not-found")


def test_a_plan_sends_nothing(lan, page):
    camera = lan.camera()
    page.find(camera)
    store = camera.store()
    plan = page.post(page.path(camera, "/plan"), {"settings": {"name": "Gate", "upnp": "on", "ddns.user": "me", "wifi.ssid": "Barn"}}, 200)
    assert [(one["key"], one["after"]) for one in plan["changes"]] == [("ddns.user", "me"), ("name", "Gate"), ("wifi.ssid", "Barn")]
    assert [group["name"] for group in plan["groups"]] == ["network services", "wireless", "name, port and address"]
    assert plan["awaySeconds"] == 15
    secret = page.post(page.path(camera, "/plan"), {"settings": {"password": MARK}}, 200)
    assert secret["changes"] == [{"key": "password", "before": None, "after": None}]
    assert (camera.store(), camera.board_log()) == (store, [])


@pytest.mark.parametrize("settings", [{"name": "x" * 64}, {"nothing": "x"}, {"name": 7}, {"name": None}, {}, [], "x", {"name": ["x"]},
                                      {"ipv4.address": "300.1.1.1/24"}, {"ipv4.method": "dhcp", "ipv4.gateway": "198.18.0.1"}])
def test_what_a_camera_would_refuse(known_camera, page, settings):
    answer = page.ask("POST", page.path(known_camera, "/plan"), {"settings": settings})
    assert (answer.status, answer.code) == (400, "bad-value"), answer


@pytest.fixture(scope="module")
def known_camera(whole_lan, page):
    camera = living(whole_lan.camera())
    page.find(camera)
    return camera


def test_a_change_is_told_step_by_step_and_seen_in_the_camera(lan, page):
    camera = living(lan.camera())
    page.find(camera)
    stream, address = page.events(), f"198.18.41.{camera.number}"
    seen, end = page.change(camera, "/changes", {"settings": {"name": "Gate", "upnp": "off", "ipv4.address": f"{address}/15"}})
    assert seen == [("waiting", ""), ("sent", "network services"), ("sent", "name, port and address"), ("away", "name, port and address"),
                    ("back", "name, port and address"), ("verified", "name, port and address")]
    assert (end["kind"], end["mac"], end["error"]) == ("settings", mac(camera), None)
    store = camera.store()
    assert (store["CAMSYSTEM"]["CameraName"], store["NETWORK_V4"]["IP"], store["UPnP"]["Enable"]) == (
        b"Gate", address.encode(), b"0")
    # A search that is under way meanwhile finds it at both of its addresses.
    record = stream.until("camera", lambda data: (data["mac"], data["name"], data["problems"]) == (mac(camera), "Gate", []))
    assert (record["address"], record["answered"]) == (address, True)
    stream.close()


def test_a_camera_is_changed_by_one_at_a_time(lan, page):
    camera = living(lan.camera())
    page.find(camera)
    gate = camera.gate("/etc/init.d/ipv4")
    stream = page.events()
    begun = page.post(page.path(camera, "/changes"), {"settings": {"name": "Gate"}})["id"]
    gate.wait()
    for what, body in (("/changes", {"settings": {"upnp": "off"}}), ("/password", {"password": MARK}), ("/scan", {}),
                       ("/reboot", {"confirm": f"Camera {camera.number}"})):
        answer = page.ask("POST", page.path(camera, what), body)
        assert (answer.status, answer.code) == (409, "busy"), what
    run = page.ask("POST", "/api/fleet/apply", {"csv": table("mac,name", (camera, "Yard"))})
    assert (run.status, run.code) == (409, "busy")
    again = page.events()
    told = next(one for one in again.next()[1]["changes"] if one["id"] == begun)
    assert told["stage"] in ("sent", "away"), "who comes later sees what is on the way"
    again.close()
    gate.open()
    stream.until("change", lambda data: data["id"] == begun and data["stage"] == "verified")
    stream.close()


def test_a_password(lan, page):
    camera = living(lan.camera())
    page.find(camera)
    _, end = page.change(camera, "/password", {"password": MARK})
    assert end["kind"] == "password"
    assert get(camera, "upnp", password=MARK) == "on"
    assert not page.get(page.path(camera))["needsLogin"], "the session goes on with the new one"
    assert MARK.encode() not in page.process_list()


def test_a_secret_is_in_no_answer(lan, page):
    """The module's end looks through all answers and what was said on standard error."""
    camera = living(lan.camera())
    page.find(camera)
    settings = {"wifi.ssid": "Barn", "wifi.security": "wpa2-aes", "wifi.key": MARK, "ddns.user": "me", "ddns.password": MARK}
    stream = page.events()
    page.change(camera, "/changes", {"settings": settings})
    stream.until("change", lambda data: data["mac"] == mac(camera) and data["stage"] == "verified")
    assert MARK not in json.dumps(stream.seen)
    stream.close()
    assert camera.store()["WIRELESS"]["PreSharedKey"] == MARK.encode()
    page.values(camera)
    page.ask("GET", "/api/export.csv")
    for body in ({"settings": {"wifi.key": MARK, "wifi.security": "none-of-these"}}, {"settings": {"password": MARK * 9}}):
        assert page.ask("POST", page.path(camera, "/plan"), body).code == "bad-value"
    assert MARK.encode() not in page.process_list()


def test_the_networks_that_a_camera_sees(lan, page):
    camera = living(lan.camera("--wireless", "iw"))
    page.find(camera)
    found = page.post(page.path(camera, "/scan"), {}, 200)
    told = qvpctl("scan", mac(camera), "--last", "--json").records
    assert found == {"networks": told, "complete": True}
    assert {"Rooftop": "wpa2-aes"}.items() <= {one["ssid"]: one["security"] for one in found["networks"]}.items()


@pytest.mark.parametrize("what", ["reboot", "factory-reset"])
def test_what_takes_everything_is_confirmed_by_the_cameras_name(lan, page, what):
    camera = living(lan.camera())
    page.find(camera)
    for body in ({}, {"confirm": "yes"}, {"confirm": ""}, {"confirm": mac(camera)}, {"confirm": None}, {"confirm": f"camera {camera.number}"}):
        answer = page.ask("POST", page.path(camera, f"/{what}"), body)
        assert (answer.status, answer.code) == (400, "bad-value"), body
    assert camera.board_log() == []
    seen, end = page.change(camera, f"/{what}", {"confirm": f"Camera {camera.number}"})
    assert (end["kind"], [stage for stage, _ in seen]) == (what, ["waiting", "away", "verified"])
    assert camera.trace().count("QVP Client Start") == 2 and what.replace("-", "_") in camera.trace()


# --- Many cameras -----------------------------------------------------------------------------------------------------

def table(heading, *rows):
    return "\n".join([heading, *(",".join([mac(row[0]), *row[1:]]) for row in rows)]) + "\n"


def run_to_its_end(page, body):
    stream = page.events()
    begun = page.post("/api/fleet/apply", body)["id"]
    end = stream.until("run", lambda data: data["id"] == begun and data["stage"] != "running")
    steps = {}
    for event, data in stream.seen:
        for one in data["cameras"] if event == "run" else []:
            steps.setdefault(one["mac"], []).append(one["stage"])
    stream.close()
    return end, steps


def test_many_cameras_from_a_table(lan, page):
    cameras = [living(camera) for camera in lan.cameras(3)]
    page.find(*cameras)
    text = table("mac,name,time.zone,password", *((camera, f"Hall {camera.number}", "Asia/Tokyo", "prompt:all") for camera in cameras))
    body = {"csv": text, "secrets": {"prompt:all": MARK}}
    plan = page.post("/api/fleet/plan", body, 200)
    assert plan["summary"]["toChange"] == 3
    for record, camera in zip(plan["cameras"], cameras):
        assert (record["mac"], record["result"]) == (mac(camera), "to-change")
        assert {"key": "password", "before": None, "after": None} in record["changes"]
        assert camera.store()["CAMSYSTEM"]["CameraName"] == f"Camera {camera.number}".encode()
    end, steps = run_to_its_end(page, {**body, "parallel": 3})
    assert (end["stage"], end["total"], end["done"], end["summary"]["changed"]) == ("done", 3, 3, 3)
    for record, camera in zip(end["cameras"], cameras):
        assert (record["mac"], record["result"], record["name"]) == (mac(camera), "changed", f"Hall {camera.number}")
        assert steps[mac(camera)][-1] == "verified" and "waiting" in steps[mac(camera)]
        assert get(camera, "time.zone", password=MARK) == "Asia/Tokyo"
        assert not page.get(page.path(camera))["needsLogin"]
    rows = list(csv.DictReader(io.StringIO(page.ask("GET", "/api/fleet/result.csv").body.decode())))
    assert [list(row) for row in rows] == [["mac", "name", "address", "result", "why"]] * 3
    assert [(row["mac"], row["result"]) for row in rows] == [(mac(camera), "changed") for camera in cameras]
    again, _ = run_to_its_end(page, body)
    assert again["summary"]["unchanged"] == 3


def test_many_cameras_from_the_page_itself(lan, page):
    """Values as they are: a quote, a comma, a backslash and a formula are nothing but text."""
    cameras = [living(camera) for camera in lan.cameras(2)]
    page.find(*cameras)
    names = ["=1+1, \"two\"\nthree\\x41", "'+quoted"]
    body = {"cameras": [{"mac": mac(camera), "settings": {"name": name, "wifi.ssid": "Barn", "wifi.security": "wpa2-aes", "wifi.key": MARK}}
                        for camera, name in zip(cameras, names)]}
    end, _ = run_to_its_end(page, body)
    assert end["summary"]["changed"] == 2, end
    for camera, name in zip(cameras, names):
        store = camera.store()
        assert (store["CAMSYSTEM"]["CameraName"], store["WIRELESS"]["PreSharedKey"]) == (name.encode(), MARK.encode())


def test_faults_of_a_table(page, known_camera):
    text = table("mac,name,ipv4.address,password", (known_camera, "x" * 64, "300.0.0.1/24", "file:/etc/passwd")) + "x,,,env:HOME\n"
    for path in ("/api/fleet/plan", "/api/fleet/apply"):
        answer = page.ask("POST", path, {"csv": text})
        assert (answer.status, answer.code) == (400, "bad-value")
        faults = {(one["line"], one["column"]): one["text"] for one in answer.json["error"]["faults"]}
        assert {(2, 2), (2, 3), (2, 4), (3, 1), (3, 4)} <= set(faults)
        assert all("file: or env:" in faults[place] for place in ((2, 4), (3, 4)))
        assert "root" not in answer.body.decode()
    answer = page.ask("POST", "/api/fleet/plan", {"csv": table("mac,password", (known_camera, "prompt")), "secrets": {"prompt:other": MARK}})
    assert "is to be asked for, and was not" in answer.json["error"]["faults"][0]["text"]
    answer = page.ask("POST", "/api/fleet/plan", {"csv": table("mac,password", (known_camera, MARK))})
    assert answer.json["error"]["faults"][0]["column"] == 2
    answer = page.ask("POST", "/api/fleet/plan", {"cameras": [{"mac": mac(known_camera), "settings": {"upnp": "maybe"}}]})
    assert [(one["line"], one["column"]) for one in answer.json["error"]["faults"]] == [(1, 0)]


def test_conflicts_of_addresses(lan, page):
    first, second = lan.cameras(2)
    page.find(first, second)
    answer = page.ask("POST", "/api/fleet/plan", {"cameras": [{"mac": mac(first), "settings": {"ipv4.address": f"{second.address}/15"}}]})
    assert f"is that of camera {mac(second)}" in answer.json["error"]["faults"][0]["text"]


def test_one_run_at_a_time_that_can_be_stopped(lan, page):
    """What is on the way ends; the others are not begun."""
    *cameras, other = [living(camera) for camera in lan.cameras(4)]
    page.find(*cameras, other)
    gate = cameras[0].gate("/etc/init.d/ipv4")
    body = {"csv": table("mac,name", *((camera, "Hall") for camera in cameras))}
    stream = page.events()
    begun = page.post("/api/fleet/apply", body)["id"]
    gate.wait()
    for one in (body, {"csv": table("mac,name", (other, "Hall"))}):
        assert page.ask("POST", "/api/fleet/apply", one).code == "busy"
    assert page.ask("POST", page.path(cameras[2], "/changes"), {"settings": {"upnp": "off"}}).code == "busy"
    page.post("/api/fleet/stop")
    gate.open()
    end = stream.until("run", lambda data: data["id"] == begun and data["stage"] != "running")
    stream.close()
    assert (end["stage"], end["done"], [one["result"] for one in end["cameras"]]) == ("stopped", 1, ["changed", "failed", "failed"])
    assert [one["reason"] for one in end["cameras"][1:]] == ["not tried: stopped"] * 2
    assert [camera.store()["CAMSYSTEM"]["CameraName"] for camera in cameras[1:]] == [f"Camera {one.number}".encode() for one in cameras[1:]]
    page.change(cameras[2], "/changes", {"settings": {"upnp": "off"}})


def test_the_end_of_the_server_does_not_wait_for_cameras(lan):
    page = Page(password="admin").enter()
    camera = living(lan.camera())
    page.find(camera)
    gate = camera.gate("/etc/init.d/ipv4")
    page.post(page.path(camera, "/changes"), {"settings": {"name": "Gate"}})
    gate.wait()
    assert page.stop() == 0
    gate.open()


def test_export_is_what_the_tool_writes(lan, tmp_path):
    page = Page(password="admin").enter()  # which knows no camera that is gone
    camera = lan.camera()
    page.find(camera)
    answer = page.ask("GET", "/api/export.csv")
    assert (answer.status, answer.headers["Content-Type"]) == (200, "text/csv; charset=utf-8")
    file = tmp_path / "site.csv"
    assert qvpctl("export", str(file), *MORE).status == 0
    rows = [{row["mac"]: row for row in csv.DictReader(io.StringIO(text))} for text in (answer.body.decode(), file.read_text())]
    assert rows[0][mac(camera)] == rows[1][mac(camera)]
    page.ask("DELETE", "/api/login", {})
    row = next(csv.DictReader(io.StringIO(page.ask("GET", "/api/export.csv").body.decode())))
    assert (row["name"], row["upnp"]) == (f"Camera {camera.number}", ""), "what it tells everybody"
    assert page.stop() == 0


def test_a_change_that_is_not_seen_afterwards(page, lost_change):
    stream = page.events()
    name, data = stream.next()
    change = next(one for one in data["changes"] if one["id"] == lost_change)
    if change["stage"] != "unverified":
        change = stream.until("change", lambda data: data["id"] == lost_change and data["stage"] == "unverified")
    stream.close()
    assert (change["error"]["code"], change["kind"]) == ("unverified", "settings")


# --- Virtual cameras --------------------------------------------------------------------------------------------------

def test_the_page_goes_on_with_virtual_cameras(tmp_path):
    """At the same address and with the same cookie, in another network; there it finds cameras that this one has not."""
    tree = TREE / "virtual-camera"
    page = Page("-i", "lo", look=(), QVP_LAN=None, PATH=f"{tree}:{opener(tmp_path)}:/usr/sbin:/sbin",
                XDG_RUNTIME_DIR=str(tmp_path)).enter()
    session = page.get("/api/session")
    assert (session["isVirtual"], session["virtualCameras"]) == (False, True)
    stream = page.events()
    stream.next()
    page.log_in(MARK)
    before, secret = page.process.pid, page.cookie.split("=")[1]
    page.post("/api/virtual-cameras")
    with pytest.raises(AssertionError, match="the stream has ended"):
        while True:
            stream.next()
    again = page.events(str(stream.last))
    name, data = again.next()
    assert name == "snapshot" and again.last > stream.last
    session = page.get("/api/session")
    assert (session["isVirtual"], session["virtualCameras"], page.process.pid) == (True, False, before)
    found = {one["mac"] for one in data["cameras"] if one["answered"]}
    while "02:51:56:50:00:01" not in found:
        found.add(again.until("camera", lambda data: data["answered"])["mac"])
    assert page.get("/api/cameras/02:51:56:50:00:01")["needsLogin"], "logins are of the cameras that were left"
    assert page.ask("POST", "/api/virtual-cameras", {}).code == "busy"
    assert page.ask("GET", f"/?token={page.token}", Cookie=None).status == 403, "the token stays used"
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            text = b"".join((Path("/proc") / process / name).read_bytes() for name in ("cmdline", "environ"))
        except OSError:
            continue
        assert secret.encode() not in text and MARK.encode() not in text
    file = Path(opened_words(tmp_path)[0])
    assert file.exists(), "the browser may be slow"
    assert page.stop(signal.SIGINT) == 0
    assert not file.parent.exists()


def test_without_virtual_cameras():
    page = Page("-i", "lo", QVP_LAN=None, PATH="/usr/bin:/bin").enter()
    assert not page.get("/api/session")["virtualCameras"]
    assert page.ask("POST", "/api/virtual-cameras", {}).code == "not-found"
    assert page.stop() == 0


def test_virtual_cameras_that_cannot_be_started(tmp_path):
    """The reason is told, and the page goes on as it was."""
    (tmp_path / "virtual-camera").write_text("#!/bin/sh\necho 'no namespaces' >&2\nexit 125\n")
    (tmp_path / "virtual-camera").chmod(0o755)
    page = Page("-i", "lo", QVP_LAN=None, PATH=f"{tmp_path}:/usr/bin:/bin").enter()
    answer = page.ask("POST", "/api/virtual-cameras", {})
    assert (answer.status, answer.code) == (500, "this-machine") and "no namespaces" in answer.json["error"]["message"]
    assert page.get("/api/session")["virtualCameras"]
    assert page.stop() == 0


# --- The last, as every server on the LAN hears it ---------------------------------------------------------------------

def test_a_flood_of_cameras_keeps_nobody_out(lan, shout):
    """Of cameras that do not exist, most of it lost on the way."""
    page = Page().enter()
    stream = page.events()
    page.post("/api/search")
    stream.until("search", lambda search: search["running"])  # so it hears
    stream.close()
    for number in range(2500):
        shout(report(b"\x02\x01\x5e\x00" + number.to_bytes(2, "big"), "198.18.98.1", b"x"))
    camera = lan.camera()
    assert page.find(camera)[mac(camera)]["state"] == "present"
    stream = page.events()
    known = stream.next()[1]["cameras"]
    assert 10 < len(known)
    stream.close()
    assert page.stop() == 0
