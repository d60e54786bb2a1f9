"""qvpctl discover against cameras that answer in every form, each test on networks of its own."""
import json
import os
import pty
import signal
import subprocess

import pytest
from cameras import TOOL
from datagrams import reply, report
from veth_network import PATIENCE

CSV_HEADING = b"mac,address,name,product,firmware,url,problems\r\n"
SENT_FROM_2 = (12, bytes([10, 9, 0, 2]))  # where the first link's camera is, whatever address it shows


def until(count):
    """As long as it takes until so many have answered; what came before them is seen as well."""
    return ["--wait", "50", "--retries", "49", "--expect", str(count)]


def test_asks_by_broadcast_and_shows_a_table(network):
    host = network.link()
    silent = network.camera(host, answers=[])
    assert network.run_tool("discover", "--wait", "0.5").returncode == 1
    for _ in range(3):  # repeated, as a broadcast may be lost
        silent.wait_for_request()
    requests = silent.close()
    camera = network.camera(host, answers=[reply()])
    result = network.run_tool("discover", *until(1))
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == (
        "MAC                ADDRESS   NAME        PRODUCT  FIRMWARE  WEB\n"
        "02:00:5e:10:00:af  10.9.0.2  Front door  Product  1.05      http://10.9.0.2/\n")
    assert (len(requests), len({request[2:4] for request in requests})) == (3, 1)
    for request in requests + camera.close():
        assert request[:2] + request[4:] == bytes.fromhex("fdfd a100 ffffffffffff 00000000 0000 0200 0000")


def test_json_holds_the_whole_reply(network):
    network.camera(network.link(), answers=[reply(port=8080)])
    result = network.run_tool("discover", "-i", "tool0", *until(1), "--json")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.count(b"\n") == 1
    assert json.loads(result.stdout) == {
        "mac": "02:00:5e:10:00:af", "address": "10.9.0.2", "name": "Front door", "brand": "Brand",
        "product": "Product", "model": "Model", "firmware": "1.05", "hardware": "Rev B", "httpPort": 8080,
        "netmask": "255.255.255.0", "gateway": "10.9.0.1", "dns": ["10.9.0.53"], "dhcp": True,
        "localTime": "2026-01-31T23:59:58", "timezone": 300, "daylightSaving": False,
        "url": "http://10.9.0.2:8080/", "interface": "tool0", "answered": True, "problems": []}


def test_repeats_a_request_that_was_lost(network):
    network.camera(network.link(), answers=[reply()], ignore=1)
    assert network.run_tool("discover", *until(1)).returncode == 0


def test_a_camera_counts_once_and_the_table_is_sorted_by_address(network):
    answers = [reply("020000000003", b"C", (10, 9, 0, 100)), reply("020000000001", b"A", (10, 9, 0, 9)),
               reply("020000000001", b"again", (10, 9, 0, 9)), reply("020000000002", b"B", (10, 9, 0, 20))]
    network.camera(network.link(), answers=answers)
    result = network.run_tool("discover", *until(3))
    assert [line.split()[2] for line in result.stdout.decode().splitlines()] == ["NAME", "A", "B", "C"]


@pytest.mark.parametrize("malformed", [
    "",
    "ee",
    reply()[:2 * 21],
    reply()[:2 * 22],
    reply()[:2 * 334],
    reply()[:2 * 504],
    reply() + "00",
    reply() + "00" * 519,
    reply() + "00" * 900,
    reply(changes=[(0, b"\xfd\xfd")]),
    reply(changes=[(0, b"\xff\xff")]),
    reply(changes=[(4, b"\xa2\x00")]),
    reply(changes=[(4, b"\xa1\x01")]),
    reply(changes=[(16, b"\x03\x00")]),
    reply(changes=[(18, b"\x01\x00")]),
    reply(changes=[(20, b"\xe4\x01")]),
    reply().replace("SSSS", "WWWW"),
    "ff" * 505,
    report(),
], ids=lambda datagram: f"{len(datagram) // 2}-{datagram[:44]}")
def test_ignores_what_is_no_reply(network, malformed):
    """Beside a valid reply, so that the test sees the tool take one and leave the other."""
    other = reply("02000000aa01", b"Valid", (10, 9, 0, 7))
    network.camera(network.link(), answers=[malformed, other])
    result = network.run_tool("discover", *until(1), "--json")
    assert (result.returncode, result.stderr) == (0, b"")
    assert [json.loads(line)["name"] for line in result.stdout.splitlines()] == ["Valid"]


HOSTILE = [
    (b"\x1b[2J\x1b]0;owned\x07", "\\x1B[2J\\x1B]0;owned\\x07", "\x1b[2J\x1b]0;owned\x07"),
    (b"a\r\nMAC forged", "a\\x0D\\x0AMAC forged", "a\r\nMAC forged"),
    (b"\xc2\x9b2J", "\\u{9B}2J", "\x9b2J"),
    (b"\xe2\x80\xaegpj", "\\u{202E}gpj", "\u202egpj"),
    (b"\xff\xfe\xc3", "\\xFF\\xFE\\xC3", "\ufffd\ufffd\ufffd"),
    (b"\x7f" * 64, "\\x7F" * 64, "\x7f" * 64),
    ("Tür 門".encode(), "Tür 門", "Tür 門"),
    ("A\u3164\u115f\u1160\uffa0".encode(), "A\\u{3164}\\u{115F}\\u{1160}\\u{FFA0}", "A\u3164\u115f\u1160\uffa0"),
    ("Z\u0301\u0302\u0303".encode(), "Z\u0301\u0302\\u{303}", "Z\u0301\u0302\u0303"),
    (b"Gate   10.9.0.9", "Gate \\x20\\x2010.9.0.9", "Gate   10.9.0.9"),
    (b'"},{"mac":"\\', '"},{"mac":"\\\\', '"},{"mac":"\\'),
]


@pytest.mark.parametrize("raw, shown, decoded", HOSTILE, ids=[repr(row[0][:12]) for row in HOSTILE])
def test_hostile_texts_reach_neither_terminal_nor_parser(network, raw, shown, decoded):
    network.camera(network.link(), answers=[reply(name=raw, changes=[(182, raw[:32])])])
    table = network.run_tool("discover", *until(1)).stdout
    assert all(byte >= 0x20 and byte != 0x7F for byte in table.replace(b"\n", b""))
    assert len(table.splitlines()) == 2
    assert f"  {shown}  Product  " in table.decode()
    lines = network.run_tool("discover", *until(1), "--json").stdout.decode("ascii").splitlines()
    assert [json.loads(line)["name"] for line in lines] == [decoded]


def test_finds_cameras_on_every_interface_or_on_the_named_one(network):
    network.camera(network.link(), answers=[reply("020000000001", b"A")])
    unasked = network.camera(network.link(), answers=[reply("020000000002", b"B", (10, 9, 1, 2))])
    everywhere = network.run_tool("discover", *until(2), "--json").stdout.splitlines()
    found = {json.loads(line)["name"]: json.loads(line)["interface"] for line in everywhere}
    assert found == {"A": "tool0", "B": "tool1"}
    before = len(unasked.close())
    unasked = network.camera(network.hosts[2], answers=[reply("020000000002", b"B", (10, 9, 1, 2))])
    named = network.run_tool("discover", "-i", "tool0", *until(1), "--json").stdout.splitlines()
    assert [json.loads(line)["name"] for line in named] == ["A"]
    assert (before > 0, unasked.close()) == (True, [])


def test_two_interfaces_of_one_address_are_both_searched(network):
    network.camera(network.link(), answers=[reply("020000000001", b"A")])
    network.camera(network.link(), answers=[reply("020000000002", b"B")])
    network.tool_host.run("ip", "address", "flush", "dev", "tool1")
    network.tool_host.run("ip", "address", "add", "10.9.0.1/24", "brd", "+", "dev", "tool1")
    network.hosts[2].run("ip", "route", "add", "10.9.0.1/32", "dev", "cam0")
    found = [json.loads(line) for line in network.run_tool("discover", *until(2), "--json").stdout.splitlines()]
    assert sorted((camera["name"], camera["interface"]) for camera in found) == [("A", "tool0"), ("B", "tool1")]


def test_finds_a_camera_of_another_subnet(network):
    host = network.link()
    host.run("ip", "address", "flush", "dev", "cam0")
    host.run("ip", "address", "add", "192.168.77.2/24", "brd", "+", "dev", "cam0")
    host.run("ip", "route", "add", "10.9.0.1/32", "dev", "cam0")
    network.camera(host, answers=[reply(address=(192, 168, 77, 2))])
    result = network.run_tool("discover", "-i", "tool0", *until(1))
    assert (result.returncode, result.stderr) == (0, b"")
    assert [line.split()[-1] for line in result.stdout.decode().splitlines()] == ["NOTE", "other-subnet"]


def test_finds_a_camera_that_is_only_heard(network):
    """Its answers go to a gateway of its own, so its presence report is all that comes."""
    host = network.link()
    process = network.start_tool("discover", "--json", "--wait", "600")
    network.wait_until_listening(process)
    network.camera(host, broadcasts=[report(changes=[(284, b"\xc0\xa8\x00\x14")])])
    network.camera(network.link(), answers=[])  # another network changes nothing
    network.wait_until_read()
    process.send_signal(signal.SIGINT)
    output, errors = process.communicate(timeout=PATIENCE)
    assert (process.returncode, errors) == (0, b"")
    heard = json.loads(output)
    assert (heard["address"], heard["answered"], heard["problems"]) == ("192.168.0.20", False, ["other-subnet"])
    assert (heard["name"], heard["httpPort"], heard["url"]) == ("Front door", None, None)


def test_two_cameras_of_one_address_are_both_shown(network):
    network.camera(network.link(), answers=[reply("020000000001", b"A"), reply("020000000002", b"B")])
    rows = network.run_tool("discover", *until(2)).stdout.decode().splitlines()
    assert [(row.split()[2], row.split()[-1]) for row in rows] == [
        ("NAME", "NOTE"), ("A", "duplicate-address"), ("B", "duplicate-address")]
    lines = network.run_tool("discover", *until(2), "--json").stdout.splitlines()
    assert [json.loads(line)["problems"] for line in lines] == [["duplicate-address"], ["duplicate-address"]]


def test_one_mac_at_two_addresses_is_shown_twice(network):
    network.camera(network.link(), answers=[reply(), reply(address=(10, 9, 0, 3), changes=[SENT_FROM_2])])
    rows = network.run_tool("discover", *until(2)).stdout.decode().splitlines()
    assert [(row.split()[1], row.split()[-1]) for row in rows] == [
        ("ADDRESS", "NOTE"), ("10.9.0.2", "duplicate-mac"), ("10.9.0.3", "duplicate-mac")]


def test_a_camera_that_answers_from_another_address_than_it_claims_is_marked(network):
    network.camera(network.link(), answers=[reply(address=(10, 9, 0, 3))])
    rows = network.run_tool("discover", *until(1)).stdout.decode().splitlines()
    assert [row.split()[-1] for row in rows] == ["NOTE", "sender-differs"]


def test_columns_and_order_of_choice(network):
    answers = [reply("020000000001", b"B", (10, 9, 0, 2)), reply("020000000002", b"A")]
    network.camera(network.link(), answers=answers)
    table = network.run_tool("discover", *until(2), "--columns", "name,dns,mac", "--sort", "name").stdout.decode()
    assert [row.split() for row in table.splitlines()] == [
        ["NAME", "DNS", "MAC"], ["A", "10.9.0.53", "02:00:00:00:00:02"], ["B", "10.9.0.53", "02:00:00:00:00:01"]]
    sheet = network.run_tool("discover", *until(2), "--csv", "--columns", "dhcp,mac", "--sort", "mac").stdout
    assert sheet == b"dhcp,mac\r\ntrue,02:00:00:00:00:01\r\ntrue,02:00:00:00:00:02\r\n"
    lines = network.run_tool("discover", *until(2), "--json", "--sort", "name").stdout.splitlines()
    assert [json.loads(line)["name"] for line in lines] == ["A", "B"]


@pytest.mark.parametrize("arguments, words", [
    (["--columns", "mac,nme"], b"there is no 'nme' among mac, address"),
    (["--columns", ""], b"there is no ''"),
    (["--sort", "nme"], b"--sort"),
    (["--json", "--csv"], b"--json holds every field"),
    (["--json", "--columns", "mac"], b"--json holds every field"),
])
def test_columns_that_there_are_not(network, arguments, words):
    result = network.run_tool("discover", *arguments)
    assert (result.returncode, result.stdout) == (2, b"")
    assert words in result.stderr


def test_csv_is_for_spreadsheets(network):
    network.camera(network.link(), answers=[reply("020000000001", b'Front "A", door'),
                                            reply("020000000002", b"=1+1\x1b", (10, 9, 0, 3), 8080, [SENT_FROM_2])])
    result = network.run_tool("discover", *until(2), "--csv")
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout == CSV_HEADING + (
        b'02:00:00:00:00:01,10.9.0.2,"Front ""A"", door",Product,1.05,http://10.9.0.2/,\r\n'
        b"02:00:00:00:00:02,10.9.0.3,'=1+1\\x1B,Product,1.05,http://10.9.0.3:8080/,\r\n")


def test_expect_ends_the_search_early(network):
    network.camera(network.link(), answers=[reply("020000000001", b"A"), reply("020000000002", b"B", (10, 9, 0, 3))])
    result = network.run_tool("discover", "--wait", "3600", "--expect", "2", "--json")
    assert (result.returncode, result.stderr, result.stdout.count(b"\n")) == (0, b"", 2)


def test_fewer_than_expected_end_with_1(network):
    network.camera(network.link(), answers=[reply()])
    result = network.run_tool("discover", "--wait", "3", "--expect", "2")
    assert (result.returncode, result.stderr) == (1, b"qvpctl: 2 cameras were expected\n")
    assert len(result.stdout.splitlines()) == 2


def test_the_landap_family(network):
    answer = reply(changes=[(18, b"\x01\x00\x38\x01")])[:2 * 334]
    camera = network.camera(network.link(), answers=[answer])
    result = network.run_tool("discover", "--family", "landap", *until(1))
    assert (result.returncode, result.stdout.count(b"\n")) == (0, 2)
    assert {request[18] for request in camera.close()} == {1}


def on_terminal(network, *arguments):
    """What the tool writes to a terminal that is its standard error."""
    ours, theirs = pty.openpty()
    result = network.run_tool(*arguments, stdout=subprocess.DEVNULL, stderr=theirs)
    os.close(theirs)
    assert result.returncode == 0
    text = b""
    while b"\n" not in text:
        text += os.read(ours, 1024)
    os.close(ours)
    return text.decode()


def test_a_terminal_gets_a_summary(network):
    network.camera(network.link(), answers=[reply()])
    assert on_terminal(network, "discover", *until(1)) == "1 camera on tool0\r\n"


def test_stopped_it_shows_what_was_found(network):
    network.camera(network.link(), answers=[reply()])
    process = network.start_tool("discover", "--wait", "600")
    network.wait_until_listening(process)
    network.cameras[0].wait_for_request()
    network.wait_until_read()
    process.send_signal(signal.SIGINT)
    output, errors = process.communicate(timeout=PATIENCE)
    assert (process.returncode, errors) == (0, b"")
    assert b"02:00:5e:10:00:af" in output


@pytest.mark.parametrize("closed, status", [("<&-", 0), ("2>&-", 0), ("<&- 2>&-", 0), (">&-", 3), ("<&- >&- 2>&-", 3)])
def test_closed_descriptors_do_not_become_the_socket(network, closed, status):
    camera = network.camera(network.link(), answers=[reply()])
    script = f'exec "$0" discover --json --wait 50 --expect 1 {closed}'
    result = subprocess.run([*network.tool_host.enter, "sh", "-c", script, TOOL], capture_output=True, timeout=120)
    assert result.returncode == status
    assert (b"Front door" in result.stdout) == (status == 0)
    assert {len(request) for request in camera.close()} == {22}


def test_without_a_camera_ends_with_1_and_names_where_it_looked(network):
    network.link()
    network.link()
    hint = b"; one of another subnet reports every 30 s, which --wait 31 hears\n"
    everywhere = b"qvpctl: no camera answered on tool0, tool1" + hint
    for arguments, error in [([], everywhere), (["-i", "tool1"], b"qvpctl: no camera answered on tool1" + hint),
                             (["--csv"], everywhere)]:
        result = network.run_tool("discover", "--wait", "0.2", *arguments)
        assert (result.returncode, result.stderr) == (1, error)
        assert result.stdout == (CSV_HEADING if "--csv" in arguments else b"")
    result = network.run_tool("discover", "--wait", "0.2", "--json")
    assert (result.returncode, result.stdout) == (1, b"")
    assert json.loads(result.stderr) == {
        "error": {"code": "not-found", "message": everywhere[8:-1].decode()}}


def test_loopback_is_used_only_when_named(network):
    camera = network.camera(network.tool_host, "lo", answers=[reply()])
    network.link()
    assert network.run_tool("discover", "--wait", "0.3").returncode == 1
    named = network.run_tool("discover", *until(1), "-i", "lo")
    assert (named.returncode, len(named.stdout.splitlines())) == (0, 2)
    # The camera, on this machine, holds the port of the reports.
    assert named.stderr == b"qvpctl: presence reports are not heard: cannot take UDP port 62976: Address already in use\n"
    assert len(camera.close()) > 0


def test_an_interface_that_cannot_be_used_is_named(network):
    network.link()
    network.tool_host.run("ip", "link", "add", "down0", "type", "veth", "peer", "name", "bare0")
    network.tool_host.run("ip", "link", "set", "bare0", "up")
    rows = [("nope0", "no such interface"), ("down0", "it is down"), ("bare0", "it has no IPv4 address"),
            ("a-name-longer-than-any-interface", "no such interface")]
    for name, reason in rows:
        result = network.run_tool("discover", "-i", name)
        assert (result.returncode, result.stdout) == (3, b"")
        assert result.stderr.decode() == f"qvpctl: interface {name}: {reason}\n"


def test_without_any_interface_ends_with_3(network):
    result = network.run_tool("discover")
    assert (result.returncode, result.stdout) == (3, b"")
    assert result.stderr == b"qvpctl: no interface is up with broadcast and an IPv4 address\n"


def test_output_that_cannot_be_written_ends_with_3(network):
    network.camera(network.link(), answers=[reply()])
    for arguments in ([], ["--csv"], ["--json"]):
        with open("/dev/full", "wb") as full:
            result = network.run_tool("discover", *until(1), *arguments, stdout=full, stderr=subprocess.PIPE)
        assert result.returncode == 3
        message = json.loads(result.stderr)["error"]["message"] if "--json" in arguments else result.stderr.decode()
        assert message.removeprefix("qvpctl: ").startswith("cannot write the output: ")
