"""How a page's examples are found and compared."""
import pytest
from examples import LEFT_OUT, is_alike, sessions_of, unexecuted
from script_tree import SOURCE

PAGE = """\
# Page

<!-- cameras -n 2 -->
```console
$ qvpctl discover
MAC
$ cat >file <<'END'
> one
>  two
> END
```

Text.

```console
$ cat file
one
 two
```

```console
$ virtual-camera/virtual-camera shell -n 3
$ true
```

<!-- shell -->
```console
$ echo
$ false
```

```text
$ not a command
```
"""


def test_a_page_is_taken_apart():
    first, second, third = sessions_of(PAGE)
    assert first.place() == ["virtual-camera/virtual-camera", "run", "-n", "2", "--", "bash"]
    assert [(step.command, step.shows, step.line) for step in first.steps] == [
        ("qvpctl discover", "MAC\n", 5), ("cat >file <<'END'\none\n two\nEND", "", 7), ("cat file", "one\n two\n", 16)]
    assert second.place() == ["virtual-camera/virtual-camera", "run", "-n", "3", "--", "bash"]
    assert [step.command for step in second.steps] == ["true"]
    assert (third.place(), [step.command for step in third.steps]) == (["bash"], ["echo", "false"])


@pytest.mark.parametrize("block, why", [("true\n", "begins with a command"), ("$ true\n", "nothing says where"),
                                        ("$ virtual-camera/virtual-camera shell\nhello\n", "is left out")])
def test_a_block_that_cannot_be_run_is_a_fault(block, why):
    with pytest.raises(AssertionError, match=f"line 2: .*{why}"):
        sessions_of(f"```console\n{block}```\n")


def test_a_block_may_be_left_out_with_a_reason():
    left_out = "<!-- not executed: no board -->\n```{}\n$ flash\n```\n\n"
    page = left_out.format("sh") + left_out.format("console") + "<!-- sources -->\n```console\n$ true\n```\n"
    assert unexecuted(page) == []
    (session,) = sessions_of(page)
    assert (session.builds, [(step.command, step.line) for step in session.steps]) == (True, [("true", 13)])
    assert unexecuted(page.replace(": no board", "")) == ["```sh"]


def test_few_are_left_out():
    pages = [SOURCE / "README.md", *(SOURCE / "docs").rglob("*.md")]
    left_out = [block for page in pages for block in LEFT_OUT.findall(page.read_text())]
    assert 1 <= len(left_out) <= 6


def test_commands_in_other_blocks_are_found():
    assert unexecuted("```sh\nls\n```\n\n```text\nls\n```\n```bash title=x\n```\n") == ["```sh", "```bash title=x"]


@pytest.mark.parametrize("output, expected, alike", [
    ("a\nb\nc\n", "a\n...\nc\n", True), ("a\nc\n", "a\n...\nc\n", True), ("a\nb\n", "a\n...\nc\n", False),
    ("took 15 s\n", "took … s\n", True), ("took 1\n5 s\n", "took … s\n", False), ("aXb\n", "a.b\n", False), ("a\n", "a", False)])
def test_comparison(output, expected, alike):
    assert is_alike(output, expected) == alike
