"""The cameras of many sites as hosts of an inventory."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
name: qvp
short_description: Cameras of many sites, found by qvpctl on a host of each site
description:
  - Asks a host on the LAN of each site for its cameras, by C(qvpctl discover --json) over the system's C(ssh), all sites at
    the same time.
  - Each camera is a host of the inventory, named after its site and its MAC, such as C(north-02-51-56-50-00-01). So its
    name stays when the camera is renamed, gets another address or is replaced by its twin at another site.
  - The host of each site is in the inventory too, under the name of the site, in the group C(qvp_sites). What a camera
    cannot do itself is delegated there, C(delegate_to) with the variable C(qvp_site).
  - The cameras of the site C(north) are in the group C(site_north), and all cameras in C(qvp_cameras).
  - A site that cannot be reached is warned about, and the others go on.
  - What cameras say of themselves is data. It is never taken for a template, and is in no name of a host or, but for
    letters, digits and underscores, of a group.
  - The file of the inventory ends in C(qvp.yml) or C(qvp.yaml).
author:
  - the qvp authors
extends_documentation_fragment:
  - constructed
  - inventory_cache
requirements:
  - qvpctl on the host of each site
options:
  plugin:
    description: The name of this plugin.
    type: str
    required: true
    choices: [qvp.cameras.qvp]
  sites:
    description:
      - The sites by name, which are letters, digits and underscores.
      - I(host) is the name or address of the site's host for C(ssh). A site without it is the LAN of this machine.
      - I(user), I(port) and I(private_key_file) are for C(ssh). I(ssh_args) is a list of further arguments, which come first.
      - I(interface) is the interface of that host that the cameras are at; without it all are asked.
      - I(wait) is for how many seconds answers are taken, without it the I(wait) of all sites.
      - I(qvpctl) is where the program is, without it C(qvpctl) on the path.
      - I(python) is the interpreter of that host for modules; without it Ansible looks for one.
      - I(table) is a CSV file, beside this file, with what the cameras are to become. It has the form that
        C(qvpctl apply) takes. Its rows become the variable C(qvp_settings), and a camera of it is a host also if it has
        not answered.
      - I(vars) are further variables of the site's host.
    type: dict
    required: true
  wait:
    description: For how many seconds cameras are listened to. Those of a foreign subnet report every 30 seconds.
    type: float
    default: 2
  timeout:
    description: For how many seconds the connection to a site may take, and its answer beyond I(wait).
    type: int
    default: 20
  parallel:
    description: How many sites are asked at a time.
    type: int
    default: 32
  strict_sites:
    description: Fail if a site cannot be reached.
    type: bool
    default: false
  exclude:
    description:
      - Cameras to leave out. Each is a MAC, an address or a name, with the wildcards of a shell, or a network such as
        C(192.168.10.0/28).
    type: list
    elements: str
    default: []
"""

EXAMPLES = r"""
# sites.qvp.yml: three sites, one of them on this machine's own LAN
plugin: qvp.cameras.qvp
sites:
  north:
    host: north.example.com
    user: installer
    interface: eth1
    table: north.csv
  south:
    host: 192.0.2.20
    port: 2222
    private_key_file: ~/.ssh/sites
    ssh_args: [-o, ProxyJump=gate.example.com]
  here: {}
exclude:
  - "198.18.9.*"
  - "Test *"

# groups such as product_VC_2000, and of the cameras that have an old firmware
keyed_groups:
  - key: qvp_product
    prefix: product
groups:
  old: qvp_firmware is version('1.05', '<')
compose:
  qvp_label: qvp_site ~ ' ' ~ qvp_name
cache: true
cache_plugin: ansible.builtin.jsonfile
cache_connection: ~/.cache/qvp
cache_timeout: 3600
"""

import fnmatch
import ipaddress
import os
import re
import shlex
from concurrent.futures import ThreadPoolExecutor

from ansible.errors import AnsibleParserError
from ansible.plugins.inventory import BaseInventoryPlugin, Cacheable, Constructable
from ansible.utils.unsafe_proxy import wrap_var
from ansible_collections.qvp.cameras.plugins.plugin_utils import discovery, table

SITE_OPTIONS = {"host": (str, None), "user": (str, None), "port": (int, None), "private_key_file": (str, None),
                "ssh_args": (list, []), "interface": (str, None), "wait": ((int, float), None), "qvpctl": (str, "qvpctl"),
                "python": (str, None), "table": (str, None), "vars": (dict, {})}


def snake(name):
    return re.sub(r"[A-Z]", lambda match: "_" + match.group().lower(), name)


def is_in_network(address, pattern):
    try:
        return ipaddress.ip_address(address) in ipaddress.ip_network(pattern, strict=False)
    except ValueError:
        return False


def is_excluded(camera, patterns):
    """By MAC, address or name; a name of the camera's is never a pattern."""
    values = [str(camera[field]) for field in ("mac", "address", "name") if camera.get(field) is not None]
    return any(fnmatch.fnmatchcase(value.lower(), pattern.lower()) or is_in_network(value, pattern)
               for value in values for pattern in patterns)


class InventoryModule(BaseInventoryPlugin, Constructable, Cacheable):
    NAME = "qvp.cameras.qvp"

    @staticmethod
    def _sanitize_group_name(name):
        return re.sub(r"^(?=\d)|\W", "_", str(name), flags=re.ASCII)

    def verify_file(self, path):
        return super(InventoryModule, self).verify_file(path) and path.endswith(("qvp.yml", "qvp.yaml"))

    def parse(self, inventory, loader, path, cache=True):
        super(InventoryModule, self).parse(inventory, loader, path, cache)
        self._read_config_data(path)
        sites = {name: self._site(name, options or {}) for name, options in self.get_option("sites").items()}
        tables = {name: self._table(name, site, path) for name, site in sites.items()}
        cameras = self._cameras(sites, path, cache)
        self.inventory.add_group("qvp_sites")
        self.inventory.add_group("qvp_cameras")
        for name, site in sites.items():
            self._add_site(name, site)
            self._add_cameras(name, cameras.get(name), tables[name])

    # What the file says.

    def _site(self, name, options):
        if not re.match(r"(?!(?:all|ungrouped|localhost)\Z)[A-Za-z_][A-Za-z0-9_]*\Z", str(name)):
            raise AnsibleParserError("the name of a site is letters, digits and underscores, and none that Ansible has: '%s'" % name)
        site = {option: default for option, (kind, default) in SITE_OPTIONS.items()}
        for option, value in options.items():
            if option not in SITE_OPTIONS:
                raise AnsibleParserError("site %s: there is no option %s among %s" % (
                    name, option, ", ".join(sorted(SITE_OPTIONS))))
            kind = SITE_OPTIONS[option][0]
            if not isinstance(value, kind) or isinstance(value, bool):
                raise AnsibleParserError("site %s: %s has a value of a wrong type" % (name, option))
            site[option] = value
        if site["private_key_file"]:
            site["private_key_file"] = os.path.expanduser(site["private_key_file"])
        site["ssh_args"] = [str(word) for word in site["ssh_args"]]
        site["wait"] = site["wait"] or self.get_option("wait")
        return site

    @staticmethod
    def _table(name, site, path):
        if not site["table"]:
            return {}
        file = os.path.join(os.path.dirname(os.path.abspath(path)), os.path.expanduser(site["table"]))
        try:
            return table.read(file)
        except table.TableError as error:
            raise AnsibleParserError("site %s: %s: %s" % (name, file, error))

    # What the sites say.

    def _cameras(self, sites, path, cache):
        """{site: records} of those that could be asked; what the cache has of a site counts as long as it is asked alike."""
        key, is_cached = self.get_cache_key(path), self.get_option("cache")
        known = {}
        if is_cached and cache:
            known = self._cache.get(key) or {}
        asked = {name: discovery.command_of(site, 0) for name, site in sites.items()}
        fresh = {name: sites[name] for name in sites if known.get(name, {}).get("asked") != asked[name]}
        cameras = {name: known[name]["cameras"] for name in sites if name not in fresh}
        cameras.update(self._ask(fresh))
        if is_cached and fresh:
            self._cache[key] = {name: {"asked": asked[name], "cameras": found} for name, found in cameras.items()}
        return cameras

    def _ask(self, sites):
        found = {}
        if not sites:
            return found
        with ThreadPoolExecutor(max(1, self.get_option("parallel"))) as pool:
            answers = {name: pool.submit(discovery.discover, site, self.get_option("timeout")) for name, site in sites.items()}
        for name, answer in answers.items():
            try:
                found[name] = answer.result()
            except discovery.SiteError as error:
                if self.get_option("strict_sites"):
                    raise AnsibleParserError("site %s: %s" % (name, error))
                self.display.warning("site %s cannot tell its cameras: %s" % (name, error))
        return found

    # What becomes of it.

    def _set(self, host, variables):
        for name, value in variables.items():
            if value is not None:
                self.inventory.set_variable(host, name, value)

    def _add_site(self, name, site):
        self.inventory.add_host(name, group="qvp_sites")
        self._set(name, site["vars"])
        self._set(name, {"ansible_python_interpreter": site["python"], "qvp_executable": site["qvpctl"]})
        if not site["host"]:
            self._set(name, {"ansible_connection": "local"})
            return
        arguments = " ".join(shlex.quote(word) for word in site["ssh_args"])
        self._set(name, {"ansible_host": site["host"], "ansible_user": site["user"], "ansible_port": site["port"],
                         "ansible_ssh_private_key_file": site["private_key_file"],
                         "ansible_ssh_common_args": arguments or None})

    def _add_cameras(self, site, found, rows):
        group = "site_" + site
        self.inventory.add_group(group)
        self.inventory.add_child("qvp_cameras", group)
        records = {one["mac"]: one for one in found or []}
        if found is not None and set(rows) - set(records):
            self.display.warning("site %s: its table has cameras that were not heard: %s" % (
                site, ", ".join(sorted(set(rows) - set(records)))))
        for mac in sorted(set(records) | set(rows)):
            record = records.get(mac, {"mac": mac, "answered": False})
            if not is_excluded(record, self.get_option("exclude")):
                self._add_camera(site, group, record, rows.get(mac))

    def _add_camera(self, site, group, record, row):
        host = self.inventory.add_host("%s-%s" % (site, record["mac"].replace(":", "-")), group=group)
        variables = {"qvp_" + snake(name): value for name, value in record.items()}
        variables["qvp_settings"] = row
        self._set(host, wrap_var(variables))
        self._set(host, {"qvp_site": site})
        strict, known = self.get_option("strict"), self.inventory.get_host(host).get_vars()
        self._set_composite_vars(self.get_option("compose"), known, host, strict=strict)
        self._add_host_to_composed_groups(self.get_option("groups"), known, host, strict=strict)
        self._add_host_to_keyed_groups(self.get_option("keyed_groups"), known, host, strict=strict)
