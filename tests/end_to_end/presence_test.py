"""The report that cameras broadcast unasked."""
import signal
import time

import pytest
from support.requests import basic_info
from support.tool import Listener
from support.wire import compose, ip, le16


def report(camera, sequence, fields=None):
    number = camera.number
    return compose(317, {
        0: b"\xff\xff",
        2: le16(sequence),
        4: b"\xa0\x00",
        6: camera.mac,
        12: ip(camera.address),
        18: b"\x02\x00",
        20: b"\x27\x01",
        22: [b"VC-1000", b"VC-2000", b"VC-3000"][number % 3],
        86: b"3",
        118: b"1.%02d" % (number % 100),
        150: camera.mac,
        156: b"A1",
        220: b"Camera %d" % number,
        284: ip(camera.address),
        288: b"\xff\xfe\x00\x00",
    } | (fields or {}))  # fmt: skip


@pytest.fixture(scope="module")
def first_of_all(whole_lan):
    """A camera that grows old while the other tests run, its listener, and when its first report came."""
    listener = Listener()
    camera = whole_lan.camera()
    first = listener.report(camera)
    whole_lan.running.remove(camera)  # the other tests do not stop it
    yield camera, listener, first, time.monotonic()
    listener.close()
    camera.stop()


def test_the_first_report_is_broadcast_at_the_start(first_of_all):
    camera, _, first, _ = first_of_all
    assert first == report(camera, 0)


def test_every_report_has_the_next_number_and_the_store_of_its_moment(listener, camera):
    assert listener.report(camera) == report(camera, 0)
    camera.signal(signal.SIGALRM)
    assert listener.report(camera) == report(camera, 1)
    camera.change_store("CAMSYSTEM", "CameraName", b"N" * 65)
    camera.change_store("INFO", "Product", b"P" * 64)
    camera.change_store("INFO", "HWVersion", b"H" * 40)
    camera.change_store("System", "FirmwareVersion", b"123")
    camera.signal(signal.SIGALRM)
    full = {22: b"P" * 64, 118: b"1.123", 156: b"H" * 32, 220: b"N" * 64}
    assert listener.report(camera) == report(camera, 2, full)
    camera.write_store(b"")
    camera.signal(signal.SIGALRM)
    empty = {22: bytes(64), 118: b"0.00", 156: bytes(32), 220: bytes(64)}
    assert listener.report(camera) == report(camera, 3, empty)


def test_the_number_has_sixteen_bits(listener, lan):
    """It stands least significant byte first; 300 reports show both bytes."""
    camera = lan.camera()
    for sequence in range(300):
        assert listener.report(camera)[2:4] == le16(sequence)
        camera.signal(signal.SIGALRM)


def test_a_report_during_a_slow_command(listener, tool, camera):
    gate = camera.gate("/etc/init.d/bonjour-0")
    assert listener.report(camera) == report(camera, 0)
    tool.ask(camera, basic_info(camera))
    gate.wait()
    camera.signal(signal.SIGALRM)
    assert listener.report(camera) == report(camera, 1, {220: b"Front door"})
    gate.open()
    tool.assert_in_step(camera)


def test_no_report_after_a_stop(listener, tool, lan, camera):
    gate = camera.gate("/etc/init.d/bonjour-0")
    listener.report(camera)
    tool.ask(camera, basic_info(camera))
    gate.wait()
    camera.signal(signal.SIGTERM)
    camera.wait_for_trace("Terminated")
    camera.signal(signal.SIGALRM)
    gate.open()
    assert camera.wait_for_end() == "0"
    other = lan.camera()
    # So nothing of the first one's stood before it; the camera that grows old may report at any time.
    assert listener.report(camera, other)[6:12] == other.mac


def test_both_families_are_announced_in_the_primary_form(listener, lan):
    cameras = lan.cameras(5)
    reports = [listener.report(*cameras) for _ in cameras]
    assert {data[18:20] for data in reports} == {b"\x02\x00"}
    assert {data[6:12] for data in reports} == {camera.mac for camera in cameras}


def test_the_second_report_comes_after_thirty_seconds(first_of_all):
    """The last test, because the others pass the time."""
    camera, listener, _, start = first_of_all
    assert listener.report(camera) == report(camera, 1)
    assert time.monotonic() - start > 29
    camera.signal(signal.SIGALRM)
    assert listener.report(camera) == report(camera, 2)
