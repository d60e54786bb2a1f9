#!/usr/bin/python
"""The wireless networks that a camera sees."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: qvp_scan
short_description: Show the wireless networks that a camera sees
description:
  - Has a camera look for wireless networks, and tells them, the strongest first.
  - A scan takes up to 20 seconds, and a camera on a wireless network is away for that time. It changes no setting. In
    check mode there is no scan, only what the last one found.
author:
  - the qvp authors
options:
  last:
    description:
      - Tell what the last scan found, without a new one.
    type: bool
    default: false
  timeout:
    description:
      - For how many seconds the end of the scan is waited for. Without it C(qvpctl) takes 60.
    type: int
extends_documentation_fragment:
  - qvp.cameras.camera
"""

EXAMPLES = r"""
- name: See which networks reach the camera
  qvp.cameras.qvp_scan:
    mac: "{{ qvp_mac }}"
    password: "{{ qvp_password }}"
  delegate_to: "{{ qvp_site }}"
  register: survey

- name: Demand that ours is among them
  ansible.builtin.assert:
    that: "'Workshop' in survey.networks | map(attribute='ssid')"
"""

RETURN = r"""
networks:
  description: What was found.
  returned: success
  type: list
  elements: dict
  contains:
    ssid:
      description: Its name; empty if it hides that.
      type: str
      sample: Workshop
    signal:
      description: Its strength in percent.
      type: int
      sample: 81
    channel:
      description: Its channel, 0 if that is not known.
      type: int
      sample: 6
    security:
      description: How it is protected, as in the setting C(wifi.security); null if that is not known.
      type: str
      sample: wpa2-aes
    adHoc:
      description: Whether it is one among equals.
      type: bool
      sample: false
notes:
  description: What C(qvpctl) had to say beside it, such as that the camera sees more networks than it can tell.
  returned: success
  type: list
  elements: str
"""

from ansible_collections.qvp.cameras.plugins.module_utils.qvpctl import CameraModule, Secrets, demand, run


def main():
    module = CameraModule({"last": {"type": "bool", "default": False}, "timeout": {"type": "int"}})
    words = [module.params["mac"]]
    if module.params["last"] or module.check_mode:
        words.append("--last")
    if module.params["timeout"] is not None:
        words.append("--timeout=%d" % module.params["timeout"])
    secrets = Secrets()
    try:
        answer = demand(module, run(module, secrets, "scan", *words))
    finally:
        secrets.close()
    module.exit_json(changed=False, networks=answer.records, notes=answer.notes)


if __name__ == "__main__":
    main()
