# shellcheck shell=bash
# Reads the configuration store.

# Takes the quotes and escapes of a value off. A printf format knows all escapes that the store has.
plain_text() { # VALUE
    local text=$1
    if [[ $text == \"*\" ]]; then
        text=${text:1:-1}
        # shellcheck disable=SC2059
        printf "${text//%/%%}"
    else
        printf '%s' "$text"
    fi
}

store_value() { # SECTION KEY
    local LC_ALL=C line section='' value
    while IFS= read -r line || [[ -n $line ]]; do
        line=${line%$'\r'}
        if [[ $line =~ ^[[:blank:]]*\[[[:blank:]]*([^]]*[^][:blank:]])[[:blank:]]*\] ]]; then
            section=${BASH_REMATCH[1]}
        elif [[ $section == "$1" && $line =~ ^[[:blank:]]*"$2"[[:blank:]]*=[[:blank:]]*(.*)$ ]]; then
            value=${BASH_REMATCH[1]}
            plain_text "${value%"${value##*[![:blank:]]}"}"
            return
        fi
    done </etc/qvp/camera.ini
}
