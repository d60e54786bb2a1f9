"""What the packages for firmware build systems say: versions, licences, names, and that nothing they name is missing."""
import hashlib
import re

from files import BUILDROOT, LAYER, OPENWRT, RECIPES, TREE, VERSION, buildroot, openwrt, recipe, values

LICENCE = (TREE / "LICENSE").read_bytes()
START_FILES = BUILDROOT / "package/qvp"


def options_that_cmake_knows():
    text = (TREE / "CMakeLists.txt").read_text()
    return set(re.findall(r"^(?:set|option)\((QVP_\w+)", text, re.M))


# --- OpenWrt ----------------------------------------------------------------------------------------------------------


def test_openwrt_says_what_the_project_says():
    said = values(openwrt("values"))
    assert said["version"] == VERSION
    assert said["licence"] == "MIT" and said["licence-file"] == "LICENSE"
    assert said["tree"] == str(TREE)
    assert said["section"] == "net Network"
    assert 0 < len(said["title"]) <= 60
    assert said["depends"].split() == ["+libpthread", "+PACKAGE_kmod-cfg80211:iw"]
    assert said["conffiles"].split() == ["/etc/config/qvp", "/etc/qvp/"]


def test_openwrt_builds_anew_when_what_it_is_made_of_changes():
    said = values(openwrt("values"))
    names = said["depends-on-files"].split()
    assert [name for name in names if not (TREE / name).exists()] == []
    assert {str(TREE / name) for name in ("CMakeLists.txt", "src", "protocol", "platform")} == set(names)
    assert said["config-depends"] == "CONFIG_QVP_PLATFORM_LIBRARY"
    assert "config QVP_PLATFORM_LIBRARY\n" in (OPENWRT / "Makefile").read_text()


# --- Buildroot --------------------------------------------------------------------------------------------------------


def test_buildroot_says_what_the_project_says():
    said = values(buildroot("values"))
    assert said["version"] == VERSION
    assert said["licence"] == "MIT" and said["licence-file"] == "LICENSE"
    assert said["tree"] == str(TREE) and said["site-method"] == "local"
    assert said["depends"] == ""
    assert values(buildroot("values", BR2_PACKAGE_QVP_SITE_SURVEY="y"))["depends"] == "iw"


def test_buildroot_has_the_licence_s_hash():
    lines = [line for line in (START_FILES / "qvp.hash").read_text().splitlines() if not line.startswith("#")]
    assert lines == [f"sha256  {hashlib.sha256(LICENCE).hexdigest()}  LICENSE"]


def test_buildroot_finds_the_package():
    assert (BUILDROOT / "external.desc").read_text().startswith("name: QVP\n")
    [source] = re.findall(r'^source "\$BR2_EXTERNAL_QVP_PATH/(.*)"$', (BUILDROOT / "Config.in").read_text(), re.M)
    assert (BUILDROOT / source).is_file()


def test_buildroot_s_settings_are_those_of_the_makefile():
    config = (START_FILES / "Config.in").read_text()
    offered = set(re.findall(r"^config (BR2_PACKAGE_QVP\w*)", config, re.M))
    used = set(re.findall(r"BR2_PACKAGE_QVP\w*", (START_FILES / "qvp.mk").read_text()))
    assert offered == used | {"BR2_PACKAGE_QVP"}
    # A menu tells what a toolchain lacks for what the package depends on.
    needed = set(re.findall(r"^\tdepends on (BR2_TOOLCHAIN\w+|BR2_INSTALL_LIBSTDCPP)", config, re.M))
    assert needed == set(re.findall(r"!(BR2_\w+)", config))
    assert needed == {"BR2_TOOLCHAIN_HAS_THREADS", "BR2_INSTALL_LIBSTDCPP", "BR2_TOOLCHAIN_GCC_AT_LEAST_10"}


def test_buildroot_s_coding_style():
    rule = "#" * 80
    assert (START_FILES / "qvp.mk").read_text().startswith(f"{rule}\n#\n# qvp\n#\n{rule}\n\n")
    for file in START_FILES.iterdir():
        for number, line in enumerate(file.read_text().splitlines(), 1):
            assert line == line.rstrip(), f"{file.name}:{number}: blanks at the end"
            assert file.suffix in (".hash", ".in") or not re.match(r"\t* ", line), f"{file.name}:{number}: indented with blanks"
    script = START_FILES / "S60qvp"
    assert not script.stat().st_mode & 0o111, "Buildroot makes it executable when it installs it"
    assert re.findall(r'^DAEMON="(.*)"$', script.read_text(), re.M) == ["qvp"]
    helps = re.findall(r"^\thelp\n((?:\t  .*\n|\n)+)", (START_FILES / "Config.in").read_text(), re.M)
    assert len(helps) == 4
    assert max(len(line) for text in helps for line in text.expandtabs(8).splitlines()) <= 72


# --- Yocto ------------------------------------------------------------------------------------------------------------


def test_the_recipe_says_what_the_project_says():
    said = recipe()
    assert said.getVar("PV") == VERSION
    assert said.getVar("LICENSE") == "MIT"
    assert said.getVar("LIC_FILES_CHKSUM") == f"file://LICENSE;md5={hashlib.md5(LICENCE).hexdigest()}"
    assert said.getVar("EXTERNALSRC") == str(TREE)
    assert said.getVar("RRECOMMENDS:qvp") == "iw" and said.getVar("RDEPENDS:qvp-ptest") == "bash"
    assert said.inherited == ["cmake", "externalsrc", "ptest", "systemd", "update-rc.d"]


def test_the_recipe_s_files_are_there():
    names = re.findall(r"file://(\S+)", recipe().getVar("SRC_URI"))
    assert names == ["run-ptest"]
    assert all((RECIPES / "files" / name).is_file() for name in names)


def test_the_recipe_starts_a_daemon_an_interface():
    assert recipe().getVar("SYSTEMD_SERVICE:qvp") == "qvp@eth0.service"
    both = recipe(QVP_INTERFACES="eth0 wlan0", B="", D="", sysconfdir="", sbindir="", systemd_system_unitdir="")
    assert both.getVar("SYSTEMD_SERVICE:qvp") == "qvp@eth0.service qvp@wlan0.service"
    assert both.getVar("INITSCRIPT_NAME") == "qvp" and '"eth0 wlan0"' in both.function("do_install")


def test_the_layer_finds_the_recipe_and_the_tree():
    text = (LAYER / "conf/layer.conf").read_text()
    [tree] = re.findall(r"^QVP_TREE := .*realpath\('\$\{LAYERDIR\}/(.*?)'\)", text, re.M)
    assert (LAYER / tree).resolve() == TREE
    [pattern] = re.findall(r'^BBFILES \+= "\$\{LAYERDIR\}/(\S+)', text, re.M)
    assert [file.parent for file in LAYER.glob(pattern)] == [RECIPES]
    [collection] = re.findall(r'^BBFILE_COLLECTIONS \+= "(\w+)"', text, re.M)
    for name in ("BBFILE_PATTERN", "BBFILE_PRIORITY", "LAYERDEPENDS", "LAYERSERIES_COMPAT"):
        assert f"\n{name}_{collection} = " in text


# --- All --------------------------------------------------------------------------------------------------------------


def test_every_option_is_one_that_cmake_knows():
    known = options_that_cmake_knows()
    [recipe_file] = RECIPES.glob("*.bb")
    for file in (OPENWRT / "Makefile", START_FILES / "qvp.mk", recipe_file):
        passed = set(re.findall(r"-D(QVP_\w+)=", file.read_text()))
        assert passed and passed <= known, file


def test_the_pages_name_what_is_there():
    for system in ("openwrt", "buildroot", "yocto"):
        page = (TREE / f"packaging/{system}/README.md").read_text()
        assert len(page.splitlines()) <= 70, f"{system}: one page"
        for name in re.findall(r"`(packaging/[\w@./-]+)`", page):
            assert (TREE / name).exists(), f"{system}: {name}"
        assert f"qvp-{VERSION}" in page
