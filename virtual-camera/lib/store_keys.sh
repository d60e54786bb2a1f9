# shellcheck shell=bash disable=SC2154 # `tree` comes from common.sh
# Which sections, keys and values the configuration store takes, out of the daemon's own table of them.

declare -A store_types=()

# Every line of the table has to be understood, so that a change of its form cannot pass for a table without keys.
read_store_keys() {
    local file=$tree/store_keys.h line inside='' # beside the scripts where they are installed
    [[ -e $file ]] || file=$tree/../platform/store_keys.h
    local row='^ *(TEXT|NUMBER|SHORT|FLAG) *\( *k[A-Za-z0-9]+, *"([^"]+)", *"([^"]+)" *\) *(\\?)$'
    [[ -r $file ]] || fail "$file: cannot be read, so --set cannot be checked"
    while IFS= read -r line; do
        if [[ -z $inside ]]; then
            [[ $line != '#define QVP_STORE_KEYS('* ]] || inside=1
            continue
        fi
        [[ $line =~ $row ]] || fail "$file: '$line' is no key, so --set cannot be checked"
        store_types[${BASH_REMATCH[2]}/${BASH_REMATCH[3]}]=${BASH_REMATCH[1]}
        [[ -n ${BASH_REMATCH[4]} ]] || return 0
    done <"$file"
    fail "$file: holds no table of keys, so --set cannot be checked"
}

# What a value stands for, in `plain`; 1: it is malformed.
decode_value() { # TEXT
    local escapes='^([^\\"]|\\[\\"nrt]|\\x[0-9A-Fa-f]{2})*$'
    plain=$1
    [[ $1 == \"* ]] || return 0
    [[ ${#1} -gt 1 && $1 == *\" && ${1:1:-1} =~ $escapes && $1 != *\\x00* ]] || return 1
    plain=${1:1:-1}
    plain=${plain//%/%%}
    # shellcheck disable=SC2059
    printf -v plain "$plain"
}

check_number() { # SETTING LOWEST HIGHEST
    local digits=${plain#-} number
    if [[ $digits =~ ^[0-9]{1,12}$ ]]; then
        number=$((10#$digits))
        [[ $plain != -* ]] || number=$((-number))
        ((number < $2 || number > $3)) || return 0
    fi
    fail "--set $1: not a number from $2 to $3"
}

check_setting() { # SECTION/KEY=TEXT
    local LC_ALL=C plain key text
    [[ $1 =~ ^([^/=]+/[^/=]+)=(.*)$ ]] || fail "--set $1: not of the form SECTION/KEY=TEXT"
    key=${BASH_REMATCH[1]} text=${BASH_REMATCH[2]}
    ((${#store_types[@]})) || read_store_keys
    [[ -n ${store_types[$key]-} ]] || fail "--set $1: the store has no key $key (platform/store_keys.h lists them)"
    [[ $text != *[[:cntrl:]]* ]] || fail "--set $key: a control byte stands in quotes, as an escape such as \"\\n\""
    decode_value "$text" ||
        fail "--set $1: a quoted value ends with its quote and knows the escapes \\\\ \\\" \\n \\r \\t \\xHH"
    case ${store_types[$key]} in
    NUMBER) check_number "$1" -2147483648 2147483647 ;;
    SHORT) check_number "$1" 0 65535 ;;
    FLAG) check_number "$1" 0 255 ;;
    TEXT) ((${#plain} <= 255)) || fail "--set $key: ${#plain} bytes, and the store takes 255" ;;
    esac
}
