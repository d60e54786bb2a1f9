"""The dissector, on a capture of real cameras and of what can go wrong on a wire; all of it through one run of tshark.

pytest itself runs inside the virtual LAN:
  tests/end_to_end/in_lan /usr/bin/python3 -m pytest tests/wireshark/dissector_test.py
QVP_UPDATE_GOLDEN=1 writes down what is shown instead of comparing it.
"""
import base64
import difflib
import os
import re
from pathlib import Path

import pytest
import shown
from capture import PORT
from lookalikes import LookAlikes
from oddities import Oddities
from session import DDNS_PASSWORD, NEW_PASSWORD, PASSWORD, SECRETS, WEP_KEY, WIFI_KEY, Session
from support.tool import ADDRESS

GOLDEN = Path(__file__).parent / "golden"
UPDATE = os.environ.get("QVP_UPDATE_GOLDEN") == "1"


def compare(name, text):
    file = GOLDEN / name
    if UPDATE:
        file.parent.mkdir(exist_ok=True)
        file.write_text(text)
    before = file.read_text() if file.exists() else ""
    differences = difflib.unified_diff(before.splitlines(), text.splitlines(), name, "shown", lineterm="")
    assert before == text, "\n".join(differences)


@pytest.fixture(scope="module")
def home(tmp_path_factory):
    return tmp_path_factory.mktemp("home")


@pytest.fixture(scope="module")
def session(whole_lan, home):
    session = Session(whole_lan)
    session.run().capture.write(home / "session.pcap")
    yield session
    session.close()
    whole_lan.stop_all()


@pytest.fixture(scope="module")
def odd(session):
    return Oddities(session)


@pytest.fixture(scope="module")
def look_alikes(session, odd):
    return LookAlikes(session.capture, odd)


@pytest.fixture(scope="module")
def cut(session, look_alikes):
    """{frame: (the whole datagram, how many bytes there are)}: every kind at every length, each on a port of its own."""
    kinds = {(magic, opcode, length): data for (magic, opcode, _, length), data in session.kinds.items()}
    found = {}
    for port, data in enumerate(kinds.values(), 50000):
        for length in range(len(data) + 1):
            found[session.capture.udp((ADDRESS, port), ("198.18.1.1", PORT), data[:length])] = data, length
    return found


@pytest.fixture(scope="module")
def frames(session, odd, look_alikes, cut, home):
    session.capture.write(home / "all.pcap")
    return shown.frames(home / "all.pcap", home, "-2")


def test_story(session, frames):
    numbers = [number for step in session.steps.values() for number in step]
    compare("story.txt", "".join(shown.stable(frames[number].line, number) + "\n" for number in sorted(numbers)))


def test_details(session, frames):
    """Of the landap family only what differs from the primary one."""
    for step, numbers in session.steps.items():
        if step.startswith("landap_") and step not in ("landap_discovery", "landap_supported"):
            continue
        trees = ["\n".join(shown.stable(line, number) for line in frames[number].tree) for number in numbers]
        compare(f"details/{step}.txt", "\n\n".join(trees) + "\n")


def lines_of_case(frames, numbers):
    for number in numbers:
        frame = frames[number]
        yield shown.stable(frame.line, number)
        for link in frame.links():
            yield "    " + shown.stable(link, number)
        for kind, text in frame.experts():
            yield f"    {kind}: {text}"


def test_oddities(odd, frames):
    text = "".join(f"# {case}\n" + "\n".join(lines_of_case(frames, numbers)) + "\n\n" for case, numbers in odd.cases.items())
    compare("oddities.txt", text)


def test_bytes_that_are_no_text_are_shown_as_such(odd, frames):
    case = odd.cases["names of control characters and bytes that are no UTF-8"]
    assert r'"\x1b[31m\xff\xc3(" at' in frames[case[0]].info


def test_a_quoted_datagram_is_no_part_of_an_exchange(odd, frames):
    frame = frames[odd.cases["quoted by an ICMP error"][2]]
    assert frame.protocol == "ICMP"
    assert frame.tree[0].startswith("IP Camera Configuration, Discovery reply")
    assert (frame.experts(), frame.links()) == ([], [])


def test_look_alikes_are_left_alone(look_alikes, frames):
    taken = [number for number in look_alikes.strangers + look_alikes.unsound if frames[number].is_ours]
    assert not taken, [frames[number].line for number in taken]


def test_other_ports(look_alikes, frames):
    missed = [number for number in look_alikes.sound if not frames[number].is_ours]
    assert not missed, [frames[number].line for number in missed]


def test_cut_at_every_length(cut, frames):
    """Nothing breaks, and what lacks a byte is never taken for whole."""
    assert len(cut) > 5000
    for number, (datagram, length) in cut.items():
        frame = frames[number]
        least = 6 if datagram[:2] == b"\xff\xff" else 2
        # The text at the end of this one may be as short as its NUL.
        whole = 171 if datagram[:6:4] + datagram[:2] == b"\xfd\xad\xfd\xfd" else len(datagram)
        what = f"{length} bytes of {len(datagram)}: {frame.line}"
        assert frame.is_ours == (length >= least), what
        if frame.is_ours:
            assert frame.info.startswith("[Malformed]") == (length < whole), what
            assert any(kind == "Error/Malformed" for kind, _ in frame.experts()) == (length < whole), what


# --- Passwords --------------------------------------------------------------------------------------------------------

def traces(secret):
    """How a secret may be written."""
    encoded = base64.b64encode(secret)
    return {secret.decode(), encoded.decode(), encoded.rstrip(b"=").decode(), secret.hex(), encoded.hex()}


def test_passwords_are_hidden(session, home):
    """Of the export with everything, this protocol's part: the packets' bytes by themselves stand elsewhere in it."""
    text = shown.tshark(home / "session.pcap", home, "-2", "-T", "pdml")
    ours = "".join(re.findall(r'<proto name="qvp".*?</proto>', text, re.S))
    assert ours.count('<field name="qvp.password"') > 40
    found = {trace for secret in SECRETS for trace in traces(secret) if trace in ours}
    assert not found


def test_passwords_are_hidden_wherever_they_are(odd, frames):
    """Also of datagrams that are not as they should be."""
    text = "\n".join(line for frame in frames.values() for line in [frame.info, *frame.tree])
    assert "Camera name: Scheune" in text
    found = {trace for secret in SECRETS for trace in traces(secret) if trace in text}
    assert not found


SECRET_FIELDS = {
    "password": PASSWORD, "new_password": NEW_PASSWORD, "pre_shared_key": WIFI_KEY, "key": WIFI_KEY,
    "wep_key": WEP_KEY, "ddns_password": DDNS_PASSWORD, "pppoe_password": b"Daisy66-pppoe",
}  # fmt: skip


def test_passwords_are_shown_when_the_preference_says_so(session, home):
    fields = [word for name in SECRET_FIELDS for word in ("-e", f"qvp.{name}")]
    text = shown.tshark(home / "session.pcap", home, "-o", "qvp.show_passwords:TRUE", "-T", "fields", *fields)
    columns = list(zip(*(line.split("\t") for line in text.splitlines())))
    for (name, secret), column in zip(SECRET_FIELDS.items(), columns):
        assert secret.decode() in ",".join(column).split(","), name
    assert "hidden" not in text


# --- Filters ----------------------------------------------------------------------------------------------------------

def filters_of_the_manual():
    text = (shown.TREE / "wireshark/README.md").read_text()
    return re.findall(r"^\| `([^`]+)` \|", text, re.M)


def counts(capture, home, filters):
    """How many frames each filter finds."""
    text = shown.tshark(capture, home, "-2", "-q", "-z", "io,stat,0," + ",".join(f"COUNT(frame){one} && frame" for one in filters))
    row = next(line for line in text.splitlines() if "<>" in line)
    return dict(zip(filters, map(int, row.strip("| ").split("|")[1:])))


def test_every_filter_of_the_manual_finds_something(session, odd, look_alikes, home):
    found = counts(home / "all.pcap", home, filters_of_the_manual())
    assert len(found) > 8
    assert all(found.values()), found


def test_filters_find_what_they_say(session, home):
    found = counts(home / "session.pcap", home, ["qvp.result != 0", "qvp.status == 3", "qvp.time", "qvp.response_in"])
    assert found == {"qvp.result != 0": 8, "qvp.status == 3": 2, "qvp.time": 45, "qvp.response_in": 43}
