"""Which cameras a site has: qvpctl is asked on the host of the site, over the system's ssh."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json
import re
import shlex
import subprocess

MAC = re.compile(r"[0-9a-f]{2}(:[0-9a-f]{2}){5}\Z")
SSH_HAS_FAILED = 255


class SiteError(Exception):
    """Why a site could not tell its cameras."""


def discover_command(site):
    command = [site["qvpctl"], "discover", "--json", "--wait=%s" % site["wait"]]
    return command + (["--interface=" + site["interface"]] if site["interface"] else [])


def command_of(site, connect_timeout):
    """What is run here. What the site says of ssh comes first, as of an option the first counts."""
    remote = discover_command(site)
    if not site["host"]:
        return remote
    options = list(site["ssh_args"]) + ["-T", "-o", "BatchMode=yes", "-o", "ConnectTimeout=%d" % connect_timeout]
    for option, value in [("-p", site["port"]), ("-i", site["private_key_file"]), ("-l", site["user"])]:
        options += [option, str(value)] if value else []
    return ["ssh"] + options + ["--", site["host"], " ".join(shlex.quote(word) for word in remote)]


def lines_of(text):
    """The objects of a stream; what is none was not said by qvpctl."""
    for line in text.splitlines():
        try:
            record = json.loads(line)
        except ValueError:
            continue
        if isinstance(record, dict):
            yield record


def reason_of(done, site):
    errors = [one["error"] for one in lines_of(done.stderr) if isinstance(one.get("error"), dict)]
    if errors:
        return errors[-1].get("code"), str(errors[-1].get("message"))
    said = done.stderr.strip().splitlines()
    words = said[-1] if said else "it ended with status %d" % done.returncode
    return None, ("ssh: " if site["host"] and done.returncode == SSH_HAS_FAILED else "") + words


def discover(site, timeout):
    """The records of its cameras, each with a sound MAC. Throws SiteError."""
    patience = timeout + 4 * site["wait"]
    try:
        done = subprocess.run(command_of(site, timeout), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=patience, check=False, encoding="utf-8", errors="replace")
    except subprocess.TimeoutExpired:
        raise SiteError("it has not answered within %d seconds" % patience)
    except OSError as error:
        raise SiteError("%s cannot be run: %s" % (error.filename, error.strerror))
    if done.returncode != 0:
        code, words = reason_of(done, site)
        if code != "not-found":
            raise SiteError(words)
    return [one for one in lines_of(done.stdout) if MAC.match(str(one.get("mac")))]
