"""What the documentation of the modules has in common."""


class ModuleDocFragment:
    DOCUMENTATION = r"""
options:
  mac:
    description:
      - The camera's MAC, as it stands on its label. A camera has it for good, unlike a name or an address.
    type: str
    required: true
  username:
    description:
      - The administrator's name. Without it C(qvpctl) takes C(admin).
    type: str
  password:
    description:
      - The administrator's password. It reaches C(qvpctl) through memory alone, never on a command line or a disk of
        the site's host.
      - Without it and I(password_file) it is what the site's user has in C(QVPCTL_PASSWORD).
    type: str
  password_file:
    description:
      - A file on the site's host whose first line is the password.
    type: path
  interface:
    description:
      - The interface of the site's host that the camera is reached by. Without it, all of them are asked.
    type: str
  wait:
    description:
      - For how many seconds answers to each request are taken, 0.1 to 3600. Without it C(qvpctl) takes 2.
    type: float
  executable:
    description:
      - Where C(qvpctl) is on the site's host, if it is not on the path.
    type: path
    default: qvpctl
requirements:
  - qvpctl on the host that the module runs on, which is on the LAN of the camera
  - Linux and Python 3.8 or later on that host
notes:
  - A module runs on the site's host, so a play over cameras delegates it there, C(delegate_to) with the variable
    C(qvp_site) of the inventory.
  - C(pipelining) of the connection keeps the arguments of a module, and so its secrets, off the disk of that host.
"""
