"""One playbook over three sites, from discovery to cameras that have what they are to have.

pytest itself runs in a network of its own:
  tests/ansible/in_room /usr/bin/python3 -m pytest tests/ansible/sites_test.py
"""
import json
import os
import re

import pytest
from sites import PATIENCE, PORT, TOOL, CommandLines, Sites, network_of
from support.waiting import wait_until

NAMES, CAMERAS = ["north", "middle", "south"], 10
MARK, KEY_MARK = "MARKED-password", "MARKED-wireless"
RECAP = re.compile(r"^(\S+) +: ok=(\d+) +changed=(\d+) +unreachable=(\d+) +failed=(\d+)", re.M)


@pytest.fixture(scope="module", name="sites")
def three_sites(tmp_path_factory):
    sites = Sites(tmp_path_factory.mktemp("sites"), NAMES, CAMERAS)
    yield sites
    sites.stop()


def mac(number):
    return f"02:51:56:50:00:{number:02x}"


def host(site, number):
    return f"{site.name}-{mac(number).replace(':', '-')}"


def name(site, number):
    return f"{site.name.title()} {number}"


def address(number):
    return f"198.18.40.{number}"


@pytest.fixture(scope="module", name="inventory")
def inventory_file(sites):
    """A table a site, as a spreadsheet saves it, and the options to reach the sites."""
    options = {}
    asks_often = sites.folder / "qvpctl"  # a camera that is busy is asked as long as it takes
    asks_often.write_text(f'#!/bin/sh\n[ "$1" = --version ] || set -- "$@" --retries 11\nexec {TOOL} "$@"\n')
    asks_often.chmod(0o755)
    for site in sites.all:
        rows = [f'{mac(number)};"{name(site, number)}";{address(number)}/15' for number in range(1, CAMERAS + 1)]
        (sites.folder / f"{site.name}.csv").write_text("\ufeff" + "\r\n".join(["mac;name;ipv4.address", *rows]) + "\r\n")
        options[site.name] = {
            "host": site.address, "user": "installer", "port": PORT, "ssh_args": ["-F", str(sites.ssh_configuration)],
            "interface": "lan0", "wait": 1, "qvpctl": str(asks_often), "python": "/usr/bin/python3", "table": f"{site.name}.csv"}
    file = sites.folder / "sites.qvp.yml"
    file.write_text(json.dumps({"plugin": "qvp.cameras.qvp", "sites": options}))
    return file


@pytest.fixture(scope="module", name="playbook")
def playbook_command(ansible, sites, inventory):
    """The playbook of the collection; the password that every camera has so far, and what they are to become."""
    variables = sites.folder / "variables.json"
    variables.write_text(json.dumps({
        "qvp_password": "admin", "qvp_wait": 0.5, "qvp_defaults": {"time.zone": "Asia/Tokyo", "wifi.security": "wpa2-aes"},
        "qvp_secrets": {"password": MARK, "wifi.key": KEY_MARK}}))
    return ["ansible-playbook", "-i", inventory, "-e", f"@{variables}", "qvp.cameras.site"]


def recap(output):
    """{host: (changed, unreachable, failed)}"""
    return {found[1]: tuple(int(found[number]) for number in (3, 4, 5)) for found in RECAP.finditer(output)}


def hosts(sites):
    return {host(site, number) for site in sites.all for number in range(1, CAMERAS + 1)}


def assert_set_up(sites, exempt=()):
    """In the cameras' own stores."""
    for site in sites.all:
        for number, content in site.stores().items():
            if host(site, number) in exempt:
                continue
            assert content["CAMSYSTEM"]["CameraName"].decode() == name(site, number)
            assert content["NETWORK_V4"]["IP"].decode() == address(number)
            assert content["USER_ADMIN"]["Password1"].decode() == MARK


def assert_no_secret(texts):
    for where, text in texts:
        for secret in (MARK, KEY_MARK):
            assert secret.encode() not in text, where


def files_below(folder):
    return [(file, file.read_bytes()) for file in folder.rglob("*") if file.is_file()]


def test_check_mode_shows_everything_and_changes_nothing(ansible, sites, playbook):
    before = [site.stores() for site in sites.all]
    chosen = [host(site, 1) for site in sites.all]
    output = ansible.run(*playbook, "--check", "--diff", "--limit", ",".join(chosen))
    assert {one: recap(output)[one] for one in chosen} == {one: (1, 0, 0) for one in chosen}
    assert "-name: Camera 1\n" in output and "+name: North 1\n" in output
    assert "+password: (a secret, not shown)\n" in output
    assert_no_secret([("output", output.encode())])
    assert [site.stores() for site in sites.all] == before


def test_three_sites(ansible, sites, inventory, playbook):
    """One goes down in the middle of the first run; the second run finishes, and the third has nothing to do."""
    north, middle, south = sites.all
    networks = {network_of(os.getpid()), *(network_of(site.process) for site in sites.all)}
    output = sites.folder / "output"
    with CommandLines(networks) as lines, open(output, "w") as file:
        run = ansible.start(*playbook, "-vvv", "--diff", stdout=file)
        wait_until(lambda: middle.has_name("Middle ") or run.poll() is not None, "a changed camera of the site in the middle",
                   PATIENCE)
        middle.go_down()
        assert run.wait(timeout=PATIENCE) == 4, output.read_text()[-3000:]
    first = recap(output.read_text())
    lost = {one for one, (_, unreachable, _) in first.items() if unreachable}
    assert lost and lost <= {host(middle, number) for number in range(1, CAMERAS + 1)}
    assert {first[one] for one in hosts(sites) - lost} == {(1, 0, 0)}
    assert_set_up(sites, exempt=lost)
    assert any(b"apply\0" in line and b"--password-file=/proc/self/fd/" in line for line in lines.seen)
    assert_no_secret((line, line) for line in lines.seen)

    found, said = ansible.inventory(inventory)
    heard = {one for one, known in found["_meta"]["hostvars"].items() if known.get("qvp_answered")}
    assert "site middle cannot tell its cameras: ssh: " in said
    assert heard == {host(site, number) for site in (north, south) for number in range(1, CAMERAS + 1)}
    wait_until(lambda: not middle.is_at_work(), "the changes that were under way", PATIENCE)
    middle.listen()
    with CommandLines(networks) as lines:
        second = recap(ansible.run(*playbook, "--limit", "middle,site_middle"))
    assert_no_secret((line, line) for line in lines.seen)
    assert len(second) == 1 + CAMERAS and {one for one, result in second.items() if result[0]} <= lost
    assert {result[1:] for result in second.values()} == {(0, 0)}
    assert_set_up(sites)
    stores = [site.stores() for site in sites.all]
    third = recap(ansible.run(*playbook))
    assert set(third) == hosts(sites) | set(NAMES) and set(third.values()) == {(0, 0, 0)}
    assert [site.stores() for site in sites.all] == stores
    assert_no_secret([("output", output.read_bytes()), ("log", ansible.log.read_bytes())])
    for site in sites.all:
        assert_no_secret(files_below(site.home))
        assert [file for file, _ in files_below(site.home / ".ansible")] == []
    assert_no_secret(files_below(ansible.folder / "home"))
