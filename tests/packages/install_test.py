"""cmake --install installs what the packages hold, and the virtual camera runs from there."""
import os
import pathlib
import re
import subprocess

import pytest

BUILD = os.environ["QVP_BUILD"]
PATIENCE = 200

DAEMON = """
    lib/systemd/system/qvp@.service lib/sysusers.d/qvp.conf lib/tmpfiles.d/qvp.conf libexec/qvp/remove-stale-pid-file sbin/qvp
    sbin/qvp-store share/man/man8/qvp-store.8
    share/doc/qvp/examples/camera.ini share/doc/qvp/examples/qvp.init share/doc/qvp/examples/wireless.conf
    share/man/man3/qvp-platform.3 share/man/man8/qvp.8"""
COMMANDS = """alert apply commit completion diff discover export factory-reset get help open passwd plan raw reboot revert scan set show
    supported verify watch web"""
TOOL = """
    bin/qvpctl share/bash-completion/completions/qvpctl share/fish/vendor_completions.d/qvpctl.fish share/man/man1/qvpctl.1
    share/qvpctl/qvpctl.schema.json share/zsh/site-functions/_qvpctl """ + " ".join(f"share/man/man1/qvpctl-{command}.1" for command in COMMANDS.split())
CAMERA = """
    bin/virtual-camera share/doc/qvp-virtual-camera/README.md share/man/man1/virtual-camera.1
    libexec/virtual-camera/camera libexec/virtual-camera/factory.ini libexec/virtual-camera/libvirtual_clock.so
    libexec/virtual-camera/store_keys.h libexec/virtual-camera/virtual-camera libexec/virtual-camera/virtual_time_server"""


SOURCE = pathlib.Path(__file__).parents[2]
PAGES = ("*.md", "docs/**/*.md", "docs/images/*.svg", "docs/images/*.png", "docs/*.schema.json", "docs/qvpctl.1", "packaging/**/*.md",
         "virtual-camera/*.md", "wireshark/*.md", "ansible/*.md")


def documents():
    return {f"share/doc/qvp/{path.relative_to(SOURCE)}" for pattern in PAGES for path in SOURCE.glob(pattern)}


def install(folder, *options):
    subprocess.run(["cmake", "--install", BUILD, "--prefix", folder, *options], stdout=subprocess.DEVNULL, check=True)
    return {str(path.relative_to(folder)) for path in pathlib.Path(folder).rglob("*") if path.is_symlink() or path.is_file()}


def folders_of_camera():
    source = SOURCE / "virtual-camera"
    return {f"libexec/virtual-camera/{path.relative_to(source)}" for folder in ("board", "lib")
            for path in (source / folder).rglob("*") if path.is_symlink() or path.is_file()}


def collection():
    source = SOURCE / "ansible"
    return {f"share/ansible/collections/ansible_collections/qvp/cameras/{path.relative_to(source)}"
            for path in source.rglob("*") if path.is_file() and path.parent.name != "__pycache__"}


@pytest.mark.parametrize("component, files", [("daemon", DAEMON), ("tool", TOOL), ("virtual-camera", CAMERA)])
def test_a_component_is_what_its_package_holds(tmp_path, component, files):
    more = {"daemon": documents, "tool": collection, "virtual-camera": folders_of_camera}[component]
    expected = set(files.split()) | more()
    assert install(tmp_path, "--component", component) == expected


def test_no_file_is_without_a_component(tmp_path):
    expected = set((DAEMON + TOOL + CAMERA).split()) | folders_of_camera() | documents() | collection()
    assert install(tmp_path) == expected


def test_no_link_of_the_documents_that_are_installed_is_dead(tmp_path):
    install(tmp_path, "--component", "daemon")
    links = [(page, target) for page in tmp_path.rglob("*.md")
             for target in re.findall(r"\]\(([^)#\s]+)", page.read_text()) if "://" not in target]
    assert len(links) > 50
    assert [(page.name, target) for page, target in links if not (page.parent / target).exists()] == []


def test_nothing_that_is_installed_names_the_build(tmp_path):
    for file in install(tmp_path, "--component", "daemon") | install(tmp_path, "--component", "virtual-camera"):
        path = tmp_path / file
        if path.is_file() and "lib/" not in file and "sbin/" not in file:
            assert BUILD not in path.read_text(errors="replace"), file


STEPS = """
    command -v qvpctl && command -v camera &&
    qvpctl set Gate name=Yard time.now=2031-05-06T07:08:09 2>/dev/null && qvpctl get Yard time.now &&
    cat "$QVP_LAN/services.log" && camera log 1
"""


def test_the_virtual_camera_runs_from_there(tmp_path):
    """With the table of keys, the camera's clock and the time server that are installed; its board is the one there."""
    install(tmp_path)
    environment = {"PATH": f"{tmp_path}/bin:{tmp_path}/sbin:/usr/sbin:/usr/bin:/sbin:/bin", "QVPCTL_PASSWORD": "admin"}
    done = subprocess.run(["virtual-camera", "run", "--set", "CAMSYSTEM/CameraName=Gate", "--", "sh", "-c", STEPS],
                          env=environment, cwd=tmp_path, capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    lines = done.stdout.splitlines()
    assert lines[:2] == [f"{tmp_path}/bin/qvpctl", f"{tmp_path}/libexec/virtual-camera/camera"]
    assert lines[2].startswith("2031-05-06T07:08:")
    assert "no time: virtual_time_server is not built" not in lines
    assert any(line.startswith("'/usr/sbin/msger' ") for line in lines)
