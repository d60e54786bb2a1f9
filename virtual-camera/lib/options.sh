# shellcheck shell=bash disable=SC2154 # what it reads comes from common.sh and its readers
# The options of one camera, which virtual-camera hands on to `camera start`.

# shellcheck disable=SC2034 # both helps print it
kCameraOptions='  --daemon PATH          the daemon; default: build/release/qvp of this tree, else qvp on the PATH
  --emulator WORDS       program and options that run the daemon, such as "qemu-mips -L /usr/mips-linux-gnu"
  --store FILE           factory store, taken as it stands; default: virtual-camera/factory.ini, made a little
                         different for each camera
  --set SECTION/KEY=TEXT change one value of the factory store; TEXT is written as it stands (may be repeated)
  --born HOW             in an unlucky state (may be repeated):
                           other-subnet       192.168.0.20/24, its gateway 192.168.0.1
                           duplicate-address  the address of camera 1; camera 1 has that of camera 2
                           mute:SECONDS       up, but cut off from the LAN for that time
                           mute               the same until the command: camera unmute NUMBER
  --wireless list|iw     where its site survey looks: in a file, /etc/qvp/site_list.txt, or through interface wlan0
                         with a program iw, whose scan stands in /etc/qvp/scan.txt; default: list
  --env NAME=TEXT        environment variable for everything that runs in the camera (may be repeated)
  --reboot-delay SECONDS what /var/reboot waits instead of what it is asked to'

# shellcheck source=store_keys.sh
. "$parts/store_keys.sh"

daemon='' emulator='' store='' reboot_delay='' wireless=list
settings=() environment=() born=()

# Takes the camera option that stands first in its arguments, with its value; 1: it is no camera option.
camera_option() {
    case $1 in
    --daemon | --emulator | --store | --set | --born | --wireless | --env | --reboot-delay)
        (($# > 1)) || fail "option $1 needs a value"
        ;;
    esac
    case $1 in
    --daemon) daemon=$2 ;;
    --emulator) emulator=$2 ;;
    --store) store=$2 ;;
    --set) settings+=("$2") ;;
    --born) born+=("$2") ;;
    --wireless) wireless=$2 ;;
    --env) environment+=("$2") ;;
    --reboot-delay) reboot_delay=$2 ;;
    *) return 1 ;;
    esac
}

find_daemon() {
    if [[ -z $daemon && -x $tree/../build/release/qvp ]]; then
        daemon=$tree/../build/release/qvp
    elif [[ -z $daemon ]]; then
        daemon=$(type -P qvp) || fail 'no daemon: build it (./run does), or name it with --daemon'
    fi
    [[ -f $daemon ]] || fail "$daemon: no such file"
    [[ -x $daemon ]] || fail "$daemon: not executable"
    daemon=$(readlink -f "$daemon")
}

check_camera_options() {
    local text
    find_daemon
    # Only the first word is looked up; the rest are that program's options.
    [[ -z $emulator ]] || type -P "${emulator%% *}" >/dev/null || fail "${emulator%% *}: no such program"
    [[ -z $store || -r $store ]] || fail "$store: cannot be read"
    [[ -z $store ]] || store=$(readlink -f "$store")
    for text in "${settings[@]}"; do
        check_setting "$text"
    done
    for text in "${born[@]}"; do
        [[ $text =~ ^(other-subnet|duplicate-address|mute|mute:[0-9]{1,6})$ ]] ||
            fail "--born $text: not other-subnet, duplicate-address, mute or mute:SECONDS"
    done
    [[ $wireless == list || $wireless == iw ]] || fail "--wireless $wireless: neither list nor iw"
    for text in "${environment[@]}"; do
        [[ $text =~ ^[A-Za-z_][A-Za-z0-9_]*= ]] || fail "--env $text: not of the form NAME=TEXT"
    done
    [[ -z $reboot_delay || $reboot_delay =~ ^[0-9]+(\.[0-9]+)?$ ]] || fail "--reboot-delay $reboot_delay: not a number"
}
