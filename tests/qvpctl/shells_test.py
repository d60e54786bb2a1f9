"""Completion as it is typed: the real shells, each on a terminal of its own."""
import os
import pty
import re
import select
import time
from pathlib import Path

import pytest

TREE = Path(__file__).resolve().parents[2]
TOOL = Path(os.environ.get("QVPCTL") or TREE / "build/release/qvpctl").resolve()
PATIENCE = 60
START = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], 'PS1="ready> "; eval "$(qvpctl completion bash)"'),
    "zsh": (["zsh", "-f", "-i"], 'PS1="ready> "; unsetopt zle_bracketed_paste; autoload -Uz compinit; compinit -D -u; '
                                 'eval "$(qvpctl completion zsh)"'),
    "fish": (["fish", "--no-config", "-i"], 'function fish_prompt; echo -n "ready> "; end; set fish_autosuggestion_enabled 0; '
                                            'qvpctl completion fish | source'),
}


class Shell:
    """Typed at as a person does; `shown` is all that came back, without escape sequences."""

    def __init__(self, name, folder):
        arguments, setup = START[name]
        variables = {**os.environ, "PATH": f"{TOOL.parent}:{os.environ['PATH']}", "XDG_CACHE_HOME": str(folder),
                     "HOME": str(folder), "TERM": "dumb", "LC_ALL": "C.UTF-8"}
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.execvpe(arguments[0], arguments, variables)
        self.shown = ""
        self.send(setup + "; echo set''up\n")
        self.wait_for(r"\nsetup\n.*ready> \Z")

    def send(self, text):
        os.write(self.terminal, text.encode())

    def wait_for(self, pattern):
        deadline = time.monotonic() + PATIENCE
        while not re.search(pattern, self.shown, re.S):
            assert select.select([self.terminal], [], [], max(0, deadline - time.monotonic()))[0], repr(self.shown)
            text = os.read(self.terminal, 4096).decode(errors="replace")
            self.shown = re.sub(r"\x1b(\[[0-9;?]*[A-Za-z]|[()].|[=>]|\][^\x07\x1b]*(\x07|\x1b\\))|[\r\x07]", "", self.shown + text)

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


@pytest.fixture(params=START)
def shell(request, tmp_path):
    (tmp_path / "qvpctl").mkdir()
    (tmp_path / "qvpctl/cameras").write_text("Front door\n02:00:00:00:00:01\n")
    (tmp_path / "password.txt").write_text("")
    result = Shell(request.param, tmp_path)
    yield result
    result.close()


@pytest.mark.parametrize("typed, completed", [
    ("qvpctl disc", "qvpctl discover "),
    ("qvpctl set Fr", "qvpctl set Front\\ door "),
    ("qvpctl show 02:", "qvpctl show 02:00:00:00:00:01 "),
    ("qvpctl set x wifi.secu", "qvpctl set x wifi.security="),
    ("qvpctl set x wifi.security=wpa2-a", "qvpctl set x wifi.security=wpa2-aes "),
    ("qvpctl discover --colu", "qvpctl discover --columns "),
    ("qvpctl discover --family lan", "qvpctl discover --family landap "),
    ("qvpctl verify x --password-file passw", "qvpctl verify x --password-file password.txt "),
])
def test_a_tab_completes(shell, typed, completed):
    shell.send(typed + "\t")
    shell.wait_for(re.escape(completed))
