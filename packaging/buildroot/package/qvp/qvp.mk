################################################################################
#
# qvp
#
################################################################################

QVP_VERSION = 0.1.0
# The tree that this folder stands in: a clone or an unpacked archive
QVP_SITE = $(BR2_EXTERNAL_QVP_PATH)/../..
QVP_SITE_METHOD = local
QVP_LICENSE = MIT
QVP_LICENSE_FILES = LICENSE
QVP_SUPPORTS_IN_SOURCE_BUILD = NO
QVP_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude=/build

# For size, whatever the other packages are built for
QVP_CONF_OPTS = \
	-DCMAKE_BUILD_TYPE=MinSizeRel \
	-DQVP_DAEMON_ONLY=ON \
	-DQVP_WARNINGS_ARE_ERRORS=OFF \
	-DQVP_PLATFORM_LIBRARY=$(call qstrip,$(BR2_PACKAGE_QVP_PLATFORM_LIBRARY))

ifeq ($(BR2_PACKAGE_QVP_SITE_SURVEY),y)
QVP_DEPENDENCIES += iw
endif

QVP_INTERFACES = $(call qstrip,$(BR2_PACKAGE_QVP_INTERFACES))

define QVP_INSTALL_TARGET_CMDS
	$(INSTALL) -D -m 0755 $(QVP_BUILDDIR)/qvp $(TARGET_DIR)/usr/sbin/qvp
	test ! -e $(QVP_BUILDDIR)/qvp-store || \
		$(INSTALL) -D -m 0755 $(QVP_BUILDDIR)/qvp-store $(TARGET_DIR)/usr/sbin/qvp-store
	$(INSTALL) -d -m 0755 $(TARGET_DIR)/etc/default $(TARGET_DIR)/etc/qvp
	printf 'QVP_INTERFACES="%s"\n' "$(QVP_INTERFACES)" > $(TARGET_DIR)/etc/default/qvp
endef

define QVP_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(QVP_PKGDIR)/S60qvp $(TARGET_DIR)/etc/init.d/S60qvp
endef

define QVP_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(QVP_PKGDIR)/qvp@.service \
		$(TARGET_DIR)/usr/lib/systemd/system/qvp@.service
	mkdir -p $(TARGET_DIR)/usr/lib/systemd/system/multi-user.target.wants
	$(foreach interface,$(QVP_INTERFACES),\
		ln -sf ../qvp@.service \
			$(TARGET_DIR)/usr/lib/systemd/system/multi-user.target.wants/qvp@$(interface).service$(sep))
endef

$(eval $(cmake-package))
