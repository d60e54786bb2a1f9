"""Setting up cameras with qvpctl alone: the real daemon in virtual cameras, each test with cameras of its own.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/setup_test.py
"""
import pytest
from cameras import MARK, assert_fails, assert_set, get, living, mac, qvpctl
from support.waiting import wait_until


# --- What is set ------------------------------------------------------------------------------------------------------

def test_rename(camera):
    result = assert_set(camera, "name=Front door")
    assert "waiting up to 30 s until it is back" in result.err
    assert camera.store()["CAMSYSTEM"]["CameraName"] == b"Front door"
    by_name = qvpctl("get", "Front door", "name")
    assert (by_name.status, by_name.out) == (0, "Front door\n")


def test_rename_in_json(camera):
    before = get(camera, "name")
    first = qvpctl("set", mac(camera), "name=Front door", "--json")
    change = {"key": "name", "before": before, "after": "Front door", "changed": True}
    assert (first.status, first.records, first.error) == (0, [change], None), first
    assert all(list(note) == ["note"] for note in first.notes)
    second = qvpctl("set", mac(camera), "name=Front door", "--json")
    assert (second.status, second.err) == (0, "")
    assert second.records == [{"key": "name", "before": "Front door", "after": "Front door", "changed": False}]


def test_static_address(camera):
    assert_set(camera, "ipv4.address=198.18.9.77/15", "ipv4.gateway=198.18.0.9", "ipv4.dns=198.18.0.7")
    moved = qvpctl("get", "198.18.9.77", "ipv4", "--json")
    assert moved.status == 0, moved
    assert {record["key"]: record["value"] for record in moved.records} == {
        "ipv4.method": "static", "ipv4.address": "198.18.9.77/15", "ipv4.gateway": "198.18.0.9",
        "ipv4.dns": "198.18.0.7"}
    network = camera.store()["NETWORK_V4"]
    assert (network["IP"], network["SubnetMask"], network["Gateway"]) == (b"198.18.9.77", b"255.254.0.0", b"198.18.0.9")


def test_port(camera):
    assert_set(camera, "http-port=8089")
    assert camera.store()["HTTP"]["Port"] == b"8089"
    found = qvpctl("discover", "--expect", "1", "--json")
    assert found.records[0]["url"] == f"http://{camera.address}:8089/"


def test_password(camera, tmp_path):
    new = tmp_path / "new"
    new.write_text("a new one\n")
    result = qvpctl("passwd", mac(camera), "--new", f"@{new}")
    assert (result.status, result.out) == (0, ""), result
    assert_fails(4, "verify", mac(camera), words="refused the user name or the password")
    assert_fails(4, "get", mac(camera), "wifi.ssid", words="refused")
    assert_fails(4, "set", mac(camera), "upnp=off", words="refused")
    told_by_file = qvpctl("verify", mac(camera), "--password-file", str(new), password=None)
    assert told_by_file.status == 0, told_by_file
    assert told_by_file.out.splitlines()[1].split() == [mac(camera), "administrator"]
    as_json = qvpctl("verify", mac(camera), "--json", password="a new one")
    assert as_json.records == [{"mac": mac(camera), "result": "administrator"}]


def test_wireless(camera, tmp_path):
    key = tmp_path / "key"
    key.write_text("a wireless key\n")
    assert_set(camera, "wifi.key=env:KEY", "wifi.ssid=Reception", "wifi.security=wpa-wpa2-mixed", "wifi.channel=1",
               KEY="a wireless key")
    wireless = camera.store()["WIRELESS"]
    assert (wireless["SSID"], wireless["Channel"], wireless["Encryption"]) == (b"Reception", b"1", b"4")
    assert wireless["PreSharedKey"] == b"a wireless key"
    again = qvpctl("set", mac(camera), f"wifi.key=@{key}", "--json")
    assert again.records == [{"key": "wifi.key", "before": None, "after": None, "changed": False}]
    table = qvpctl("get", mac(camera), "wifi")
    assert [row.split() for row in table.out.splitlines()] == [
        ["KEY", "VALUE"], ["wifi.enabled", "on"], ["wifi.ssid", "Reception"], ["wifi.mode", "infrastructure"],
        ["wifi.channel", "1"], ["wifi.security", "wpa-wpa2-mixed"], ["wifi.wep-index", "0"]]


def test_wep(camera):
    assert_set(camera, "wifi.key=env:KEY", "wifi.security=wep", "wifi.wep-index=2", KEY="0123456789")
    wireless = camera.store()["WIRELESS"]
    assert (wireless["WEPKey2"], wireless["WEPKeyFormat"], wireless["WEPKeyLength"]) == (b"0123456789", b"1", b"0")


def test_time_zone(camera):
    assert_set(camera, "time.zone=Asia/Tokyo", "time.ntp=off")
    assert get(camera, "time.zone") == "Asia/Tokyo"
    assert_set(camera, "time.zone=Europe/Berlin", "time.daylight-saving=on")
    assert qvpctl("get", mac(camera), "time.zone", "time.daylight-saving", "--json").records == [
        {"key": "time.zone", "value": "Europe/Berlin", "secret": False},
        {"key": "time.daylight-saving", "value": "on", "secret": False}]


def test_time(camera):
    result = qvpctl("set", mac(camera), "time.now=2026-01-31T10:20:30", "--json")
    assert (result.status, result.error) == (0, None), result
    record = result.records[0]
    assert (record["key"], record["after"], record["changed"]) == ("time.now", "2026-01-31T10:20:30", True)
    assert get(camera, "time.now").startswith("2026-01-31T10:")


def test_a_time_that_would_not_last(camera):
    camera.change_store("DATETIME", "Protocol", b"1")
    assert_fails(2, "set", mac(camera), "time.now=2030-01-02T10:10:10", words="while the camera follows ntp.example.com")
    assert_set(camera, "time.ntp=off")
    assert qvpctl("set", mac(camera), "time.now=2030-01-02T10:10:10").status == 0
    assert get(camera, "time.now").startswith("2030-01-02T10:1")


def test_the_password_that_the_camera_has(camera):
    same = qvpctl("set", mac(camera), "password=env:SAME", SAME="admin")
    assert (same.status, same.out, same.err, camera.board_log()) == (0, "", "", [])


def test_a_quirk_that_comes_true_is_told(camera):
    assert "dynamic DNS is now on, as upnp is" in qvpctl("set", mac(camera), "ddns.host=door.example.com").err
    camera.change_store("WIRELESS", "Enable", b"0")
    assert qvpctl("set", mac(camera), "wifi.ssid=Workshop").err == ""
    assert "radio is off, and no request turns it on" in qvpctl("set", mac(camera), "wifi.ssid=Warehouse").err
    assert camera.store()["WIRELESS"]["Enable"] == b"0"


def test_services(camera):
    assert_set(camera, "upnp=off", "ddns.user=me", "ddns.host=door.example.com", "ddns.password=env:KEY", KEY="ddns")
    ddns = camera.store()["DDNS"]
    assert (ddns["UID"], ddns["HOST"], ddns["PWD"]) == (b"me", b"door.example.com", b"ddns")


def test_several_groups_at_once(camera):
    assert_set(camera, "ipv4.address=198.18.9.78/15", "name=Gate", "wifi.ssid=Warehouse", "time.zone=UTC", "upnp=off")
    assert qvpctl("get", "198.18.9.78", "name", "wifi.ssid", "upnp", "--json").records == [
        {"key": "name", "value": "Gate", "secret": False}, {"key": "upnp", "value": "off", "secret": False},
        {"key": "wifi.ssid", "value": "Warehouse", "secret": False}]


# --- What is refused --------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("assignment, words", [
    ("http-port=8088", "8087 and 8089 are free"),
    ("http-port=0", "1 to 65535"),
    ("ipv4.address=198.18.1.1", "such as 198.18.1.1/24"),
    ("time.now=2026-01-31T00:00:00", "the nearest is 2026-01-30T23:59:59"),
    ("time.zone=Mars/Olympus_Mons", "'qvpctl help time-zones' lists them"),
    ("wifi.security=wep", "needs a wifi.key"),
    ("wifi.key=env:SHORT", "8 to 63"),
    ("password=env:LONG", "at most 48 fit"),
    ("wifi.enabled=off", "can only be read"),
    ("pppoe.user=x", "can only be read"),
    ("password=env:EMPTY", "must not be empty"),
    ("ipv4.address=10.1.2.3/24", "ipv4.gateway 198.18.0.1 is not in the network"),
    ("time.now=2026-02-31T10:20:30", "is no time of the calendar"),
    ("nme=Gate", "did you mean name?"),
    ("wifi.key=@/nowhere", "cannot read /nowhere"),
])
def test_a_value_that_no_camera_takes_is_refused_before_anything_is_sent(camera, assignment, words):
    before = camera.store()
    camera.forget_commands()
    status = 3 if "@" in assignment else 2
    assert_fails(status, "set", mac(camera), "name=Changed", assignment, words=words, SHORT="1234567", LONG="x" * 49, EMPTY="")
    assert (camera.store(), camera.board_log()) == (before, [])


def test_a_value_that_this_camera_refuses(camera):
    assert_fails(5, "set", mac(camera), "wifi.channel=200", words="the channel is not allowed in its radio region")


def test_a_change_that_the_camera_does_not_show(camera):
    script = "#!/bin/sh\nsed -i 's/^CameraName=.*/CameraName=Another/' /etc/qvp/camera.ini\n"
    camera.replace_script("/etc/init.d/llmnr-0", script)
    assert_fails(6, "set", mac(camera), "name=Reception", words="does not show it: name")


def test_an_ambiguous_name(lan):
    one, other = living(lan.camera("--set", "CAMSYSTEM/CameraName=Twin")), lan.camera("--set", "CAMSYSTEM/CameraName=Twin")
    assert_fails(2, "set", "Twin", "upnp=off", words="say which by its MAC", code="ambiguous")
    error = qvpctl("get", "Twin").err
    for camera in (one, other):
        assert f"\n  {mac(camera)}  {camera.address}  Twin" in error


def test_an_unknown_camera(camera):
    for name in ("Nobody", "198.18.200.200", "02:00:00:00:00:99"):
        assert_fails(1, "get", name, "--wait", "0.5", words=name)
    assert_fails(1, "set", "Nobody", "name=Somebody", "--wait", "0.5", words="'qvpctl discover' shows those that do")


def test_an_unknown_interface(camera):
    for command in (["get", mac(camera)], ["set", mac(camera), "name=Gate"], ["discover"], ["scan", mac(camera)]):
        assert_fails(3, *command, "-i", "nope0", words="interface nope0: no such interface")


def test_nobody_to_ask_for_a_password(camera):
    assert_fails(2, "verify", mac(camera), words="a password is needed", password=None)


# --- The other commands -----------------------------------------------------------------------------------------------

def test_show(camera):
    page = qvpctl("show", mac(camera))
    assert (page.status, page.err) == (0, "")
    rows = dict(row.split(None, 1) for row in page.out.splitlines())
    assert (rows["MAC"], rows["ipv4.address"], rows["wifi.ssid"]) == (mac(camera), f"{camera.address}/15", "Workshop")
    record = qvpctl("show", mac(camera), "--json").records[0]
    assert (record["mac"], record["settings"]["wifi.ssid"], "wifi.key" in record["settings"]) == (
        mac(camera), "Workshop", False)


def test_the_landap_family(camera):
    assert_set(camera, "name=Front door", "upnp=off", "--family", "landap")
    assert get(camera, "upnp") == "off"


def test_scan(camera):
    table = qvpctl("scan", mac(camera))
    assert table.status == 0, table
    assert [row.split()[-1] for row in table.out.splitlines()] == ["CHANNEL", "6", "1", "11", "4", "3", "9"]
    sites = qvpctl("scan", mac(camera), "--last", "--json").records
    assert sites[0] == {"ssid": "Workshop", "signal": 81, "channel": 6, "security": "wpa2-aes", "adHoc": False}


@pytest.mark.parametrize("command, result, script", [
    (["commit"], "committed", None), (["alert"], "answered", None),
    (["reboot", "--no-wait"], "asked to reboot", "/var/reboot"),
    (["factory-reset", "--yes", "--no-wait"], "asked for its factory settings", "/etc/init.d/userconfig reset")])
def test_asking_for_one_thing(camera, command, result, script):
    name, *options = command
    answer = qvpctl(name, mac(camera), *options, "--json")
    assert answer.status == 0, answer
    assert answer.records[0]["mac"] == mac(camera)
    assert answer.records[0]["result"].startswith(result)
    if script:
        wait_until(lambda: any(line.startswith(script) for line in camera.commands()), script)


def test_supported(camera):
    table = qvpctl("supported", mac(camera))
    assert (table.status, table.err) == (0, "")
    assert "0x00A8  get wireless settings" in table.out.splitlines()
    assert {"opcode": "0x00A8", "command": "get wireless settings"} in qvpctl("supported", mac(camera), "--json").records


def test_a_factory_reset_is_not_done_unasked(camera):
    assert_fails(2, "factory-reset", mac(camera), words="nothing was reset; --yes does it without asking")


def test_raw_builds_a_request(camera):
    dump = qvpctl("raw", mac(camera), "--opcode", "0x00A8", "--login")
    assert (dump.status, dump.err) == (0, ""), dump
    assert f"sent to {camera.address}, 150 bytes" in dump.out and f"received from {camera.address}, 274 bytes" in dump.out
    assert "  command       get wireless settings\n" in dump.out and "  statusText    done\n" in dump.out
    sent, received = qvpctl("raw", mac(camera), "--opcode", "168", "--login", "--json").records
    assert (sent["direction"], sent["hex"][44:], sent["header"]["payloadLength"]) == ("sent", "00" * 128, 128)
    assert (received["direction"], received["header"]["kind"], received["length"]) == ("received", "reply", 274)
    reply = bytes.fromhex(received["hex"])
    assert (reply[24:32], reply[64:260]) == (b"Workshop", bytes(196))  # but no key
    refused = qvpctl("raw", mac(camera), "--opcode", "0x00A8", "--login", "--json", password="wrong").records[1]
    assert (refused["header"]["status"], refused["header"]["statusText"]) == (3, "wrong user name or password")


def test_raw_sends_bytes_as_they_stand(camera):
    words = ["fdfd", "0102", "a100", "ffffffffffff", "00000000", "0000", "0200", "0000"]
    sent, received = qvpctl("raw", mac(camera), *words, "--json").records
    assert sent["hex"] == "".join(words)
    assert (received["hex"][:12], received["header"]["sequence"]) == ("eefe0102a100", 0x0201)
    landap = qvpctl("raw", mac(camera), "--opcode", "0xa1", "--family", "landap", "--json").records
    assert [one["header"]["family"] for one in landap] == ["landap", "landap"]


def test_raw_says_when_nothing_comes_back(camera):
    result = qvpctl("raw", mac(camera), "fd", "--wait", "0.3", "--retries", "0", "--json")
    assert (result.status, result.error["code"]) == (1, "not-found")
    assert result.records == [{"direction": "sent", "address": camera.address, "length": 1, "header": None, "hex": "fd"}]


@pytest.mark.parametrize("arguments, words", [
    ([], "bytes or --opcode are needed"), (["fd", "--login"], "--login needs --opcode"),
    (["--opcode", "0x10000"], "0 to 65535"), (["--opcode", "-1"], "0 to 65535"), (["--opcode", "0x"], "0 to 65535"),
    (["fdf"], "pairs of hexadecimal digits"), (["00" * 1025], "at most 1024"), ([""], "no bytes")])
def test_raw_refuses(camera, arguments, words):
    assert_fails(2, "raw", mac(camera), *arguments, words=words)


def fake_browser(folder, status):
    program = folder / "xdg-open"
    program.write_text(f'#!/bin/sh\necho "$*" >>"{folder}/opened"\nexit {status}\n')
    program.chmod(0o755)
    return {"PATH": f"{folder}:/usr/bin:/bin"}


def test_open(camera, tmp_path):
    url = f"http://{camera.address}/"
    browser = fake_browser(tmp_path, 0)
    plain = qvpctl("open", mac(camera), **browser)
    assert (plain.status, plain.out, plain.err) == (0, url + "\n", "")
    form = qvpctl("open", mac(camera), "--json", **browser)
    assert form.records == [{"mac": mac(camera), "url": url}]
    assert (tmp_path / "opened").read_text() == f"{url}\n{url}\n"
    assert qvpctl("open", mac(camera), "--print", PATH="/nowhere").out == url + "\n"
    assert_fails(3, "open", mac(camera), words=f"cannot open {url} with xdg-open", PATH="/nowhere")
    assert_fails(3, "open", mac(camera), words=f"did not open {url}", **fake_browser(tmp_path, 4))


def test_without_waiting(camera):
    result = qvpctl("set", mac(camera), "name=Gate", "upnp=off", "--no-wait")
    assert (result.status, result.out) == (0, "")
    assert "restarts its web server and its network; that takes about 10 s" in result.err
    assert "waiting" not in result.err
    store = camera.store()
    assert (store["CAMSYSTEM"]["CameraName"], store["UPnP"]["Enable"]) == (b"Gate", b"0")


# --- Secrets ----------------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("form", [[], ["--json"]], ids=["plain", "json"])
def test_a_secret_is_in_no_output(camera, tmp_path, form):
    key, blocked = tmp_path / "key", tmp_path / "blocked"
    key.write_text(MARK + "\n")
    blocked.mkdir()
    by_file, by_variable, target = f"=@{key}", "=env:KEY", mac(camera)
    runs = [
        (0, ["set", target, "wifi.key" + by_file, "ddns.password" + by_variable], "admin"),
        (0, ["set", target, "wifi.key" + by_file], "admin"),
        (0, ["get", target], "admin"),
        (0, ["show", target], "admin"),
        (4, ["verify", target], MARK),
        (4, ["verify", target, "--password-file", str(key)], "admin"),
        (4, ["set", target, "wifi.key" + by_file], MARK),
        (2, ["set", target, "wifi.key=" + MARK], "admin"),
        (2, ["set", target, "wifi.key", MARK], "admin"),
        (2, ["set", target, "wifi.kye=" + MARK], "admin"),
        (2, ["set", target, "--password", MARK, "name=Gate"], "admin"),
        (2, ["set", target, "wifi.security=wep", "wifi.key" + by_file], "admin"),
        (2, ["set", target, "wifi.security=none", "wifi.key" + by_file], "admin"),
        (2, ["set", target, "password=env:LONG"], "admin"),
        (2, ["verify", target], MARK + "x" * 48),
        (3, ["set", target, f"wifi.key=@{blocked}"], MARK),
        (3, ["verify", target, "--password-file", str(blocked)], MARK),
        (5, ["set", target, "wifi.channel=200", "wifi.key=env:OTHER"], "admin"),
        (1, ["set", "Nobody", "wifi.key" + by_file, "--wait", "0.3"], MARK),
        *((0, ["raw", target, "--opcode", code, "--login"], "admin") for code in ("0xa6", "0xa8", "0xaf")),
        (0, ["passwd", target, "--new", "@" + str(key)], "admin"),
        (0, ["verify", target], MARK),
    ]
    for status, arguments, password in runs:
        result = qvpctl(*arguments, *form, password=password, KEY=MARK, LONG=MARK + "x" * 48, OTHER=MARK + "2")
        assert result.status == status, (arguments, result)
        assert MARK not in result.out + result.err, arguments
        assert MARK.encode().hex() not in result.out.replace(" ", ""), arguments
    assert camera.store()["WIRELESS"]["PreSharedKey"] == MARK.encode()
