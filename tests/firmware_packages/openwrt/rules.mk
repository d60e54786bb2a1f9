# Stands in for OpenWrt's rules.mk: what a package's Makefile takes from it.
INCLUDE_DIR:=$(TOPDIR)/include
INSTALL_DIR:=install -d -m0755
INSTALL_BIN:=install -m0755
INSTALL_CONF:=install -m0600
TARGET_CFLAGS:=-Os -pipe -fno-caller-saves -fno-plt -Wformat -Werror=format-security
TARGET_CXXFLAGS:=$(TARGET_CFLAGS)
TARGET_LDFLAGS:=-Wl,-z,now -Wl,-z,relro
qstrip=$(strip $(subst ",,$(1)))
