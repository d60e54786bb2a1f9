// Every key of the configuration store, once: the constant that names it in the code, its section, its name there, and
// its type, which the store knows too. In byte order of section and name.
#pragma once

#include <stdint.h>

// clang-format off
#define QVP_STORE_KEYS(TEXT, NUMBER, SHORT, FLAG)                          \
    TEXT  (kCameraName,             "CAMSYSTEM",    "CameraName")          \
    FLAG  (kDaylightSaving,         "DATETIME",     "DayLightSaving")      \
    FLAG  (kDaylightSavingAuto,     "DATETIME",     "DstAuto")             \
    TEXT  (kNtpServer,              "DATETIME",     "NTPServerIP")         \
    TEXT  (kDaylightSavingOffset,   "DATETIME",     "Offset")              \
    NUMBER(kTimeProtocol,           "DATETIME",     "Protocol")            \
    TEXT  (kDaylightSavingStart,    "DATETIME",     "Starttime")           \
    TEXT  (kDaylightSavingStop,     "DATETIME",     "Stoptime")            \
    NUMBER(kTimezone,               "DATETIME",     "TimeZone")            \
    FLAG  (kDdnsEnable,             "DDNS",         "Enable")              \
    TEXT  (kDdnsHost,               "DDNS",         "HOST")                \
    NUMBER(kDdnsProvider,           "DDNS",         "PROVIDER")            \
    TEXT  (kDdnsPassword,           "DDNS",         "PWD")                 \
    TEXT  (kDdnsUser,               "DDNS",         "UID")                 \
    NUMBER(kHttpPort,               "HTTP",         "Port")                \
    NUMBER(kRadioRegion,            "HWMIB",        "Region")              \
    TEXT  (kBrandName,              "INFO",         "BrandName")           \
    NUMBER(kBuild,                  "INFO",         "Build")               \
    TEXT  (kHardwareVersion,        "INFO",         "HWVersion")           \
    TEXT  (kProduct,                "INFO",         "Product")             \
    NUMBER(kBootProtocol,           "NETWORK_V4",   "BootProto")           \
    TEXT  (kNameServer,             "NETWORK_V4",   "DNS0")                \
    TEXT  (kSecondNameServer,       "NETWORK_V4",   "DNS1")                \
    TEXT  (kGateway,                "NETWORK_V4",   "Gateway")             \
    TEXT  (kIpAddress,              "NETWORK_V4",   "IP")                  \
    FLAG  (kPppoeEnable,            "NETWORK_V4",   "PPPoEEnable")         \
    TEXT  (kPppoeUser,              "NETWORK_V4",   "PPPoEUID")            \
    TEXT  (kSubnetMask,             "NETWORK_V4",   "SubnetMask")          \
    SHORT (kFirmwareVersion,        "System",       "FirmwareVersion")     \
    SHORT (kMainVersion,            "System",       "MainVersion")         \
    TEXT  (kModelName,              "System",       "ModelName")           \
    FLAG  (kUpnpEnable,             "UPnP",         "Enable")              \
    TEXT  (kAdministratorPassword,  "USER_ADMIN",   "Password1")           \
    TEXT  (kAdministratorName,      "USER_ADMIN",   "Username1")           \
    NUMBER(kWifiAuthentication,     "WIRELESS",     "Authentication")      \
    NUMBER(kWifiChannel,            "WIRELESS",     "Channel")             \
    FLAG  (kWifiEnable,             "WIRELESS",     "Enable")              \
    NUMBER(kWifiEncryption,         "WIRELESS",     "Encryption")          \
    NUMBER(kWifiMode,               "WIRELESS",     "Mode")                \
    TEXT  (kWifiPreSharedKey,       "WIRELESS",     "PreSharedKey")        \
    TEXT  (kWifiSsid,               "WIRELESS",     "SSID")                \
    NUMBER(kWifiActiveWepKey,       "WIRELESS",     "WEPActiveKey")        \
    TEXT  (kWifiWepKey0,            "WIRELESS",     "WEPKey0")             \
    TEXT  (kWifiWepKey1,            "WIRELESS",     "WEPKey1")             \
    TEXT  (kWifiWepKey2,            "WIRELESS",     "WEPKey2")             \
    TEXT  (kWifiWepKey3,            "WIRELESS",     "WEPKey3")             \
    NUMBER(kWifiWepKeyFormat,       "WIRELESS",     "WEPKeyFormat")        \
    NUMBER(kWifiWepKeyLength,       "WIRELESS",     "WEPKeyLength")        \
    NUMBER(kRepeaterAuthentication, "WIRELESS_REP", "Authentication")      \
    NUMBER(kRepeaterChannel,        "WIRELESS_REP", "Channel")             \
    FLAG  (kRepeaterEnable,         "WIRELESS_REP", "Enable")              \
    NUMBER(kRepeaterEncryption,     "WIRELESS_REP", "Encryption")          \
    NUMBER(kRepeaterMode,           "WIRELESS_REP", "Mode")                \
    TEXT  (kRepeaterPreSharedKey,   "WIRELESS_REP", "PreSharedKey")        \
    TEXT  (kRepeaterSsid,           "WIRELESS_REP", "SSID")                \
    FLAG  (kRepeaterFollowsWifi,    "WIRELESS_REP", "SameWithClient")      \
    NUMBER(kRepeaterActiveWepKey,   "WIRELESS_REP", "WEPActiveKey")        \
    TEXT  (kRepeaterWepKey0,        "WIRELESS_REP", "WEPKey0")             \
    TEXT  (kRepeaterWepKey1,        "WIRELESS_REP", "WEPKey1")             \
    TEXT  (kRepeaterWepKey2,        "WIRELESS_REP", "WEPKey2")             \
    TEXT  (kRepeaterWepKey3,        "WIRELESS_REP", "WEPKey3")             \
    NUMBER(kRepeaterWepKeyFormat,   "WIRELESS_REP", "WEPKeyFormat")        \
    NUMBER(kRepeaterWepKeyLength,   "WIRELESS_REP", "WEPKeyLength")
// clang-format on

// A key of each type; what cfgRead and cfgWrite take for it stands behind it.
struct TextKey {  // char[256]
    const char* section;
    const char* name;
};

struct NumberKey {  // int32_t
    const char* section;
    const char* name;
};

struct ShortKey {  // uint16_t
    const char* section;
    const char* name;
};

struct FlagKey {  // uint8_t
    const char* section;
    const char* name;
};

#define QVP_TEXT_KEY(constant, section, name) constexpr TextKey constant{section, name};
#define QVP_NUMBER_KEY(constant, section, name) constexpr NumberKey constant{section, name};
#define QVP_SHORT_KEY(constant, section, name) constexpr ShortKey constant{section, name};
#define QVP_FLAG_KEY(constant, section, name) constexpr FlagKey constant{section, name};
QVP_STORE_KEYS(QVP_TEXT_KEY, QVP_NUMBER_KEY, QVP_SHORT_KEY, QVP_FLAG_KEY)
#undef QVP_TEXT_KEY
#undef QVP_NUMBER_KEY
#undef QVP_SHORT_KEY
#undef QVP_FLAG_KEY

// Values with a meaning.
constexpr int32_t kBootProtocolDhcp = 1;  // of kBootProtocol; 0: static
constexpr int32_t kTimeProtocolNtp  = 1;  // of kTimeProtocol; 0: set by hand
