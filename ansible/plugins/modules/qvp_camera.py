#!/usr/bin/python
"""The settings of one camera."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: qvp_camera
short_description: Give a camera its settings, and verify them
description:
  - Reads a camera, changes what is not as it is to be, waits until the camera is back, and reads it again. It fails if
    the camera does not have the new settings then, at its new address.
  - Nothing is sent to a camera that has everything already.
  - All of it is done by C(qvpctl apply), and in check mode by C(qvpctl plan), which changes nothing.
author:
  - the qvp authors
options:
  settings:
    description:
      - What the camera is to have, by the keys of C(qvpctl help settings), such as C(name) or C(ipv4.address).
      - A value of true is C(on), and of false C(off). An empty value leaves its setting alone.
      - A secret such as C(password) or C(wifi.key) can only be named here as C(file:PATH), a file on the site's host.
        Its value belongs into I(secrets).
    type: dict
    default: {}
  secrets:
    description:
      - The same for secrets, by value. They are in no result, no log, no difference and on no command line.
      - With C(password) in here the administrator gets a new password. I(password) is the one that he has had so far; a
        camera that has the new one already is left alone.
    type: dict
    default: {}
  elsewhere:
    description:
      - Allow addresses that are of no network of the site's host.
    type: bool
    default: false
extends_documentation_fragment:
  - qvp.cameras.camera
seealso:
  - module: qvp.cameras.qvp_facts
"""

EXAMPLES = r"""
- name: Give the camera its name, its address and its zone
  qvp.cameras.qvp_camera:
    mac: "{{ qvp_mac }}"
    password: "{{ qvp_password }}"
    settings:
      name: Front door
      ipv4.address: 192.168.10.20/24
      time.zone: Europe/Berlin
      upnp: false
  delegate_to: "{{ qvp_site }}"

- name: Give the administrator a new password
  qvp.cameras.qvp_camera:
    mac: "{{ qvp_mac }}"
    password: admin
    secrets:
      password: "{{ new_password }}"
  delegate_to: "{{ qvp_site }}"

- name: The same for some cameras that stand in the playbook, on the host of their site
  qvp.cameras.qvp_camera:
    mac: "{{ item.mac }}"
    password_file: /etc/qvp/password
    settings: "{{ item.settings }}"
  loop:
    - mac: "02:51:56:50:00:01"
      settings:
        name: Yard
    - mac: "02:51:56:50:00:02"
      settings:
        name: Gate
"""

RETURN = r"""
name:
  description: What the camera is called now; in check mode, so far.
  returned: success
  type: str
  sample: Front door
address:
  description: The address that it has now; in check mode, so far.
  returned: success
  type: str
  sample: 192.168.10.20
before:
  description: What was changed, as it was; a secret is null.
  returned: success, and failure after a change
  type: dict
  sample:
    name: Camera 1
after:
  description: What was changed, as it is now; in check mode, as it would be. A secret is null.
  returned: success, and failure after a change
  type: dict
  sample:
    name: Front door
verified:
  description: Whether what was asked for was read in the camera. It was in all but check mode.
  returned: success
  type: bool
  sample: true
effects:
  description: What the camera would do, in this order, and for how many seconds it would be away.
  returned: in check mode
  type: list
  elements: dict
  sample:
    - settings: name, port and address
      effect: restarts its web server and its network
      seconds: 10
code:
  description: What went wrong, in a word that never changes, as C(qvpctl --json) has it.
  returned: failure
  type: str
  sample: credentials-refused
"""

import csv
import os
import re

from ansible_collections.qvp.cameras.plugins.module_utils.qvpctl import (
    CODES, CameraModule, Secrets, demand, one_line, run)

OWN_ARGUMENTS = {
    "settings": {"type": "dict", "default": {}},
    "secrets": {"type": "dict", "default": {}, "no_log": True},
    "elsewhere": {"type": "bool", "default": False},
}


# Columns of a table that set nothing: what a camera tells of itself.
INFORMATION = ("mac", "address", "brand", "product", "model", "firmware", "hardware", "httpPort", "netmask", "gateway", "dns",
               "dhcp", "localTime", "timezone", "daylightSaving", "url", "interface", "answered", "problems")


def text_of(module, key, value):
    if isinstance(value, bool):
        return "on" if value else "off"
    if isinstance(value, (dict, list)):
        module.fail_of("bad-value", "%s has to be one value, not a list or a dictionary" % key)
    return "" if value is None else str(value)


def cell(text):
    """As the tables of qvpctl have it, in which a backslash begins an escape and a quote guards a formula."""
    text = text.replace("\\", "\\\\")
    return "\\u{27}" + text[1:] if text.startswith("'") else text


def wanted(module, secrets):
    """{key: cell} of what is asked for."""
    cells = {}
    for key, value in module.params["settings"].items():
        if key in INFORMATION:
            module.fail_of("bad-value", "%s is no setting: a camera tells it, and takes none" % key)
        text = text_of(module, key, value)
        if text:
            cells[key] = cell(text)
    for key, value in module.params["secrets"].items():
        if value is None:
            continue
        if key in cells:
            module.fail_of("bad-value", "%s stands in settings and in secrets" % key)
        cells[key] = "file:" + secrets.add(one_line(module, key, str(value)))
    return cells


def write_table(folder, mac, cells):
    path = os.path.join(folder, "camera.csv")
    with open(path, "w", encoding="utf-8", newline="") as file:
        csv.writer(file).writerows([["mac"] + list(cells), [mac] + list(cells.values())])
    return path


def ask(module, cells, secrets):
    """The answer to the table, which goes with the module, and so does the journal of the run."""
    table = write_table(module.tmpdir, module.params["mac"], cells)
    elsewhere = ["--elsewhere"] if module.params["elsewhere"] else []
    return run(module, secrets, "plan" if module.check_mode else "apply", table, *elsewhere)


def refuse(module, answer):
    """Nobody has seen the table, so what is wrong is told without its places in there."""
    if answer.error and answer.error["code"] == "bad-value":
        faults = answer.error["message"].split("\n  ")[1:] or [answer.error["message"]]
        plain = [re.sub(r"^\S*/camera\.csv:\d+:(?: column \d+:)? ", "", fault) for fault in faults]
        module.fail_of("bad-value", "; ".join(plain))
    demand(module, answer)
    module.fail_of("this-machine", "qvpctl said nothing of this camera")


def shown(key, value):
    return "%s: %s\n" % (key, "(a secret, not shown)" if value is None else value)


def difference(changes):
    """A secret has no text before, and one after: that it changes is all that is told."""
    before = [shown(one["key"], one["before"]) for one in changes if one["before"] is not None]
    after = [shown(one["key"], one["after"]) for one in changes]
    return {"before": "".join(before), "after": "".join(after)}


def result_of(module, record):
    changes = record["changes"]
    result = {
        "changed": bool(changes),
        "name": record["name"],
        "address": record["address"],
        "before": {one["key"]: one["before"] for one in changes},
        "after": {one["key"]: one["after"] for one in changes},
        "diff": difference(changes),
    }
    if module.check_mode:
        result["effects"] = record["effects"]
    return result


def main():
    module = CameraModule(OWN_ARGUMENTS)
    secrets = Secrets()
    try:
        cells = wanted(module, secrets)
        answer = ask(module, cells, secrets)
    finally:
        secrets.close()
    records = [one for one in answer.records if one.get("mac") == module.params["mac"]]
    if not records:
        refuse(module, answer)
    result = result_of(module, records[0])
    if records[0]["reason"] is not None:
        module.fail_of(CODES.get(answer.status), records[0]["reason"], **result)
    module.exit_json(verified=not module.check_mode, **result)


if __name__ == "__main__":
    main()
