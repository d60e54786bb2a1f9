"""The dissector, on a capture of real cameras and of what can go wrong on a wire; all of it through one run of tshark.

pytest itself runs inside the virtual LAN:
  tests/end_to_end/in_lan /usr/bin/python3 -m pytest tests/wireshark/dissector_test.py
QVP_UPDATE_GOLDEN=1 writes down what is shown instead of comparing it.
"""
import base64
import difflib
import os
import re
import subprocess
from pathlib import Path

import pytest
import shown
from capture import PORT
from lookalikes import LookAlikes
from oddities import Oddities
from session import DDNS_PASSWORD, NEW_PASSWORD, PASSWORD, SECRETS, WEP_KEY, WIFI_KEY, Session
from support.tool import ADDRESS

GOLDEN = Path(__file__).parent / "golden"
QVPCTL = os.environ.get("QVPCTL") or str(shown.TREE / "build/release/qvpctl")
UPDATE = os.environ.get("QVP_UPDATE_GOLDEN") == "1"


def compare(name, text):
    file = GOLDEN / name
    if UPDATE:
        file.parent.mkdir(exist_ok=True)
        file.write_text(text)
    before = file.read_text() if file.exists() else ""
    differences = difflib.unified_diff(before.splitlines(), text.splitlines(), name, "shown", lineterm="")
    assert before == text, "\n".join(differences)


def run_tool(*arguments, password=PASSWORD, status=0):
    environment = os.environ | {"QVPCTL_PASSWORD": password.decode(), "NEW": NEW_PASSWORD.decode()}
    done = subprocess.run([QVPCTL, *arguments], env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, timeout=120, check=False)
    assert done.returncode == status, done.stderr


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
def tool_frames(session, odd):
    """What passes the LAN while the tool is used."""
    session.ear.heard()
    run_tool("get", "Camera 1")
    run_tool("set", "Camera 1", "name=Gate")
    run_tool("scan", "Gate")
    run_tool("passwd", "Gate", "--new", "env:NEW")
    run_tool("reboot", "Gate", password=NEW_PASSWORD)
    run_tool("set", "Camera 2", "name=Yard", status=4)
    return [session.capture.udp(*datagram, after=1000) for datagram in session.ear.heard()]


@pytest.fixture(scope="module")
def look_alikes(session, odd, tool_frames):
    return LookAlikes(session.capture, odd)


@pytest.fixture(scope="module")
def cut(session, look_alikes, home):
    """{frame: (the whole datagram, how many bytes there are)}: every kind at every length, on a port of its own."""
    session.capture.write(home / "odd.pcap")
    kinds = {(magic, opcode, length): data for (magic, opcode, _, length), data in session.kinds.items()}
    found = {}
    for port, data in enumerate(kinds.values(), 50000):
        for length in range(len(data) + 1):
            found[session.capture.udp((ADDRESS, port), ("198.18.1.1", PORT), data[:length])] = data, length
    return found


@pytest.fixture(scope="module")
def frames(session, odd, look_alikes, cut, home):
    session.capture.write(home / "all.pcap")
    # QUIC takes much for its own; here only this dissector is to decide.
    return shown.frames(home / "all.pcap", home, "-2", "--disable-protocol", "quic")


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


def test_what_the_tool_does_reads_like_a_story(tool_frames, frames):
    """In this order, whatever else stands between: the tool looks for cameras before each step."""
    infos = [frames[number].info for number in tool_frames]
    one, two = "02:51:56:50:00:01", "02:51:56:50:00:02"
    story = [
        "Discovery request to every camera", 'Discovery reply: "Camera 1" at 198.18.1.1',
        f"Get wireless settings request to {one}", 'Get wireless settings reply: SSID "Workshop", encryption AES',
        f'Set basic information request to {one}: "Gate" at 198.18.1.1',
        "Set basic information reply: done, away for 10 s",
        f"Start a site survey request to {one}", "Start a site survey reply: done, away for 20 s",
        "Fetch the site survey reply: 1 network",
        f"Change administrator password request to {one}", "Change administrator password reply: done",
        f"Reboot request to {one}", "Reboot reply: done",
        f'Set basic information request to {two}: "Yard" at 198.18.1.2',
        "Set basic information reply: refused, wrong user name or password",
    ]  # fmt: skip
    rest = iter(infos)
    assert all(any(line == info for info in rest) for line in story), "\n".join(infos)


def test_the_tool_makes_no_faults(tool_frames, frames):
    """Nor do cameras: what is worth a word is a refusal, or of the network."""
    kinds = {kind for number in tool_frames for kind, _ in frames[number].experts()}
    assert kinds <= {"Warning/Response", "Note/Sequence", "Warning/Sequence"}
    assert "Warning/Response" in kinds


def lines_of_case(frames, numbers):
    for number in numbers:
        frame = frames[number]
        yield shown.stable(frame.line, number)
        for link in frame.links():
            yield "    " + shown.stable(link, number)
        for kind, text in frame.experts():
            yield f"    {kind}: {text}"


def test_oddities(odd, frames):
    cases = ("\n".join([f"# {case}", *lines_of_case(frames, numbers)]) for case, numbers in odd.cases.items())
    compare("oddities.txt", "\n\n".join(cases) + "\n")


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
    assert ours.count('<field name="qvp.password"') >= 40
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
    columns = ",".join(f"COUNT(frame)frame && ({one})" for one in filters)
    text = shown.tshark(capture, home, "-2", "-q", "-z", f"io,stat,0,{columns}")
    row = next(line for line in text.splitlines() if "<>" in line)
    return dict(zip(filters, map(int, row.strip("| ").split("|")[1:])))


def test_every_filter_of_the_manual_finds_something(cut, home):
    found = counts(home / "odd.pcap", home, filters_of_the_manual())
    assert len(found) > 8
    assert all(found.values()), found


def test_filters_find_what_they_say(session, home):
    found = counts(home / "session.pcap", home, ["qvp.result != 0", "qvp.status == 3", "qvp.time", "qvp.response_in"])
    assert found == {"qvp.result != 0": 8, "qvp.status == 3": 2, "qvp.time": 46, "qvp.response_in": 44}


# --- Installing -------------------------------------------------------------------------------------------------------

def test_the_folder_is_all_there_is_to_install(session, home, tmp_path):
    """By the commands of the manual. Wireshark starts every file of the folder, in whatever order."""
    commands = re.search(r"^```sh\n(mkdir .*?)^```", (shown.TREE / "wireshark/README.md").read_text(), re.M | re.S)[1]
    subprocess.run(["sh", "-e", "-c", commands], cwd=shown.TREE, env=os.environ | {"HOME": str(tmp_path)}, check=True)
    installed = shown.tshark(home / "session.pcap", tmp_path, script=())
    assert installed == shown.tshark(home / "session.pcap", home)
    assert "Discovery request to every camera" in installed
