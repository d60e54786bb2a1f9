# shellcheck shell=bash disable=SC2154,SC2034 # what it reads and what it sets are others'
# How a camera is born: its first address, and whether the LAN hears it.

birth() { # NUMBER HOW...
    address=$(camera_address "$1") mask=$kMask gateway=$kToolAddress mute=''
    local how
    for how in "${@:2}"; do
        case $how in
        other-subnet) address=192.168.0.20 mask=255.255.255.0 gateway=192.168.0.1 ;;
        duplicate-address) address=$(camera_address $(($1 == 1 ? 2 : 1))) ;;
        mute | mute:*) mute=$how ;;
        esac
    done
}
