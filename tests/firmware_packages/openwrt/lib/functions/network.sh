# shellcheck shell=dash
# Stands in for OpenWrt's library of the same name: the device of a network that is up.
network_flush_cache() {
	record flush
}

network_get_device() { # VARIABLE NETWORK
	for pair in $QVP_DEVICES; do
		[ "${pair%%=*}" = "$2" ] || continue
		eval "$1=\${pair#*=}"
		return 0
	done
	return 1
}
