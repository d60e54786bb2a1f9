include $(sort $(wildcard $(BR2_EXTERNAL_QVP_PATH)/package/*/*.mk))
