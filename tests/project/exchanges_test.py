#!/usr/bin/env python3
"""The dumps of docs/protocol.md are what a camera says. Runs inside the virtual LAN:

    tests/end_to_end/in_lan tests/project/exchanges_test.py --update docs/protocol.md    makes them anew
    tests/end_to_end/in_lan tests/project/exchanges_test.py --check docs/protocol.md     exits with 1 if any differs

A dump stands between the lines "<!-- exchange NAME -->" and "<!-- end -->". The lengths have to be those of the document's
table of commands.
"""
import argparse
import difflib
import os
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TOP / "scripts"), str(TOP / "tests/end_to_end")]

from annotated_dump import annotated  # noqa: E402
from describe_protocol import Layouts  # noqa: E402
from support.camera import Lan  # noqa: E402
from support.requests import basic_info, change_password, set_datetime, simple_wifi, wifi  # noqa: E402
from support.tool import Listener, Tool  # noqa: E402
from support.wire import EVERYONE, le16, protected, request  # noqa: E402

DAEMON = os.environ.get("QVP_DAEMON") or str(TOP / "build/release/qvp")
COMMAND = re.compile(r"^\| 0x([0-9A-F]{4}) \| [^|]+ \| \w+ \| [^|]+ \| ([\dto ]+) \| [^|]+ \| (\d+) \|", re.M)
BLOCK = re.compile(r"(<!-- exchange ([\w-]+) -->\n).*?(<!-- end -->)", re.S)
THE_TIME = {"local_time": (14, "the camera's time, fourteen digits")}
COUNTER = {"sequence": (2, "counts the reports")}
TIME_AT = {"DiscoveryReply": 315, "DiscoveryRecord": 315, "DatetimeReply": 22}
SETTING = "SettingReply"


def network_adv(camera):
    return protected(0xA7, camera, {279: b"\x01\x03\x00", 282: b"gate", 346: b"a DDNS secret", 410: b"gate.example.com"}, length=675)


# The name; the request and its layout; the layout of the reply. In an order in which a camera can be asked.
EXCHANGES = [
    ("discovery", lambda camera: request(0xA1), "PacketHeader", "DiscoveryReply"),
    ("landap-discovery", lambda camera: request(0xA1, protocol=1), "PacketHeader", "DiscoveryRecord"),
    ("supported", lambda camera: request(0xA5, camera.mac, selector=0x7777), "PacketHeader", "SupportedFunctionsReply"),
    ("alert", lambda camera: request(0x200, camera.mac, selector=0x7777), "PacketHeader", "AlertInfoReply"),
    ("verify", lambda camera: protected(0xA3, camera), "ProtectedRequest", "UserVerificationReply"),
    ("wrong-password", lambda camera: protected(0xA3, camera, password=b"wrong"), "ProtectedRequest", "UserVerificationReply"),
    ("get-network", lambda camera: protected(0xA6, camera), "ProtectedRequest", "NetworkAdvReply"),
    ("set-network", network_adv, "NetworkAdvRequest", SETTING),
    ("get-wifi", lambda camera: protected(0xA8, camera), "ProtectedRequest", "WifiReply"),
    ("set-wifi", lambda camera: wifi(camera, ssid=b"Reception", key=b"a wireless key"), "WifiRequest", SETTING),
    ("get-simple-wifi", lambda camera: protected(0xAF, camera), "ProtectedRequest", "SimpleWifiReply"),
    ("set-simple-wifi", lambda camera: simple_wifi(camera, ssid=b"Workshop", key=b"another wireless key"), "SimpleWifiRequest", SETTING),
    ("start-survey", lambda camera: protected(0xB1, camera), "ProtectedRequest", SETTING),
    ("fetch-survey", lambda camera: protected(0xAE, camera), "ProtectedRequest", "SiteListReply"),
    ("get-time", lambda camera: protected(0xAC, camera), "ProtectedRequest", "DatetimeReply"),
    ("set-time", lambda camera: set_datetime(camera, b"20260131102030", zone=59, daylight_saving=1), "DatetimeRequest", SETTING),
    ("set-basic", lambda camera: basic_info(camera, b"Front door"), "BasicInfoRequest", SETTING),
    ("refused", lambda camera: basic_info(camera, b"Front door", port=8088), "BasicInfoRequest", SETTING),
    ("password", lambda camera: change_password(camera, b"a new password"), "ChangeAdminRequest", SETTING),
    ("commit", lambda camera: protected(0xC0, camera, password=b"a new password"), "ProtectedRequest", SETTING),
    ("reboot", lambda camera: protected(0x103, camera, password=b"a new password"), "ProtectedRequest", SETTING),
    ("factory-reset", lambda camera: protected(0xAB, camera, password=b"a new password"), "ProtectedRequest", SETTING),
]  # fmt: skip


def numbered(datagram, number):
    """With a sequence number of this page, and the length that stands behind the header."""
    return datagram[:2] + le16(number) + datagram[4:20] + le16(len(datagram) - 22) + datagram[22:]


def shown(what, data, lines):
    return [f"{what}, {len(data)} bytes", *lines]


def lengths_of(document):
    """By opcode, the shortest and longest request, and the reply."""
    return {int(code, 16): (int(asked.split()[0]), int(asked.split()[-1]), int(answered))
            for code, asked, answered in COMMAND.findall(document)}


def exchange(layouts, lengths, tool, camera, number, row):
    name, compose, asks, answers = row
    asked = numbered(compose(camera), number)
    answer = tool.ask(camera, asked, EVERYONE if asked[6:12] == b"\xff" * 6 else None)
    shortest, longest, answered = lengths[int.from_bytes(asked[4:6], "little")]
    assert shortest <= len(asked) <= longest, f"{name}: a request of {len(asked)} bytes"
    assert len(answer) == (334 if answers == "DiscoveryRecord" else answered), f"{name}: a reply of {len(answer)} bytes"
    time = TIME_AT.get(answers)
    assert time is None or answer[time : time + 14].isdigit(), answer
    open_header = name == "discovery"
    return [*shown("request", asked, annotated(layouts, asks, asked, {}, open_header)), "",
            *shown("reply", answer, annotated(layouts, answers, answer, THE_TIME, open_header))]


def report(layouts, listener, camera):
    data = listener.report(camera)
    return shown("presence report", data, annotated(layouts, "PresenceReport", data, COUNTER, True))


def record(lengths):
    layouts, dumps = Layouts(TOP / "protocol"), {}
    lan, listener, tool = Lan(["--daemon", DAEMON]), Listener(), Tool()
    camera = lan.camera()
    camera.replace_script("/var/reboot", "#!/bin/sh\n")  # none of the requests behind it is to be lost
    dumps["presence"] = report(layouts, listener, camera)
    for number, row in enumerate(EXCHANGES, start=1):
        dumps[row[0]] = exchange(layouts, lengths, tool, camera, number, row)
    lan.stop_all()
    return dumps


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group(required=True)
    action.add_argument("--update", action="store_true")
    action.add_argument("--check", action="store_true")
    parser.add_argument("document", type=pathlib.Path)
    options = parser.parse_args()
    before = options.document.read_text()
    dumps = record(lengths_of(before))
    after = BLOCK.sub(lambda match: f"{match[1]}```text\n" + "\n".join(dumps[match[2]]) + f"\n```\n{match[3]}", before)
    missing = dumps.keys() - {match[2] for match in BLOCK.finditer(before)}
    if options.update:
        options.document.write_text(after)
    elif before != after:
        print("\n".join(difflib.unified_diff(before.splitlines(), after.splitlines(), "the document", "the cameras", lineterm="")))
    print(f"{len(dumps)} exchanges;", "not in the document:" if missing else "all in the document", *sorted(missing))
    return 1 if missing or (options.check and before != after) else 0


if __name__ == "__main__":
    sys.exit(main())
