"""Runs over many cameras that are cut off, gone on with and put back, through qvpctl alone.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/journal_test.py
"""
import os
import signal
import subprocess
from pathlib import Path

import pytest
from cameras import JSON, MARK, PLAIN, TOOL, get, living, mac
from fleet_files import PATIENCE, by_mac, cut_off, results, run, start, write


@pytest.fixture
def hall(lan, tmp_path):
    """Three cameras with one address, and a file that tells them apart and gives them a new password."""
    cameras = [living(camera) for camera in lan.cameras(3, {
        index: ["--set", "NETWORK_V4/IP=198.18.30.1"] for index in range(3)})]
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,ipv4.address,password", *(
        (camera, f"Hall {camera.number}", f"198.18.32.{camera.number}/15", "file:new") for camera in cameras))
    return cameras, site


def test_killed_twice_and_gone_on_with_and_put_back(hall):
    cameras, site = hall
    journal = Path(site + ".journal")
    words = cut_off(site, f"{mac(cameras[0])}: sent: name, port and address")
    plain = run(PLAIN, "apply", site, status=2)
    assert "site.csv.journal is of a run that was cut off: --resume goes on" in plain.err
    words += cut_off(site, f"{mac(cameras[1])}: sent: password", "--resume")
    with journal.open("a") as file:
        file.write('{"mac":"half a li')
    get(cameras[1], "name")  # so that nothing of what it was sent is still to come
    cameras[1].change_store("CAMSYSTEM", "CameraName", b"Meanwhile")  # what was there is what the first run found
    first = run(JSON, "apply", site, "--resume")
    assert {record["result"] for record in by_mac(first)[0].values()} <= {"changed", "unchanged"}
    for camera in cameras:
        assert get(camera, "name", password=MARK) == f"Hall {camera.number}"
        assert camera.store()["NETWORK_V4"]["IP"] == f"198.18.32.{camera.number}".encode()
    again = run(PLAIN, "apply", site)
    assert again.out.endswith("3 cameras: 3 unchanged; nothing had to change\n")
    back = run(JSON, "revert", str(journal), password=MARK)
    assert results(by_mac(back)[0], cameras) == ["changed"] * 3
    assert "password cannot be put back and stays as it is, in 3 cameras" in back.err
    for camera in cameras:
        assert get(camera, "name", password=MARK) == f"Camera {camera.number}"
        assert camera.store()["NETWORK_V4"]["IP"] == b"198.18.30.1"
    texts = [journal.read_text(), words, plain.err, first.out, first.err, again.out, again.err, back.out, back.err]
    assert MARK not in "".join(texts)
    assert oct(journal.stat().st_mode & 0o777) == "0o600"


def test_a_run_that_was_cut_off_is_put_back_and_over(hall):
    """Some may have the old password still; the first has somebody else's by now, and keeps nobody back."""
    cameras, site = hall
    cut_off(site, f"{mac(cameras[1])}: sent: name, port and address", "--parallel", "2")
    cameras[0].change_store("USER_ADMIN", "Password1", b"another")
    both = ["--other-password", f"@{Path(site).parent / 'new'}"]
    back, _ = by_mac(run(JSON, "revert", site + ".journal", *both, status=4))
    assert back[mac(cameras[0])]["result"] == "failed"
    for camera in cameras[1:]:
        assert camera.store()["NETWORK_V4"]["IP"] == b"198.18.30.1"
        assert camera.store()["CAMSYSTEM"]["CameraName"] == f"Camera {camera.number}".encode()
    again, _ = by_mac(run(JSON, "apply", site, status=4))
    assert results(again, cameras) == ["failed", "changed", "changed"]


def test_a_second_run_is_kept_out(hall):
    cameras, site = hall
    gate = cameras[0].gate("/etc/init.d/ipv4")
    process = start("apply", site)
    gate.wait()
    assert f"another run works with {site}" in run(PLAIN, "apply", site, status=3).err
    assert f"another run works with {site}.journal" in run(PLAIN, "revert", site + ".journal", status=3).err
    process.kill()
    process.communicate()
    gate.open()


def test_every_run_that_changes_something_has_a_journal_of_its_own(camera, tmp_path):
    for name in ("One", "Two"):
        site = write(tmp_path, "mac,name", (camera, name))
        run(PLAIN, "apply", site)
        run(PLAIN, "apply", site)
    run(PLAIN, "apply", site, "--resume")
    run(PLAIN, "revert", site + ".journal")
    assert get(camera, "name") == "One"
    run(PLAIN, "revert", site + ".journal.1")
    assert get(camera, "name") == f"Camera {camera.number}"
    assert sorted(file.name for file in tmp_path.iterdir()) == ["site.csv", "site.csv.journal", "site.csv.journal.1"]


def test_what_is_no_journal_of_this_file(camera, tmp_path):
    site = write(tmp_path, "mac,name", (camera, "One"))
    run(PLAIN, "apply", site, "--resume", status=3)
    journal = tmp_path / "other"
    run(PLAIN, "apply", site, "--journal", str(journal))
    write(tmp_path, "mac,name", (camera, "Two"))
    assert "or the file was changed since" in run(PLAIN, "apply", site, "--resume", "--journal", str(journal), status=2).err
    for source in ("secret", "-"):
        assert "must not stand on the command line" in run(
            PLAIN, "revert", str(journal), "--other-password", source, status=2).err
    assert f"{site} is no journal" in run(PLAIN, "revert", site, status=2).err
    assert get(camera, "name") == "One"


def test_a_saved_plan_is_bound_to_what_was_seen(lan, tmp_path):
    first, second = [living(camera) for camera in lan.cameras(2)]
    (tmp_path / "new").write_text(MARK + "\n")
    site = write(tmp_path, "mac,name,wifi.ssid,password", (first, "One", "Office", "file:new"), (second, "Two", "Office", ""))
    plan = tmp_path / "monday"
    shown = run(JSON, "plan", site, "-o", str(plan))
    second.change_store("CAMSYSTEM", "CameraName", b"Renamed")
    result = run(JSON, "apply", str(plan), status=2)
    records, _ = by_mac(result)
    assert results(records, [first, second]) == ["changed", "failed"]
    assert records[mac(first)]["changes"] == by_mac(shown)[0][mac(first)]["changes"]
    assert records[mac(second)]["reason"] == "it has changed since the plan was made: name"
    assert (get(second, "wifi.ssid"), get(second, "name")) == ("Workshop", "Renamed")
    second.change_store("CAMSYSTEM", "CameraName", f"Camera {second.number}".encode())
    again = run(JSON, "apply", str(plan))
    assert results(by_mac(again)[0], [first, second]) == ["unchanged", "changed"]
    write(tmp_path, "mac,name,wifi.ssid", (first, "One", "Office"), (second, "Two", "Hall"))
    assert "was changed since the plan was made" in run(PLAIN, "apply", str(plan), status=2).err
    assert MARK not in plan.read_text() + result.out + result.err + again.out + again.err


def test_a_plan_takes_no_file_away(camera, tmp_path):
    site = write(tmp_path, "mac,name", (camera, "One"))
    text = Path(site).read_text()
    assert "is there already, and is no plan" in run(PLAIN, "plan", site, "-o", site, status=3).err
    assert Path(site).read_text() == text
    for _ in range(2):  # a plan gives way to a newer one
        run(PLAIN, "plan", site, "-o", str(tmp_path / "monday"))


def test_a_damaged_line_of_a_journal_is_named(camera, tmp_path):
    site = write(tmp_path, "mac,name", (camera, "One"))
    run(PLAIN, "apply", site)
    journal = Path(site + ".journal")
    lines = journal.read_text().splitlines(keepends=True)
    journal.write_text(lines[0] + '{"mac": "02:5\n' + "".join(lines[1:]))
    assert "is damaged in line 2" in run(PLAIN, "revert", str(journal), status=2).err


def test_a_journal_that_cannot_be_written_stops_the_run(lan, tmp_path):
    """Nothing is changed that could not be put back, and the run is gone on with when there is room."""
    hall = [living(camera) for camera in lan.cameras(4)]
    site = write(tmp_path, "mac,name", *((camera, f"Hall {camera.number}") for camera in hall))
    limited = ["prlimit", "--fsize=600", "--", TOOL, "apply", site, *PATIENCE, "--parallel", "2"]
    result = subprocess.run(limited, capture_output=True, text=True, check=False, timeout=120,
                            env={**os.environ, "QVPCTL_PASSWORD": "admin"}, preexec_fn=ignore_file_size)
    assert (result.returncode, result.stderr.count("cannot write the journal")) == (3, 1), result
    assert "once more" not in result.stderr
    records, _ = by_mac(run(JSON, "apply", site, "--resume"))
    assert set(results(records, hall)) == {"unchanged", "changed"}
    assert [get(camera, "name") for camera in hall] == [f"Hall {camera.number}" for camera in hall]


def ignore_file_size():
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
