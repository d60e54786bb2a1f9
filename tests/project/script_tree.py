"""A tree with the real ./run and ./test over a build that a test pretends: cmake on the PATH is a script of its own."""
import os
import pathlib
import shutil
import subprocess

SOURCE = pathlib.Path(__file__).parents[2]
BUILT = pathlib.Path(os.environ.get("QVP_BUILD") or SOURCE / "build/release")
PATIENCE = 200
NINJA = "".join(f"echo '[{step}/8] Building CXX object {step}.o'\n" for step in range(1, 9))


def write_script(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.unlink(missing_ok=True)
    path.write_text("#!/bin/sh\n" + text)
    path.chmod(0o755)


class ScriptTree:
    """Every Debian package seems installed; what the scripts call to install or build is written to `calls`."""

    def __init__(self, folder):
        self.top = folder / "tree"
        self.programs = folder / "programs"
        self.calls = folder / "calls"
        self.calls.touch()
        self.top.mkdir()
        for name in ("run", "test", "CMakePresets.json"):
            shutil.copy(SOURCE / name, self.top)
        shutil.copytree(SOURCE / "scripts", self.top / "scripts")
        for name in ("virtual-camera", "wireshark", "tests"):
            (self.top / name).symlink_to(SOURCE / name)
        self.program("dpkg-query", "printf installed")
        self.program("apt-get", "exit 1")
        self.set_build("")

    def program(self, name, text):
        write_script(self.programs / name, f"echo '{name}' \"$@\" >>{self.calls}\n{text}\n")

    def set_build(self, text):
        """What stands in for the build itself; configuring says one line."""
        self.program("cmake", f"case $1 in --build) ;; *) echo '-- Configured'; exit ;; esac\n{text}")

    def use_built(self, *names):
        """Lets the tree have programs of the real build."""
        folder = self.top / "build/release"
        folder.mkdir(parents=True, exist_ok=True)
        for name in names:
            (folder / name).symlink_to(BUILT / name)

    def called(self, name):
        """The calls of a program, a line each."""
        return [call for call in self.calls.read_text().splitlines() if call.split()[0] == name]

    def environment(self):
        return os.environ | {"PATH": f"{self.programs}:{os.environ['PATH']}", "LC_ALL": "C"}

    def run(self, *command, place=(), **options):
        return subprocess.run([*place, *command], cwd=self.top, env=self.environment(), stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=PATIENCE, check=False,
                              **options)
