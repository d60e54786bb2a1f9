"""Where the packages for firmware build systems stand, and what the project says of itself."""
import pathlib
import re
import subprocess

from recipe import Recipe

TREE = pathlib.Path(__file__).resolve().parents[2]
HERE = TREE / "tests/firmware_packages"
OPENWRT = TREE / "packaging/openwrt/qvp"
BUILDROOT = TREE / "packaging/buildroot"
LAYER = TREE / "packaging/yocto/meta-qvp"
RECIPES = LAYER / "recipes-connectivity/qvp"
VERSION = re.search(r"^project\(qvp VERSION (\S+) ", (TREE / "CMakeLists.txt").read_text(), re.M)[1]


def make(folder, *arguments, **variables):
    command = ["make", "--no-print-directory", "-C", str(folder), *arguments, *(f"{k}={v}" for k, v in variables.items())]
    return subprocess.run(command, capture_output=True, text=True, timeout=800, check=False)


def openwrt(*arguments, **variables):
    return make(OPENWRT, *arguments, TOPDIR=HERE / "openwrt", **variables)


def buildroot(*arguments, **variables):
    return make(HERE / "buildroot", *arguments, BR2_EXTERNAL_QVP_PATH=BUILDROOT, **variables)


def values(done):
    """The lines that a goal `values` printed, by their first word."""
    assert done.returncode == 0, done.stderr
    return {line.partition(" ")[0]: line.partition(" ")[2] for line in done.stdout.splitlines()}


def recipe(**variables):
    [file] = RECIPES.glob("qvp_*.bb")
    return Recipe(file, {"QVP_TREE": str(TREE), "S": str(TREE)} | variables)
