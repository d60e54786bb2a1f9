"""The README shows enough, and its picture is of a real run. What its examples do is document_examples_test.py's."""
import subprocess

from examples import sessions_of
from script_tree import SOURCE

PATIENCE = 300


def test_there_are_examples():
    assert len(sessions_of((SOURCE / "README.md").read_text())) >= 3


def test_the_picture_is_of_a_real_run():
    drawn = subprocess.run([SOURCE / "docs/images/draw"], capture_output=True, text=True, timeout=PATIENCE, check=True).stdout
    assert drawn == (SOURCE / "docs/images/setting-up.svg").read_text()
