#!/usr/bin/env python3
"""Every example of a page does what it shows, down to the last letter. Usage: document_examples_test.py PAGE...

examples.py says what an example is. A page without one has nothing to execute, and nothing that looks as if it were.
"""
import pathlib
import sys

import pytest
from examples import is_alike, run, sessions_of, unexecuted
from script_tree import ScriptTree

PAGES = [pathlib.Path(argument) for argument in sys.argv[1:] if argument.endswith(".md")]


def sessions():
    for page in PAGES:
        for session in sessions_of(page.read_text()):
            yield pytest.param(page, session, id=f"{page.name}:{session.steps[0].line}")


@pytest.mark.parametrize("page", PAGES, ids=str)
def test_what_looks_like_an_example_is_executed(page):
    assert unexecuted(page.read_text()) == []


@pytest.mark.parametrize("page, session", sessions())
def test_example(page, session, tmp_path):
    tree = ScriptTree(tmp_path)
    tree.use_built("qvp", "qvpctl", "libvirtual_clock.so")
    tree.set_build("echo '[1/1] Linking CXX executable qvpctl'")
    for step, output in zip(session.steps, run(session, tree)):
        assert is_alike(output, step.shows), f"{page}:{step.line}: {step.command}\n--- shows\n{output}--- but should\n{step.shows}"


if __name__ == "__main__":
    assert PAGES, __doc__
    sys.exit(pytest.main(["-q", "-p", "no:cacheprovider", __file__]))
