# shellcheck shell=bash
# The Debian packages that ./run and ./test need, and how they are installed.

# shellcheck disable=SC2034 # for those that read this in
{
    run_packages=(cmake ninja-build g++ libcli11-dev nlohmann-json3-dev libhowardhinnant-date-dev libmicrohttpd-dev
        libtomlplusplus-dev iproute2 util-linux busybox dnsmasq-base)
    test_packages=(libgtest-dev libgmock-dev python3 python3-pytest python3-jsonschema python3-prometheus-client
        python3-pyte strace tzdata zsh fish groff-base mandoc)
    page_packages=(chromium chromium-driver python3-selenium)
    fuzz_packages=(clang libclang-rt-dev)
    test_all_packages=(googletest g++-mips-linux-gnu libc6-dev-mips-cross qemu-user musl-tools clang-format clang-tidy
        shellcheck valgrind tshark lua-check lua5.4 debhelper dpkg-dev lintian mmdebstrap systemd uidmap make mkdocs
        ansible-core ansible-lint pyflakes3 dropbear-bin openssh-client "${page_packages[@]}"
        "${fuzz_packages[@]}")
    coverage_packages=(gcovr)
    bench_packages=(python3 binutils strace valgrind)
}

as_root() {
    if (($(id -u) == 0)); then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "This needs root rights, and there is no sudo: $*" >&2
        return 1
    fi
}

install_missing() { # PACKAGE...
    local package missing=()
    if ! command -v apt-get >/dev/null; then
        echo "No apt-get here: what Debian calls $* has to be there already" >&2
        return 0
    fi
    for package; do
        [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) == installed* ]] ||
            missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    echo "Installing ${missing[*]}"
    as_root apt-get -qq update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install --no-install-recommends "${missing[@]}" >/dev/null
}
