SUMMARY = "Camera configuration service"
DESCRIPTION = "Lets an IP camera be found on its network and set up from there: name, IPv4, wireless, clock, password."
SECTION = "net"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=c99b41b10ac38225fc6ae975bd91ad1a"

SRC_URI = "file://run-ptest"

inherit cmake externalsrc ptest systemd update-rc.d

EXTERNALSRC = "${QVP_TREE}"

# The interfaces to serve, and a board's own platform library; empty: the reference platform for Linux.
QVP_INTERFACES ?= "eth0"
QVP_PLATFORM_LIBRARY ?= ""

# For size, whatever the other recipes are built for.
EXTRA_OECMAKE = "\
    -DCMAKE_BUILD_TYPE=MinSizeRel \
    -DQVP_DAEMON_ONLY=ON \
    -DQVP_WARNINGS_ARE_ERRORS=OFF \
    -DQVP_PLATFORM_LIBRARY=${QVP_PLATFORM_LIBRARY} \
"

SYSTEMD_SERVICE:${PN} = "${@' '.join('qvp@%s.service' % name for name in d.getVar('QVP_INTERFACES').split())}"
INITSCRIPT_NAME = "qvp"
INITSCRIPT_PARAMS = "defaults 60 40"

# Both start it alike, so what Buildroot installs is installed here. The classes remove the one that the image does not use.
do_install() {
    install -D -m 0755 ${B}/qvp ${D}${sbindir}/qvp
    test ! -e ${B}/qvp-store || install -D -m 0755 ${B}/qvp-store ${D}${sbindir}/qvp-store
    install -D -m 0755 ${S}/packaging/buildroot/package/qvp/S60qvp ${D}${sysconfdir}/init.d/qvp
    install -D -m 0644 ${S}/packaging/buildroot/package/qvp/qvp@.service ${D}${systemd_system_unitdir}/qvp@.service
    install -d -m 0755 ${D}${sysconfdir}/default ${D}${sysconfdir}/qvp
    printf 'QVP_INTERFACES="%s"\n' "${QVP_INTERFACES}" > ${D}${sysconfdir}/default/qvp
}

CONFFILES:${PN} = "${sysconfdir}/default/qvp"

# Lists the wireless networks, where there is a radio.
RRECOMMENDS:${PN} = "iw"
RDEPENDS:${PN}-ptest = "bash"
