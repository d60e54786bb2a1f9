"""Cameras that are born in an unlucky state, each by itself among others."""
import shlex

from running import DAEMON, DISCOVER, in_lan, replies, text


def names(output):
    return {address: text(data, 226, 64) for address, data in replies(output).items()}


def test_another_subnet():
    """Requests reach it, and its answers are lost at a gateway that is not there."""
    output = in_lan(f"""
        camera exec 1 -- ip -4 -brief address show eth0; camera exec 1 -- ip route show default; {DISCOVER} 2 2 1
        sed -i 's/^IP=.*/IP=198.18.9.9/; s/^SubnetMask=.*/SubnetMask=255.254.0.0/' $store
        camera exec 1 -- /etc/init.d/ipv4 restart; {DISCOVER} 2
        """, "-n", "2", "--camera", "1", "--born", "other-subnet")
    lines = output.splitlines()
    assert lines[0].split()[2] == "192.168.0.20/24"
    assert lines[1].split()[:3] == ["default", "via", "192.168.0.1"]
    assert lines[2].startswith("198.18.1.2 ")
    assert names(output) == {"198.18.1.2": "Camera 2", "198.18.9.9": "Camera 1"}
    assert list(replies(output)) == ["198.18.1.2", "198.18.9.9"]


def test_an_address_twice():
    output = in_lan("for camera in 1 2 3; do camera exec $camera -- ip -4 -brief address show eth0; done",
                    "-n", "3", "--camera", "3", "--born", "duplicate-address")
    assert [line.split()[2] for line in output.splitlines()] == ["198.18.1.1/15", "198.18.1.2/15", "198.18.1.1/15"]
    output = in_lan("camera exec 1 -- ip -4 -brief address show eth0", "--born", "duplicate-address")
    assert output.split()[2] == "198.18.1.2/15"


def test_a_store_of_its_own(tmp_path):
    store = tmp_path / "own.ini"
    store.write_text("[NETWORK_V4]\nIP=198.18.8.8\nSubnetMask=255.254.0.0\n")
    output = in_lan("camera exec 1 -- ip -4 -brief address show eth0", "--store", str(store), "--born", "other-subnet")
    assert output.split()[2] == "192.168.0.20/24"


def test_what_is_set_comes_last():
    output = in_lan("camera exec 1 -- ip -4 -brief address show eth0", "--born", "other-subnet",
                    "--set", "NETWORK_V4/IP=192.168.0.99")
    assert output.split()[2] == "192.168.0.99/24"


def test_mute():
    output = in_lan(f"{DISCOVER} 2 2 1; echo; camera unmute 1; {DISCOVER} 2; echo; camera mute 2; {DISCOVER} 2 2 1",
                    "-n", "2", "--camera", "1", "--born", "mute")
    mute, heard, other_mute = output.split("\n\n")
    assert [names(part) for part in (mute, heard, other_mute)] == [
        {"198.18.1.2": "Camera 2"}, {"198.18.1.1": "Camera 1", "198.18.1.2": "Camera 2"}, {"198.18.1.1": "Camera 1"}]


def test_mute_for_a_time():
    assert len(names(in_lan(f"{DISCOVER} 2 2 1", "-n", "2", "--camera", "2", "--born", "mute:100000"))) == 1
    assert len(names(in_lan(f"{DISCOVER} 2", "-n", "2", "--camera", "2", "--born", "mute:1"))) == 2


def test_the_time_of_a_camera_that_is_gone():
    """Nothing of it is left to give a later camera of the same number a voice."""
    options = shlex.join(DAEMON)
    output = in_lan(f"""
        camera start 5 {options} --born mute:1 >/dev/null; camera stop 5
        camera start 5 {options} --born mute >/dev/null; {DISCOVER} 1 3
        """, "-n", "0")
    assert names(output) == {}


def test_options_of_one_camera():
    output = in_lan(f"{DISCOVER} 3", "-n", "3", "--set", "CAMSYSTEM/CameraName=Hall", "--camera", "2",
                    "--set", "CAMSYSTEM/CameraName=Gate", "--set", "HTTP/Port=81", "--camera", "3", "--set", "HTTP/Port=82")
    assert list(names(output).values()) == ["Hall", "Gate", "Hall"]
    assert [data[295] for data in replies(output).values()] == [80, 81, 82]
