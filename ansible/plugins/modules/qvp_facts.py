#!/usr/bin/python
"""Every setting of a camera as facts."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: qvp_facts
short_description: Read every setting of a camera
description:
  - Reads who a camera is and all of its settings that are no secret, and gives them as facts.
  - It changes nothing.
author:
  - the qvp authors
extends_documentation_fragment:
  - qvp.cameras.camera
seealso:
  - module: qvp.cameras.qvp_camera
"""

EXAMPLES = r"""
- name: Read the camera
  qvp.cameras.qvp_facts:
    mac: "{{ qvp_mac }}"
    password: "{{ qvp_password }}"
  delegate_to: "{{ qvp_site }}"

- name: Tell its time zone
  ansible.builtin.debug:
    msg: "{{ ansible_facts.qvp.settings['time.zone'] }}"
"""

RETURN = r"""
ansible_facts:
  description: The facts of the camera.
  returned: success
  type: dict
  contains:
    qvp:
      description:
        - What C(qvpctl show --json) tells, the fields of a discovery and I(settings).
      returned: success
      type: dict
      sample:
        mac: "02:51:56:50:00:01"
        address: 198.18.1.1
        product: VC-2000
        firmware: "1.01"
        settings:
          name: Front door
          http-port: "80"
          time.zone: Europe/Berlin
"""

from ansible_collections.qvp.cameras.plugins.module_utils.qvpctl import CameraModule, Secrets, demand, run


def main():
    module = CameraModule()
    secrets = Secrets()
    try:
        answer = demand(module, run(module, secrets, "show", module.params["mac"]))
    finally:
        secrets.close()
    module.exit_json(changed=False, ansible_facts={"qvp": answer.records[0]})


if __name__ == "__main__":
    main()
