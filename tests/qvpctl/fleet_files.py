"""What the tests of the fleet's commands share: files of cameras, and what a run says of each camera."""
import os
import signal
import subprocess

import cameras
from cameras import mac


def run(form, command, *arguments, **options):
    """Cameras on this machine answer within milliseconds, and every run waits for all answers."""
    return cameras.run(form, command, *arguments, "--wait", "0.5", **options)


def write(folder, heading, *rows, name="site.csv"):
    """A table; a row is a camera, or its MAC, and its cells."""
    lines = [heading, *(",".join([row[0] if isinstance(row[0], str) else mac(row[0]), *row[1:]]) for row in rows)]
    file = folder / name
    file.write_text("\n".join(lines) + "\n")
    return str(file)


def by_mac(result):
    """{MAC: record} of the cameras, and the summary."""
    *cameras, last = result.records
    assert "summary" in last, result
    return {record["mac"]: record for record in cameras}, last["summary"]


def results(records, of):
    """What came of these cameras, in their order."""
    return [records[mac(camera)]["result"] for camera in of]


def cut_off(site, words, *options):
    """Kills a run as soon as it says that; all it has said."""
    process = subprocess.Popen([cameras.TOOL, "apply", site, "--wait", "0.5", *options], stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, text=True, env={**os.environ, "QVPCTL_PASSWORD": "admin"})
    said = ""
    for line in process.stderr:
        said += line
        if words in line:
            process.kill()
            break
    process.wait()
    assert words in said and process.returncode == -signal.SIGKILL, said
    return said
