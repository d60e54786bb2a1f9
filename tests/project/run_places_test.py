"""./run and ./test in places of many kinds: networks of their own, a plain container, a tree that is read-only."""
import re
import shutil

import pytest
from script_tree import SOURCE, ScriptTree, write_script

# Each is a network of its own with a /run of its own; /sys stays the one of the machine.
ROOM = ["unshare", "--user", "--map-root-user", "--mount", "--mount-proc", "--net", "--pid", "--fork", "--kill-child", "sh",
        "-c"]
LAN = [*ROOM, """mount -t tmpfs room /run && ip link set lo up &&
    ip link add probe0 type veth peer name probe1 && ip address add 192.0.2.1/24 dev probe0 &&
    ip link set probe0 up && ip link set probe1 up && exec "$@" """, "sh"]
# Root, but not the system's: no capability for mounts or interfaces, and no namespaces.
CONTAINER = [*ROOM, """mount -t tmpfs room /run && ip link set lo up && echo 0 >/proc/sys/user/max_user_namespaces &&
    exec setpriv --bounding-set=-sys_admin,-net_admin "$@" """, "sh"]
CONTAINER_WITHOUT_RUN = [*CONTAINER[:-2], CONTAINER[-2].replace("-t tmpfs", "-t tmpfs -o ro"), "sh"]
REFUSED = "this system does not let you make namespaces (unshare: "

PROLOGUE = """
until_true() { for _ in $(seq 2400); do if "$@" 2>/dev/null; then return; fi; sleep 0.05; done; echo "never: $*"; exit 99; }
"""


@pytest.fixture
def tree(tmp_path):
    tree = ScriptTree(tmp_path)
    tree.use_built("qvp", "qvpctl")
    return tree


def in_place(place, tree, script):
    done = tree.run("bash", "-c", PROLOGUE + script, place=place)
    assert done.returncode == 0, done.stdout
    return done.stdout


# --- The loopback camera ----------------------------------------------------------------------------------------------

NOTHING_LEFT = """echo "status $?"; [[ ! -e /run/qvp-lo.pid ]] && ! pgrep -x qvp && echo nothing is left"""


def test_without_namespaces_a_camera_on_loopback_is_found(tree):
    output = in_place(CONTAINER, tree, "./run; " + NOTHING_LEFT)
    assert f"No virtual camera: {REFUSED}" in output and "a camera on loopback instead\n" in output
    assert re.search(r"^00:00:00:00:00:00 +127\.0\.0\.1 +Camera ", output, re.M)
    assert "\nFound, on loopback alone." in output
    assert output.endswith("status 0\nnothing is left\n")


def test_a_camera_that_is_not_found_is_ended_too(tree):
    write_script(tree.top / "build/release/qvpctl", "[ -e /run/qvp-lo.pid ] && echo searched && exit 1")
    output = in_place(CONTAINER, tree, "./run; " + NOTHING_LEFT)
    assert "searched\nrun: no camera was found" in output and output.endswith("status 1\nnothing is left\n")


def test_the_camera_is_gone_before_run_is(tree):
    write_script(tree.top / "build/release/qvp", """
        trap 'sleep 1; rm /run/qvp-lo.pid; exit' TERM
        touch /run/qvp-lo.pid; echo Client Start; while :; do sleep 0.1; done""")
    write_script(tree.top / "build/release/qvpctl", "echo found")
    assert in_place(CONTAINER, tree, "./run; " + NOTHING_LEFT).endswith("status 0\nnothing is left\n")


@pytest.mark.parametrize("signal", ["TERM", "HUP", "KILL"])
def test_what_ends_the_search_ends_the_camera(tree, signal):
    write_script(tree.top / "build/release/qvpctl", "touch /run/searching; exec sleep 1000")
    assert "gone" in in_place(CONTAINER, tree, f"""
        ./run & until_true test -e /run/searching
        test -e /run/qvp-lo.pid && kill -{signal} $! && until_true test ! -e /run/qvp-lo.pid && until_true eval '! pgrep -x qvp'
        echo gone""")


def test_a_daemon_that_does_not_start_is_told(tree):
    write_script(tree.top / "build/release/qvp", "echo 'no such luck' >&2; exit 1")
    output = in_place(CONTAINER, tree, "./run; " + NOTHING_LEFT)
    assert "run: the daemon does not start on loopback: no such luck\n" in output
    assert output.endswith("status 1\nnothing is left\n")


def test_no_pid_file_is_told_before_anything_is_built(tree):
    output = in_place(CONTAINER_WITHOUT_RUN, tree, "./run; echo status $?")
    assert "for its pid file /var/run/qvp-lo.pid\nstatus 1\n" in output
    assert tree.called("cmake") == []


# --- The page ---------------------------------------------------------------------------------------------------------

SHOW_PAGE = """./run web --print >log 2>&1 & page=$!
    until_true grep -q '/?token=' log; cat log; """
AWAITED = r"^http://127\.0\.0\.1:\d+/\?token=\w+$"


def test_the_page_has_virtual_cameras(tree):
    tree.use_built("libvirtual_clock.so", "virtual_time_server")
    output = in_place(LAN, tree, SHOW_PAGE + """until_true pgrep -x qvp >/dev/null; pgrep -cx qvp
        kill $page; wait $page; until_true eval '! pgrep -x qvp' && echo nothing is left""")
    assert re.search(AWAITED, output, re.M) and output.endswith("nothing is left\n")
    assert "No virtual cameras" not in output


def test_the_page_without_namespaces_looks_at_the_networks_that_are_there(tree):
    output = in_place(CONTAINER, tree, SHOW_PAGE + "kill $page; wait $page; pgrep -x qvp || echo no camera was started")
    assert f"No virtual cameras: {REFUSED}" in output and "those of this machine's networks instead\n" in output
    assert re.search(AWAITED, output, re.M) and output.endswith("no camera was started\n")


# --- An interface -----------------------------------------------------------------------------------------------------

SERVE = """./run probe0 >log 2>&1 & camera=$!
    until_true grep -q 'Client Start' log; echo "camera $camera"
    """


def test_an_interface_of_a_namespace_has_a_camera(tree):
    output = in_place(LAN, tree, SERVE + "test ! -e /sys/class/net/probe0 && cat log && kill $camera && wait $camera")
    assert "\nA camera on probe0; Ctrl-C ends it\n" in output and "Client Start with interface:[probe0]" in output
    assert "BootProto=1\n" in (tree.top / "build/camera/camera.ini").read_text()


def test_no_such_interface_is_told(tree):
    assert in_place(LAN, tree, "./run probe2; echo status $?") == \
        "run: there is no network interface 'probe2' (see: ip -brief link)\nstatus 1\n"
    assert tree.called("cmake") == []


def test_a_second_daemon_is_told_with_the_first_ones_process(tree):
    output = in_place(LAN, tree, SERVE + "./run probe0; echo status $?")
    camera = re.search(r"^camera (\d+)$", output, re.M)[1]
    assert output.endswith(f"run: a daemon already runs on probe0: process {camera} ('kill {camera}' as root ends it)\n"
                           "status 1\n")
    assert len([call for call in tree.called("cmake") if "--build" in call]) == 1


def test_a_daemon_without_its_pid_file_is_told(tree):
    output = in_place(LAN, tree, SERVE + "rm /run/qvp-probe0.pid; ./run probe0; echo status $?")
    camera = re.search(r"^camera (\d+)$", output, re.M)[1]
    assert output.endswith(f"run: qvp, process {camera}, already listens on UDP port 62976 of probe0\nstatus 1\n")


def test_a_daemon_elsewhere_is_no_obstacle(tree):
    output = in_place(LAN, tree, "build/release/qvp probe1 2>first & until_true grep -q 'Client Start' first\n" + SERVE)
    assert "camera " in output


@pytest.mark.parametrize("left", ["12345678", "", "$$"])
def test_a_pid_file_of_nobody_is_removed(tree, left):
    output = in_place(LAN, tree, f"echo {left} >/run/qvp-probe0.pid\n" + SERVE + "cat log; cat /run/qvp-probe0.pid")
    camera = re.search(r"^camera (\d+)$", output, re.M)[1]
    assert "Removing /var/run/qvp-probe0.pid, which a daemon that is gone left behind\n" in output
    assert output.endswith(camera)


# --- A tree that cannot be written ------------------------------------------------------------------------------------

@pytest.mark.parametrize("argument", ["", "probe0"])
@pytest.mark.parametrize("built", [True, False])
def test_a_read_only_tree_is_told_before_anything_else(tree, argument, built):
    if not built:
        shutil.rmtree(tree.top / "build")
    output = in_place(LAN, tree, f"""
        mount --bind . . && mount -o remount,bind,ro . && cd "$PWD" && ./run {argument}; echo status $?""")
    assert output == (f"run: {tree.top}/build cannot be written (Read-only file system): clone the tree into a folder of "
                      "your own and start ./run there, or remove build/ if another user made it\nstatus 1\n")
    assert tree.calls.read_text() == ""


# --- ./test -----------------------------------------------------------------------------------------------------------

CTEST_FILE = f"""
add_test(needy {SOURCE}/tests/end_to_end/in_lan true)
set_tests_properties(needy PROPERTIES SKIP_RETURN_CODE 77)
add_test(modest true)
add_test(broken false)
"""


def test_tests_left_out_are_named_with_the_reason(tree):
    (tree.top / "build/release/CTestTestfile.cmake").write_text(CTEST_FILE)
    output = in_place(CONTAINER, tree, "./test -E broken; echo status $?")
    assert re.search(r"The following tests did not run:\n\s+1 - needy \(Skipped\)\n", output)
    assert re.search(r"\n1 of 2 tests ran, 1 were left out: this system does not let you make namespaces \(unshare: .*\)\n"
                     r"status 0\n$", output)


def test_a_failure_beside_tests_left_out_stays_one(tree):
    (tree.top / "build/release/CTestTestfile.cmake").write_text(CTEST_FILE)
    output = in_place(CONTAINER, tree, "./test; echo status $?")
    assert "3 - broken (Failed)" in output and "\n2 of 3 tests ran, 1 were left out: " in output
    assert output.endswith("status 8\n")


def test_nothing_is_said_where_all_ran(tree):
    (tree.top / "build/release/CTestTestfile.cmake").write_text(CTEST_FILE)
    output = in_place(LAN, tree, "./test -R modest; echo status $?")
    assert "100% tests passed" in output and "left out" not in output and output.endswith("status 0\n")
