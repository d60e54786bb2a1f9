# shellcheck shell=bash disable=SC2154 # `tree` comes from common.sh, where it was born from births.sh
# The factory store of a camera, made from an ini file and settings of the form SECTION/KEY=TEXT.

# Puts KEY=TEXT into section [NAME] of the array `lines`: in place of the key's line, else behind the section's heading.
put_setting() { # NAME KEY TEXT
    local at section='' heading=''
    for at in "${!lines[@]}"; do
        if [[ ${lines[at]} == \[* ]]; then
            section=${lines[at]}
            [[ $section != "[$1]" ]] || heading=$at
        elif [[ $section == "[$1]" && ${lines[at]} == "$2="* ]]; then
            lines[at]=$2=$3
            return
        fi
    done
    if [[ -z $heading ]]; then
        heading=${#lines[@]}
        lines+=("[$1]")
    fi
    lines=("${lines[@]:0:heading+1}" "$2=$3" "${lines[@]:heading+1}")
}

# What tells one camera of the tree's own factory store from another.
camera_settings() { # NUMBER
    local products=(VC-1000 VC-2000 VC-3000)
    local product=${products[$1 % 3]}
    printf '%s\n' "INFO/Product=$product" "System/ModelName=$product-${1}A" "System/FirmwareVersion=$(($1 % 100))" \
        "CAMSYSTEM/CameraName=Camera $1"
}

network_settings() {
    printf '%s\n' "NETWORK_V4/IP=$address" "NETWORK_V4/SubnetMask=$mask" "NETWORK_V4/Gateway=$gateway"
}

factory_store() { # NUMBER FILE-OR-NOTHING SETTING...
    local file=$2 lines settings=() setting
    if [[ -z $file ]]; then
        file=$tree/factory.ini
        mapfile -t settings < <(camera_settings "$1" && network_settings)
    elif [[ $address != "$(camera_address "$1")" ]]; then
        mapfile -t settings < <(network_settings)
    fi
    settings+=("${@:3}")
    if ((${#settings[@]} == 0)); then
        cat "$file" # byte for byte
        return
    fi
    mapfile -t lines <"$file"
    for setting in "${settings[@]}"; do
        [[ $setting =~ ^([^/=]+)/([^=]+)=(.*)$ ]] && put_setting "${BASH_REMATCH[@]:1}"
    done
    printf '%s\n' "${lines[@]}"
}
