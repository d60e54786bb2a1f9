"""What the board's scripts have the camera do: web page, account, DHCP, time, radio."""
import re
import subprocess

import pytest
from running import DAEMON, LAUNCHER, PAGE, PATIENCE, PROLOGUE, TREE, in_lan

SET = "sed -i -e"
HERE = "198.18.1.1"
REBOOT = """
        before=$(cat $one/pid)
        camera exec 1 -- /var/reboot -d 0
        rebooted() { test "$(cat $one/pid)" != $before && test -s $one/root/run/qvp-eth0.pid; }
        until_true rebooted
"""
ASKS = '401 Basic realm="Camera"'


# --- The web page -----------------------------------------------------------------------------------------------------

def test_the_page_tells_the_name_and_the_model():
    """Whatever the name, as text."""
    output = in_lan(f"""
        {PAGE} http://{HERE}/; {PAGE} http://{HERE}/ admin admin
        {SET} 's/^CameraName=.*/CameraName="<b>\\"Tor\\" \\\\ \\xC3\\xA4 %s \\&amp;"/' $store
        {PAGE} http://{HERE}/ admin admin
        """)
    asked, page, renamed = re.split(r"\n(?=200)", output)
    assert asked == ASKS
    assert "<h1>Camera 1</h1>" in page and "VC-2000-1A" in page
    assert "<h1>&lt;b&gt;&quot;Tor&quot; \\ ä %s &amp;amp;</h1>" in renamed


def test_the_page_moves_to_the_port_of_the_store():
    output = in_lan(f"""
        {SET} 's/^Port=.*/Port=8081/' $store
        camera exec 1 -- /usr/sbin/msger httpdmgr 0 reset_wifi 0 0; {PAGE} http://{HERE}/
        camera exec 1 -- /usr/sbin/msger httpdmgr 0 hrestart 0 0
        {PAGE} http://{HERE}:8081/
        if echo >/dev/tcp/{HERE}/80; then echo still there; fi 2>/dev/null
        {SET} 's/^Port=.*/Port=82/' $store; camera exec 1 -- /etc/init.d/httpd-0 reload; {PAGE} http://{HERE}:82/
        {SET} 's/^Port=.*/Port=70000/' $store; camera exec 1 -- /etc/init.d/httpd-0 restart || cat $one/init.log
        """)
    assert output.splitlines()[:3] == [ASKS] * 3
    assert output.splitlines()[-1] == "no web page at port 70000"


@pytest.mark.parametrize("password", ["new", "", "-n", "a b#c:d", "q\"u'o$t`e\\s", "ä"])
def test_the_page_asks_for_the_account(password):
    done = subprocess.run([LAUNCHER, "run", *DAEMON, "--", "bash", "-c", PROLOGUE + f"""
        camera exec 1 -- /usr/sbin/set_passwd -u admin -p "$0"
        {PAGE} http://{HERE}/ admin admin; {PAGE} http://{HERE}/ admin "$0"
        """, password], capture_output=True, timeout=PATIENCE)
    assert done.returncode == 0, done.stderr
    old, new = done.stdout.decode().split("\n", 1)
    assert (old, new[:4]) == (ASKS, "200 ")


def test_the_account_is_the_stores_at_every_boot():
    output = in_lan(f"""
        {PAGE} http://{HERE}/ admin 'from the "factory"' | head -1
        camera exec 1 -- /usr/sbin/set_passwd -u admin -p other; {PAGE} http://{HERE}/ admin other | head -1
        {REBOOT}
        {PAGE} http://{HERE}/ admin 'from the "factory"' | head -1; {PAGE} http://{HERE}/ admin other
        """, "--set", 'USER_ADMIN/Password1="from the \\"factory\\""')
    assert output.splitlines() == ["200 <!DOCTYPE html>"] * 3 + [ASKS]


def test_an_administrator_without_an_account_does_not_get_in():
    assert in_lan(f"{PAGE} http://{HERE}/ root admin; {PAGE} http://{HERE}/ admin admin", "--set",
                  "USER_ADMIN/Username1=root2").splitlines() == [ASKS] * 2


def test_the_page_ends_with_its_camera():
    assert in_lan(f"""
        running() {{ cat /proc/[0-9]*/cmdline 2>/dev/null | grep -cza ^httpd$ || true; }}
        running; camera exec 1 -- /usr/sbin/msger httpdmgr 0 hrestart 0 0; running
        camera stop 1
        gone() {{ test "$(running)" = 0; }}; until_true gone
        """).splitlines() == ["1", "1"]


# --- Addresses and names ----------------------------------------------------------------------------------------------

# Until a service of the LAN, which start beside its cameras, has its port.
SERVED = """
        serves() { grep -q "^ *[0-9]*: [0-9A-F]*:$1 " /proc/net/udp; }
        until_true serves """
DHCP, TIME = "0043", "007B"  # as the kernel shows the ports


def test_dhcp():
    address, route, servers, name = in_lan(f"""
        {SERVED}{DHCP}
        {SET} 's/^BootProto=.*/BootProto=1/' $store; camera exec 1 -- /etc/init.d/ipv4 restart
        camera exec 1 -- ip -4 -brief address show eth0 | cat
        camera exec 1 -- ip route show default
        camera exec 1 -- cat /etc/resolv.conf | xargs
        camera exec 1 -- getent ahostsv4 ntp.example.com | head -1
        """).splitlines()
    assert re.fullmatch(r"198\.19\.(?!0)\d+\.\d+/15", address.split()[2])
    assert route.split()[:3] == ["default", "via", "198.18.0.1"]
    assert servers == "nameserver 198.18.0.2 nameserver 198.18.0.3"
    assert name.split()[0] == "198.18.0.1"


def test_no_answer_by_dhcp():
    """The address from the factory stays, and the log tells."""
    output = in_lan("""
        camera exec 1 -- ip -4 -brief address show eth0; cat $one/init.log; camera unmute 1
        camera exec 1 -- /etc/init.d/ipv4 restart; camera exec 1 -- ip -4 -brief address show eth0
        """, "--born", "mute", "--set", "NETWORK_V4/BootProto=1", "--set", "NETWORK_V4/IP=198.18.7.7").splitlines()
    assert (output[0].split()[2], output[1]) == ("198.18.1.1/15", "no answer by DHCP")
    assert output[2].split()[2].startswith("198.19.")


# --- Time -------------------------------------------------------------------------------------------------------------

FOLLOWS = ["--set", "DATETIME/NTPServerIP=ntp.example.com"]
AHEAD = """
        echo 400000000 >$QVP_LAN/time_offset
        ahead() { test $(($(camera exec 1 -- date +%s) - $(date +%s))) -gt 399999000; }
"""


def test_the_time_comes_from_the_lan():
    output = in_lan(f"""
        {AHEAD}
        camera exec 1 -- /etc/init.d/ntpc.sh start; until_true ahead
        echo $(($(camera exec 1 -- date +%s) - $(date +%s) - 400000000))
        """, *FOLLOWS)
    assert abs(int(output)) <= PATIENCE


def test_a_camera_that_follows_ntp_asks_at_every_boot():
    in_lan(f"{AHEAD}{REBOOT}\nuntil_true ahead", *FOLLOWS, "--set", "DATETIME/Protocol=1")


def test_the_client_asks_until_there_is_an_answer_or_it_is_stopped():
    """Nobody is at the first server, and the second is one for every name."""
    output = in_lan(f"""
        {AHEAD}
        client() {{ cat $one/root/run/time-client.pid; }}
        camera exec 1 -- /etc/init.d/ntpc.sh start; asking=$(client)
        until_true grep -q 'no time from 198.18.0.3 yet' $one/init.log
        kill -0 $asking
        camera exec 1 -- /etc/init.d/ntpc.sh stop
        ended() {{ ! kill -0 $asking; }}; until_true ended
        {SET} 's/^NTPServerIP=.*/NTPServerIP=there.example.com/' $store
        camera exec 1 -- /etc/init.d/ntpc.sh start; until_true ahead; echo set
        """, "--set", "DATETIME/NTPServerIP=198.18.0.3")
    assert output == "set\n"


def test_times_after_2036():
    """There the server's 32 bits begin anew."""
    output = in_lan("""
        echo $((2230000000 - $(date +%s))) >$QVP_LAN/time_offset
        camera exec 1 -- /etc/init.d/ntpc.sh start
        later() { test $(camera exec 1 -- date +%s) -gt 2229999000; }; until_true later
        camera exec 1 -- date +%Y
        """, *FOLLOWS)
    assert output == "2040\n"


# --- The rest ---------------------------------------------------------------------------------------------------------

def test_a_backup_survives_a_reboot():
    output = in_lan(f"""
        file=/mnt/flash/config/restore.ini
        {SET} 's/^CameraName=.*/CameraName=Saved/' $store; camera exec 1 -- /usr/sbin/userconfig -backup $file
        {SET} 's/^CameraName=.*/CameraName=Changed/' $store
        {REBOOT}
        grep ^CameraName= $one/root$file $store; stat -c %a $one/root$file
        """)
    assert re.findall(r"(\w+)$", output, re.M) == ["Saved", "Changed", "600"]


def test_a_radio_that_scans():
    output = in_lan("camera exec 1 -- iw dev wlan0 scan; camera exec 1 -- ls /sys/class/net/wlan0; camera log 1",
                    "--wireless", "iw")
    assert output.startswith("BSS 02:00:5e:00:01:01(on wlan0)\n")
    assert output.splitlines()[-2:] == ["wireless", "'/usr/sbin/iw' 'dev' 'wlan0' 'scan'"]


def test_a_camera_without_busybox_comes_up():
    output = in_lan(f"""
        camera exec 1 -- sh -c 'rm "$(command -v busybox)"'
        {SET} 's/^BootProto=.*/BootProto=1/' $store
        {REBOOT}
        until_true grep 'no web page: busybox is not installed' $one/init.log
        until_true grep 'no DHCP: busybox is not installed' $one/init.log
        """)
    assert len(output.splitlines()) == 2


def test_services_that_cannot_be():
    """The LAN's log tells of each."""
    output = in_lan(f"""
        {SERVED}{DHCP}
        until_true serves {TIME}
        mount -t tmpfs nothing "$(dirname "$(PATH=$PATH:/usr/sbin type -P dnsmasq)")"
        {TREE}/virtual-camera/lib/services $QVP_LAN/1; cat $QVP_LAN/1/services.log
        """)
    assert output.splitlines() == ["no DHCP and no names: dnsmasq is not installed", "no time server: Address already in use"]
