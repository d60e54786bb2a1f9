# shellcheck shell=bash disable=SC2034 # the constants are for those that read this in
# What the scripts of the virtual camera share: messages and the LAN's numbering.

PATH=$PATH:/usr/sbin:/sbin
parts=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
tree=$(dirname "$parts")

# As env and timeout have it, 125 says that the command was never started; its own codes stay free.
fail() {
    printf 'virtual-camera: %s\n' "$*" >&2
    exit 125
}

# 198.18.0.0/15 is set aside for tests of network devices, so no route of the host can be meant by it.
kPrefix=15
kMask=255.254.0.0
kToolAddress=198.18.0.1
kNameServers=(198.18.0.2 198.18.0.3)
kMostCameras=1000
kRun=/run/virtual-camera

camera_address() {
    printf '198.18.%d.%d' $(($1 / 256 + 1)) $(($1 % 256))
}

camera_mac() {
    printf '02:51:56:50:%02x:%02x' $(($1 / 256)) $(($1 % 256))
}

# Where NAME is: beside the daemon, where one is told; here, where this is installed; in the build of this tree.
built() { # NAME
    local file
    for file in ${daemon:+"$(dirname "$daemon")/$1"} "$tree/$1" "$tree/../build/release/$1"; do
        [[ -f $file ]] || continue
        readlink -f "$file"
        return 0
    done
    return 1
}

require_number() { # WHAT TEXT LOWEST HIGHEST
    [[ $2 =~ ^(0|[1-9][0-9]{0,5})$ ]] && (($2 >= $3 && $2 <= $4)) && return
    fail "$1: '$2' is not a number from $3 to $4"
}
