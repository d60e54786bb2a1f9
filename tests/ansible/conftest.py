"""The collection, built and installed as its users do it, and Ansible with a home of its own."""
import json
import os
import subprocess
import sys
from pathlib import Path

import pytest

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(Path(__file__).resolve().parent))

# Many sessions over one connection are more than dropbear can do: now and then one ends without its status. And it takes
# five connections of one address at a time that have not logged in yet.
CONFIGURATION = """[defaults]
collections_path = {folder}/collections
collections_scan_sys_path = false
local_tmp = {folder}/home/tmp
log_path = {folder}/ansible.log
forks = 5
no_target_syslog = true
localhost_warning = false
retry_files_enabled = false
[inventory]
any_unparsed_is_failed = true
[ssh_connection]
pipelining = true
ssh_args = -o ControlMaster=no
"""


class Ansible:
    """Programs of Ansible that see nothing of the user's own files."""

    def __init__(self, folder):
        self.folder = folder
        (folder / "home").mkdir()
        self.configuration, self.log = folder / "ansible.cfg", folder / "ansible.log"
        self.configuration.write_text(CONFIGURATION.format(folder=folder))
        self.variables = {"PATH": os.environ["PATH"], "HOME": str(folder / "home"), "LC_ALL": "C.UTF-8",
                          "ANSIBLE_CONFIG": str(self.configuration), "ANSIBLE_HOME": str(folder / "home/.ansible"),
                          "ANSIBLE_NOCOLOR": "1"}

    def start(self, *command, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "cwd": self.folder, **options}
        return subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, text=True,
                                env={**self.variables, **options.pop("variables", {})}, **options)

    def run(self, *command, status=0, **options):
        process = self.start(*command, **options)
        output = process.communicate(timeout=600)[0]
        assert process.returncode == status, f"status {process.returncode}\n{output}"
        return output

    def inventory(self, file):
        """What the plugin makes of the file, and what was said beside it."""
        process = self.start("ansible-inventory", "-i", file, "--list", stderr=subprocess.PIPE)
        output, notes = process.communicate(timeout=300)
        assert process.returncode == 0, notes
        return json.loads(output), " ".join(notes.split())

    def install_collection(self):
        built = self.folder / "built"
        self.run("ansible-galaxy", "collection", "build", "--output-path", built, cwd=TREE / "ansible")
        archive, = built.glob("*.tar.gz")
        self.run("ansible-galaxy", "collection", "install", "--offline", archive, "-p", self.folder / "collections")
        self.collection = self.folder / "collections/ansible_collections/qvp/cameras"
        return self


@pytest.fixture(scope="session")
def ansible(tmp_path_factory):
    return Ansible(tmp_path_factory.mktemp("ansible")).install_collection()
