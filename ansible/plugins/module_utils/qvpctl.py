"""How the modules run qvpctl on the host of a site, and what its answers mean."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

import errno
import json
import os
import re
import subprocess

from ansible.module_utils.basic import AnsibleModule

ARGUMENTS = {
    "mac": {"type": "str", "required": True},
    "username": {"type": "str"},
    "password": {"type": "str", "no_log": True},
    "password_file": {"type": "path", "no_log": False},
    "interface": {"type": "str"},
    "wait": {"type": "float"},
    "executable": {"type": "path", "default": "qvpctl"},
}

# What qvpctl ends with when a camera's own line has the reason.
CODES = {1: "not-found", 2: "bad-value", 3: "this-machine", 4: "credentials-refused", 5: "refused", 6: "unverified"}

ADVICE = {
    "not-found": "does it have power, and is it on the LAN of this host? It must be heard at the interface that was named",
    "ambiguous": "nothing was sent",
    "bad-value": "nothing was sent",
    "usage": "this qvpctl and this collection do not fit together; nothing was sent",
    "this-machine": "see to the host of the site",
    "credentials-refused": "give the present password in password or password_file",
    "refused": "the camera will refuse the same request again",
    "unverified": "it was sent and is not seen in the camera; run again to see what it has now",
}


def is_secret(key):
    """By its last word, so that what was put into a wrong place is hidden before anything is run."""
    return key.rsplit(".", 1)[-1] in ("password", "key")


class CameraModule(AnsibleModule):
    """A module that hides values which should have been given as secrets, from its first line in a log on."""

    def __init__(self, arguments=None, **options):
        super(CameraModule, self).__init__(
            argument_spec=dict(ARGUMENTS, **(arguments or {})), supports_check_mode=True,
            mutually_exclusive=[("password", "password_file")], **options)
        if not re.match(r"([0-9A-Fa-f]{2}[:-]){5}[0-9A-Fa-f]{2}$", self.params["mac"]):
            self.fail_json(msg="mac is the camera's MAC, such as 02:00:5e:10:00:01")
        self.params["mac"] = self.params["mac"].replace("-", ":").lower()

    def _log_invocation(self):
        for key, value in (self.params.get("settings") or {}).items():
            if is_secret(key) and value:
                self.no_log_values.add(str(value))
        super(CameraModule, self)._log_invocation()

    def fail_of(self, code, message, **more):
        """In words that say what is to be done about it."""
        advice = ADVICE.get(code)
        self.fail_json(msg="%s: %s%s" % (self.params["mac"], message, " (%s)" % advice if advice else ""),
                       code=code, **more)


class Secrets:
    """Secrets in memory that a child reads as files; there is no file of them on any disk."""

    def __init__(self):
        self.descriptors = []

    def add(self, text):
        """The path of a file whose first line it is."""
        descriptor = os.memfd_create("secret")
        self.descriptors.append(descriptor)
        os.write(descriptor, text.encode("utf-8", "surrogateescape") + b"\n")
        return "/proc/self/fd/%d" % descriptor

    def close(self):
        while self.descriptors:
            os.close(self.descriptors.pop())


class Answer:
    """What qvpctl said: its records, its error or None, and its status."""

    def __init__(self, status, output, notes):
        self.status = status
        self.records = [json.loads(line) for line in output.splitlines()]
        said = [json.loads(line) for line in notes.splitlines()]
        self.notes = [one["note"] for one in said if "note" in one]
        self.error = said[-1].get("error") if said else None


def common_options(module, secrets):
    options = ["--json"]
    for option, value in [("--user", module.params["username"]), ("--interface", module.params["interface"]),
                          ("--wait", module.params["wait"]), ("--password-file", module.params["password_file"])]:
        if value is not None:
            options.append("%s=%s" % (option, value))
    if module.params["password"] is not None:
        options.append("--password-file=" + secrets.add(one_line(module, "password", module.params["password"])))
    return options


def one_line(module, key, secret):
    if not secret or "\n" in secret or "\r" in secret:
        module.fail_of("bad-value", "%s has to be one line that is not empty" % key)
    return secret


def execute(command, secrets):
    """In a session of its own: nobody is asked for a password, and a lost connection does not end it half way."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               pass_fds=secrets.descriptors, start_new_session=True)
    output, notes = process.communicate()
    return process.returncode, output.decode("utf-8", "replace"), notes.decode("utf-8", "replace")


def run(module, secrets, command, *words):
    """The answer to a command of qvpctl; ends the module where there is none."""
    line = [module.params["executable"], command] + list(words) + common_options(module, secrets)
    try:
        status, output, notes = execute(line, secrets)
    except OSError as error:
        reason = "is not on this host" if error.errno == errno.ENOENT else "cannot be run: %s" % error.strerror
        module.fail_of("this-machine", "%s %s" % (line[0], reason))
    try:
        return Answer(status, output, notes)
    except (ValueError, AttributeError, TypeError):
        module.fail_json(msg="%s %s ended with status %d and said no JSON: %s" % (
            line[0], command, status, (notes or output)[-500:].strip()), code="this-machine")


def demand(module, answer):
    """Ends the module if the command has failed."""
    if answer.error:
        module.fail_of(answer.error["code"], answer.error["message"])
    if answer.status != 0:
        module.fail_of(CODES.get(answer.status), "qvpctl ended with status %d" % answer.status)
    return answer
