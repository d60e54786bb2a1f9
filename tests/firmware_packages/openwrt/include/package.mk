# Stands in for OpenWrt's package.mk. The goals: `values` prints what the package says of itself, `image` builds it and
# installs it into IMAGE.
PKG_BUILD_DIR:=$(BUILD_DIR)/$(PKG_NAME)-$(PKG_VERSION)
PKG_INSTALL_DIR:=$(PKG_BUILD_DIR)/ipkg-install

define BuildPackage
$(eval $(Package/$(1)))

values:
	$(info version $(PKG_VERSION))
	$(info licence $(PKG_LICENSE))
	$(info licence-file $(PKG_LICENSE_FILES))
	$(info tree $(QVP_TREE))
	$(info depends-on-files $(PKG_FILE_DEPENDS))
	$(info config-depends $(PKG_CONFIG_DEPENDS))
	$(info title $(TITLE))
	$(info section $(SECTION) $(CATEGORY))
	$(info depends $(DEPENDS))
	$(info conffiles $(strip $(Package/$(1)/conffiles)))

image:
	$$(Build/Prepare)
	$$(Build/Configure/Default)
	$$(Build/Compile/Default)
	$$(Build/Install/Default)
	$$(call Package/$(1)/install,$(IMAGE))
endef
