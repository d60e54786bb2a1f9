"""qvpctl watch --metrics against virtual cameras; what it writes is read by the parser of Prometheus' own Python client.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/metrics_test.py
"""
import re
import signal
import subprocess
import time

import pytest
from cameras import PLAIN, TOOL, TREE, assert_fails, living, mac, run
from output_schema import check_output
from prometheus_client.parser import text_string_to_metric_families
from support.waiting import PATIENCE, wait_until

COUNTERS = {"qvp_reports_ignored_total", "qvp_camera_reports_total", "qvp_camera_restarts_total",
            "qvp_camera_address_changes_total"}
GAUGES = {"qvp_cameras", "qvp_camera_info", "qvp_camera_last_report_timestamp_seconds"}


def metrics(text):
    """{name: [(labels, value)...]}; every sample has to be of a metric that is described."""
    samples = {}
    for family in text_string_to_metric_families(text):
        name = family.name + ("_total" if family.type == "counter" else "")
        assert name in (COUNTERS if family.type == "counter" else GAUGES), family
        assert family.documentation
        assert {sample.name for sample in family.samples} <= {name}
        samples[name] = [(sample.labels, sample.value) for sample in family.samples]
    assert samples.keys() == COUNTERS | GAUGES
    return samples


class Watch:
    """The command while it runs, with a folder of its own for the file."""

    def __init__(self, folder, prefix=()):
        self.folder = folder / "metrics"
        self.folder.mkdir()
        self.file = self.folder / "qvp.prom"
        self.printed = folder / "printed"
        with self.printed.open("wb") as output:
            self.process = subprocess.Popen([*prefix, TOOL, "watch", "--json", "--metrics", self.file],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE)
        wait_until(lambda: self.file.exists() or self.process.poll() is not None, "the file")

    def metrics(self):
        return metrics(self.file.read_bytes().decode())

    def of(self, camera, name):
        """The value of that camera; None: it has none."""
        values = [value for labels, value in self.metrics()[f"qvp_camera_{name}"] if labels == {"mac": mac(camera)}]
        return values[0] if values else None

    def info(self, camera):
        found = [labels for labels, value in self.metrics()["qvp_camera_info"] if labels["mac"] == mac(camera) and value == 1]
        assert len(found) <= 1
        return found[0] if found else None

    def wait_for(self, camera, name, value):
        wait_until(lambda: self.of(camera, name) == value, f"{name} to be {value}")

    def wait_for_info(self, camera, name, text):
        wait_until(lambda: (self.info(camera) or {}).get(name) == text, f"{name} to be {text!r}")

    def wait_for_report(self, camera):
        """One more than those so far; on a slow machine there may be others, as their time has come."""
        before = self.of(camera, "reports_total") or 0
        camera.signal(signal.SIGALRM)
        wait_until(lambda: (self.of(camera, "reports_total") or 0) > before, "a report")

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        _, errors = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, errors


@pytest.fixture
def watch(tmp_path):
    result = Watch(tmp_path)
    yield result
    result.process.kill()
    result.process.communicate()


def test_cameras_appear(lan, watch):
    begin = int(time.time())
    assert watch.metrics()["qvp_cameras"] == [({}, 0)]
    cameras = lan.cameras(2)
    wait_until(lambda: watch.metrics()["qvp_cameras"] == [({}, 2)], "two cameras")
    for camera in cameras:
        stored = {key: text.decode() for key, text in camera.store()["INFO"].items()}
        assert watch.info(camera) == {
            "mac": mac(camera), "name": f"Camera {camera.number}", "product": stored["Product"],
            "firmware": f"1.{camera.number:02}", "hardware": stored["HWVersion"], "address": camera.address}
        assert begin <= watch.of(camera, "last_report_timestamp_seconds") <= time.time()
        assert watch.of(camera, "reports_total") >= 1
        assert (watch.of(camera, "restarts_total"), watch.of(camera, "address_changes_total")) == (0, 0)
    assert watch.metrics()["qvp_reports_ignored_total"] == [({}, 0)]


def test_it_prints_as_without_and_takes_its_file_away(camera, watch):
    watch.wait_for_report(camera)
    assert watch.stop() == (0, b"")
    assert list(watch.folder.iterdir()) == []
    records, _ = check_output("watch", watch.printed.read_text(), "")
    assert {record["mac"] for record in records} == {mac(camera)}


def test_a_daemon_that_starts_again(lan, watch):
    camera = living(lan.camera("--reboot-delay", "0.5"))
    wait_until(lambda: watch.info(camera), "its first report")
    watch.wait_for_report(camera)
    assert watch.of(camera, "restarts_total") == 0
    for restarts in (1, 2):  # the second one in less time than a camera takes from report to report
        run(PLAIN, "reboot", mac(camera), "--no-wait")
        watch.wait_for(camera, "restarts_total", restarts)
    assert watch.of(camera, "reports_total") >= 4


def test_another_address(camera, watch):
    watch.wait_for_report(camera)
    run(PLAIN, "set", mac(camera), f"ipv4.address=198.18.44.{camera.number}/15")
    camera.signal(signal.SIGALRM)
    watch.wait_for_info(camera, "address", f"198.18.44.{camera.number}")
    assert watch.of(camera, "address_changes_total") == 1
    assert watch.of(camera, "restarts_total") == 0


def test_another_firmware(camera, watch):
    watch.wait_for_report(camera)
    camera.change_store("System", "FirmwareVersion", b"99")
    camera.signal(signal.SIGALRM)
    watch.wait_for_info(camera, "firmware", "1.99")


@pytest.mark.parametrize("stored, label", [
    (rb'"a\"} 1\nqvp_cameras 99\\"', 'a"} 1\nqvp_cameras 99\\'),
    (rb'"\x1b[2J\r\xff\xc2\x9b"', "\ufffd[2J\ufffd\ufffd\ufffd"),
    ("Tür 門".encode(), "Tür 門"),
])
def test_a_hostile_name(camera, watch, stored, label):
    camera.change_store("CAMSYSTEM", "CameraName", stored)
    watch.wait_for_report(camera)
    watch.wait_for_info(camera, "name", label)  # a report of before may have come last
    assert watch.metrics()["qvp_cameras"] == [({}, 1)]


# With --json the tool writes its file, then the line of the report, then its file again.
@pytest.mark.parametrize("call, count, is_whole", [("write", 3, False), ("rename", 2, True)])
def test_killed_while_it_writes_it_leaves_the_file_of_before(camera, tmp_path, call, count, is_whole):
    kill = ["strace", "-qq", "-o", "/dev/null", "-e", f"trace={call}", "-e", f"inject={call}:signal=KILL:when={count}"]
    watch = Watch(tmp_path, kill)
    camera.signal(signal.SIGALRM)
    assert watch.process.wait(PATIENCE) == -signal.SIGKILL
    assert watch.metrics()["qvp_cameras"] == [({}, 0)]
    beside, = set(watch.folder.iterdir()) - {watch.file}
    assert beside.name.startswith("qvp.prom.")
    assert beside.read_text() == "" or is_whole and metrics(beside.read_text())["qvp_cameras"] == [({}, 1)]


def test_killed_it_leaves_a_whole_file(camera, watch):
    watch.wait_for_report(camera)
    assert watch.stop(signal.SIGKILL)[0] == -signal.SIGKILL
    assert watch.of(camera, "reports_total") >= 1


def test_a_file_that_cannot_be_written(tmp_path):
    assert_fails(3, "watch", "--metrics", str(tmp_path / "none/qvp.prom"), words="none/qvp.prom: No such file or directory")
    assert_fails(3, "watch", "--metrics", str(tmp_path), words=f"{tmp_path}: it is no regular file")


def test_the_page_names_what_there_is():
    page = (TREE / "docs/how-to/watch-with-prometheus.md").read_text()
    assert set(re.findall(r"\bqvp_[a-z_]*[a-z]\b", page)) == COUNTERS | GAUGES
