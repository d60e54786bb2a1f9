"""The collection as a whole: it is built, its documents can be shown, ansible-lint and pyflakes find nothing."""
import json
import re
import shutil
import subprocess
import tarfile

import pytest
from conftest import TREE

MODULES = ["qvp_camera", "qvp_facts", "qvp_scan"]


def test_the_archive_has_what_is_in_the_tree(ansible):
    with tarfile.open(next((ansible.folder / "built").glob("*.tar.gz"))) as archive:
        names = {name for name in archive.getnames() if name.endswith((".py", ".yml", ".md", ".csv", ".cfg"))}
    files = {str(file.relative_to(TREE / "ansible")) for file in (TREE / "ansible").rglob("*")
             if file.suffix in (".py", ".yml", ".md", ".csv", ".cfg")}
    assert files - names == {"galaxy.yml"}  # it becomes MANIFEST.json


def shown(ansible, kind, *names):
    output = ansible.run("ansible-doc", "--json", "-t", kind, *(f"qvp.cameras.{name}" for name in names),
                         stderr=subprocess.PIPE)
    return json.loads(output)


def test_the_documents_of_the_modules(ansible):
    documents = shown(ansible, "module", *MODULES)
    for name in MODULES:
        document = documents[f"qvp.cameras.{name}"]
        source = (ansible.collection / f"plugins/modules/{name}.py").read_text()
        common = (ansible.collection / "plugins/module_utils/qvpctl.py").read_text()
        arguments = set(re.findall(r'^ {4}"(\w+)": \{"type"', common, re.M)) | set(re.findall(r'"(\w+)": \{"type"', source))
        assert set(document["doc"]["options"]) == arguments
        assert document["examples"] and document["return"]
        assert document["doc"]["options"]["mac"]["required"]


def test_the_documents_of_the_inventory(ansible):
    document = shown(ansible, "inventory", "qvp")["qvp.cameras.qvp"]
    assert {"sites", "exclude", "strict_sites", "compose", "groups", "keyed_groups", "strict", "cache"} <= set(
        document["doc"]["options"])
    options = " ".join(document["doc"]["options"]["sites"]["description"])
    source = (ansible.collection / "plugins/inventory/qvp.py").read_text()
    table = re.search(r"SITE_OPTIONS = \{(.*?)\}\n", source, re.S).group(1)
    assert {name for name in re.findall(r'"(\w+)": \(', table) if f"I({name})" not in options} == set()


def test_the_examples_are_read(ansible, tmp_path):
    """With a qvpctl that is nowhere: nobody is asked."""
    shutil.copytree(TREE / "ansible/examples", tmp_path / "examples")
    file = tmp_path / "examples/sites.qvp.yml"
    file.write_text(re.sub(r"    host: .*\n", "    qvpctl: /nowhere\n", file.read_text()))
    found, _ = ansible.inventory(file)
    known = found["_meta"]["hostvars"]["north-02-51-56-50-00-02"]
    assert known["qvp_settings"]["ipv4.address"] == {"__ansible_unsafe": "198.18.7.2/15"}
    assert known["qvp_defaults"] == {"time.zone": "Europe/Berlin", "upnp": False}


def test_ansible_lint_finds_nothing(ansible, tmp_path):
    """In a copy: it makes folders of its own."""
    copy = tmp_path / "ansible_collections/qvp/cameras"
    shutil.copytree(TREE / "ansible", copy)
    output = ansible.run("ansible-lint", "--offline", "--strict", "-p", cwd=copy)
    assert "0 failure(s), 0 warning(s)" in output, output


@pytest.mark.parametrize("folder", ["ansible", "tests/ansible"])
def test_pyflakes_finds_nothing(folder):
    files = [str(file) for file in (TREE / folder).rglob("*.py")]
    done = subprocess.run(["pyflakes3", *files], capture_output=True, text=True, check=False)
    assert (done.returncode, done.stdout) == (0, "")
