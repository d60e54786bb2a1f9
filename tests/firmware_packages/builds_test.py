"""What each firmware build system does with the package, for a big-endian MIPS camera: exactly what it names is installed.

The commands are the packages' own; around them stands no more than what the build system itself would do.
"""
import os
import shlex
import subprocess

from files import TREE, buildroot, openwrt, recipe

TOOLCHAIN = TREE / "cmake/mips.cmake"
START_FILES = TREE / "packaging/buildroot/package/qvp"
BUILDROOT_START_FILES = {
    "SYSV": {"etc/init.d/S60qvp": "755"},
    "SYSTEMD": {
        "usr/lib/systemd/system/multi-user.target.wants/qvp@eth0.service": "-> ../qvp@.service",
        "usr/lib/systemd/system/multi-user.target.wants/qvp@wlan0.service": "-> ../qvp@.service",
        "usr/lib/systemd/system/qvp@.service": "644",
    },
}


def listing(root):
    """The files of an image with their modes, folders with a slash."""
    found = {}
    for path in sorted(root.rglob("*")):
        name = path.relative_to(root).as_posix()
        if path.is_symlink():
            found[name] = f"-> {os.readlink(path)}"
        elif not path.is_dir():
            found[name] = f"{path.stat().st_mode & 0o7777:o}"
        elif not any(path.iterdir()):
            found[name + "/"] = ""
    return found


def same(image, name, source):
    assert (image / name).read_bytes() == source.read_bytes()


def check_daemon(file):
    header = file.read_bytes()[:20]
    assert header[:6] == b"\x7fELF\x01\x02" and header[18:20] == b"\x00\x08"  # 32 bits, big-endian, MIPS
    needed = subprocess.run(["readelf", "-dl", str(file)], capture_output=True, text=True, check=True).stdout
    assert "[libc.so.6]" in needed and "libstdc++" not in needed and "RPATH" not in needed and "RUNPATH" not in needed
    told = subprocess.run(["qemu-mips", "-L", "/usr/mips-linux-gnu", str(file), "--version"], capture_output=True, text=True,
                          check=True).stdout
    assert told.startswith("qvp ")


def built(done, image):
    assert done.returncode == 0, done.stdout[-3000:] + done.stderr[-3000:]
    check_daemon(image / "usr/sbin/qvp")
    return listing(image)


def optimised_for_size(cache):
    lines = cache.read_text().splitlines()
    return "CMAKE_BUILD_TYPE:STRING=MinSizeRel" in lines or "CMAKE_BUILD_TYPE:UNINITIALIZED=MinSizeRel" in lines


def test_openwrt(tmp_path):
    image = tmp_path / "image"
    found = built(openwrt("image", BUILD_DIR=tmp_path / "build", IMAGE=image), image)
    assert found == {
        "etc/config/qvp": "600",
        "etc/init.d/qvp": "755",
        "etc/qvp/": "",
        "usr/libexec/qvp-start": "755",
        "usr/sbin/qvp": "755",
        "usr/sbin/qvp-store": "755",
    }
    [cache] = tmp_path.rglob("CMakeCache.txt")
    assert optimised_for_size(cache)


def test_buildroot(tmp_path):
    settings = {"BUILD_DIR": tmp_path / "build", "TOOLCHAIN": TOOLCHAIN, "BR2_PACKAGE_QVP_INTERFACES": '"eth0 wlan0"'}
    assert buildroot("build", **settings).returncode == 0
    for init, start_files in BUILDROOT_START_FILES.items():
        image = tmp_path / init
        found = built(buildroot("image", **settings, TARGET_DIR=image, INIT=init), image)
        assert found == {"etc/default/qvp": "644", "etc/qvp/": "", "usr/sbin/qvp": "755", "usr/sbin/qvp-store": "755"} | start_files
        assert (image / "etc/default/qvp").read_text() == 'QVP_INTERFACES="eth0 wlan0"\n'
    [cache] = tmp_path.rglob("CMakeCache.txt")
    assert optimised_for_size(cache)


def test_yocto(tmp_path):
    image, build = tmp_path / "image", tmp_path / "build"
    said = recipe(B=str(build), D=str(image), sysconfdir="/etc", sbindir="/usr/sbin",
                  systemd_system_unitdir="/usr/lib/systemd/system")
    configure = ["cmake", "-G", "Ninja", "-DCMAKE_MAKE_PROGRAM=ninja", "-S", str(TREE), "-B", str(build),
                 "-DCMAKE_INSTALL_PREFIX:PATH=/usr", "-DCMAKE_INSTALL_SBINDIR:PATH=sbin", "-DCMAKE_INSTALL_SO_NO_EXE=0",
                 "-DCMAKE_INSTALL_SYSCONFDIR:PATH=/etc", "-DCMAKE_INSTALL_LIBEXECDIR:PATH=libexec",
                 f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", "-DCMAKE_NO_SYSTEM_FROM_IMPORTED=1",
                 "-DFETCHCONTENT_FULLY_DISCONNECTED=ON", *shlex.split(said.getVar("EXTRA_OECMAKE")), "-Wno-dev"]
    steps = f"{shlex.join(configure)} && cmake --build {build} --target all && {{\nset -e\n{said.function('do_install')}}}"
    found = built(subprocess.run(["sh", "-c", steps], capture_output=True, text=True, check=False), image)
    assert found == {
        "etc/default/qvp": "644",
        "etc/init.d/qvp": "755",
        "etc/qvp/": "",
        "usr/lib/systemd/system/qvp@.service": "644",
        "usr/sbin/qvp": "755",
        "usr/sbin/qvp-store": "755",
    }
    same(image, "etc/init.d/qvp", START_FILES / "S60qvp")
    same(image, "usr/lib/systemd/system/qvp@.service", START_FILES / "qvp@.service")
    assert (image / "etc/default/qvp").read_text() == 'QVP_INTERFACES="eth0"\n'
    assert optimised_for_size(build / "CMakeCache.txt")


def test_a_board_s_library_is_linked(tmp_path):
    """One that is not there is refused by name, so that each system's setting is known to arrive."""
    library = "/nowhere/libboard.a"
    refusal = f"there is no file {library}"
    done = openwrt("image", BUILD_DIR=tmp_path / "1", IMAGE=tmp_path / "2", CONFIG_QVP_PLATFORM_LIBRARY=f'"{library}"')
    assert done.returncode != 0 and refusal in done.stderr
    done = buildroot("build", BUILD_DIR=tmp_path / "3", TOOLCHAIN=TOOLCHAIN,
                     BR2_PACKAGE_QVP_PLATFORM_LIBRARY=f'"{library}"')
    assert done.returncode != 0 and refusal in done.stderr
    assert f"-DQVP_PLATFORM_LIBRARY={library}" in recipe(QVP_PLATFORM_LIBRARY=library).getVar("EXTRA_OECMAKE").split()
