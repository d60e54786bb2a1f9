#include "store/store_keys.h"

static constexpr StoreType kText = StoreType::Text;
static constexpr StoreType kInt32 = StoreType::Int32;
static constexpr StoreType kUint16 = StoreType::Uint16;
static constexpr StoreType kFlag = StoreType::Flag;

// In byte order, for the search.
static constexpr StoreKey kKeys[] = {
    {"CAMSYSTEM",    "CameraName",      kText  },
    {"DATETIME",     "DayLightSaving",  kFlag  },
    {"DATETIME",     "DstAuto",         kFlag  },
    {"DATETIME",     "NTPServerIP",     kText  },
    {"DATETIME",     "Offset",          kText  },
    {"DATETIME",     "Protocol",        kInt32 },
    {"DATETIME",     "Starttime",       kText  },
    {"DATETIME",     "Stoptime",        kText  },
    {"DATETIME",     "TimeZone",        kInt32 },
    {"DDNS",         "Enable",          kFlag  },
    {"DDNS",         "HOST",            kText  },
    {"DDNS",         "PROVIDER",        kInt32 },
    {"DDNS",         "PWD",             kText  },
    {"DDNS",         "UID",             kText  },
    {"HTTP",         "Port",            kInt32 },
    {"HWMIB",        "Region",          kInt32 },
    {"INFO",         "BrandName",       kText  },
    {"INFO",         "Build",           kInt32 },
    {"INFO",         "HWVersion",       kText  },
    {"INFO",         "Product",         kText  },
    {"NETWORK_V4",   "BootProto",       kInt32 },
    {"NETWORK_V4",   "DNS0",            kText  },
    {"NETWORK_V4",   "DNS1",            kText  },
    {"NETWORK_V4",   "Gateway",         kText  },
    {"NETWORK_V4",   "IP",              kText  },
    {"NETWORK_V4",   "PPPoEEnable",     kFlag  },
    {"NETWORK_V4",   "PPPoEUID",        kText  },
    {"NETWORK_V4",   "SubnetMask",      kText  },
    {"System",       "FirmwareVersion", kUint16},
    {"System",       "MainVersion",     kUint16},
    {"System",       "ModelName",       kText  },
    {"UPnP",         "Enable",          kFlag  },
    {"USER_ADMIN",   "Password1",       kText  },
    {"USER_ADMIN",   "Username1",       kText  },
    {"WIRELESS",     "Authentication",  kInt32 },
    {"WIRELESS",     "Channel",         kInt32 },
    {"WIRELESS",     "Enable",          kFlag  },
    {"WIRELESS",     "Encryption",      kInt32 },
    {"WIRELESS",     "Mode",            kInt32 },
    {"WIRELESS",     "PreSharedKey",    kText  },
    {"WIRELESS",     "SSID",            kText  },
    {"WIRELESS",     "WEPActiveKey",    kInt32 },
    {"WIRELESS",     "WEPKey0",         kText  },
    {"WIRELESS",     "WEPKey1",         kText  },
    {"WIRELESS",     "WEPKey2",         kText  },
    {"WIRELESS",     "WEPKey3",         kText  },
    {"WIRELESS",     "WEPKeyFormat",    kInt32 },
    {"WIRELESS",     "WEPKeyLength",    kInt32 },
    {"WIRELESS_REP", "Authentication",  kInt32 },
    {"WIRELESS_REP", "Channel",         kInt32 },
    {"WIRELESS_REP", "Enable",          kFlag  },
    {"WIRELESS_REP", "Encryption",      kInt32 },
    {"WIRELESS_REP", "Mode",            kInt32 },
    {"WIRELESS_REP", "PreSharedKey",    kText  },
    {"WIRELESS_REP", "SSID",            kText  },
    {"WIRELESS_REP", "SameWithClient",  kFlag  },
    {"WIRELESS_REP", "WEPActiveKey",    kInt32 },
    {"WIRELESS_REP", "WEPKey0",         kText  },
    {"WIRELESS_REP", "WEPKey1",         kText  },
    {"WIRELESS_REP", "WEPKey2",         kText  },
    {"WIRELESS_REP", "WEPKey3",         kText  },
    {"WIRELESS_REP", "WEPKeyFormat",    kInt32 },
    {"WIRELESS_REP", "WEPKeyLength",    kInt32 },
};

static constexpr int compareText(const char* left, const char* right) {
    while (*left != '\0' && *left == *right) {
        ++left;
        ++right;
    }
    return static_cast<unsigned char>(*left) - static_cast<unsigned char>(*right);
}

static constexpr int compareKey(const StoreKey& key, const char* section, const char* name) {
    int order = compareText(key.section, section);
    return order != 0 ? order : compareText(key.name, name);
}

static constexpr size_t kKeyCount = sizeof kKeys / sizeof kKeys[0];

static constexpr bool isSortedAndUnique() {
    for (size_t index = 1; index < kKeyCount; ++index) {
        if (compareKey(kKeys[index - 1], kKeys[index].section, kKeys[index].name) >= 0) return false;
    }
    return true;
}

static_assert(isSortedAndUnique(), "the search needs the keys in byte order, each once");

const StoreKey* findStoreKey(const char* section, const char* name) {
    if (section == nullptr || name == nullptr) return nullptr;
    size_t low = 0;
    size_t high = kKeyCount;
    while (low < high) {
        size_t middle = (low + high) / 2;
        int order = compareKey(kKeys[middle], section, name);
        if (order == 0) return &kKeys[middle];
        if (order < 0) low = middle + 1;
        if (order > 0) high = middle;
    }
    return nullptr;
}
