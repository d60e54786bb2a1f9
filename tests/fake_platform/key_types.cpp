#include "key_types.h"

#include <map>
#include <utility>

namespace fake {
namespace {

using Keys = std::map<std::pair<std::string, std::string>, KeyType>;

const Keys& keys() {
    using enum KeyType;
    static const Keys table{
        {{"INFO", "BrandName"}, Text},
        {{"INFO", "Product"}, Text},
        {{"INFO", "HWVersion"}, Text},
        {{"INFO", "Build"}, Number},
        {{"System", "ModelName"}, Text},
        {{"System", "MainVersion"}, Number16},
        {{"System", "FirmwareVersion"}, Number16},
        {{"CAMSYSTEM", "CameraName"}, Text},
        {{"HTTP", "Port"}, Number},
        {{"NETWORK_V4", "BootProto"}, Number},
        {{"NETWORK_V4", "IP"}, Text},
        {{"NETWORK_V4", "SubnetMask"}, Text},
        {{"NETWORK_V4", "Gateway"}, Text},
        {{"NETWORK_V4", "DNS0"}, Text},
        {{"NETWORK_V4", "DNS1"}, Text},
        {{"NETWORK_V4", "PPPoEUID"}, Text},
        {{"NETWORK_V4", "PPPoEEnable"}, Flag},
        {{"UPnP", "Enable"}, Flag},
        {{"DDNS", "Enable"}, Flag},
        {{"DDNS", "PROVIDER"}, Number},
        {{"DDNS", "UID"}, Text},
        {{"DDNS", "PWD"}, Text},
        {{"DDNS", "HOST"}, Text},
        {{"DATETIME", "TimeZone"}, Number},
        {{"DATETIME", "DayLightSaving"}, Flag},
        {{"DATETIME", "Protocol"}, Number},
        {{"DATETIME", "NTPServerIP"}, Text},
        {{"DATETIME", "DstAuto"}, Flag},
        {{"DATETIME", "Offset"}, Text},
        {{"DATETIME", "Starttime"}, Text},
        {{"DATETIME", "Stoptime"}, Text},
        {{"USER_ADMIN", "Username1"}, Text},
        {{"USER_ADMIN", "Password1"}, Text},
        {{"WIRELESS", "Enable"}, Flag},
        {{"WIRELESS", "Mode"}, Number},
        {{"WIRELESS_REP", "Mode"}, Number},
        {{"WIRELESS_REP", "SameWithClient"}, Flag},
    };
    return table;
}

// The keys that stand in WIRELESS and again in WIRELESS_REP.
KeyType wirelessType(const std::string& key) {
    static const std::map<std::string, KeyType> table{
        {"SSID", KeyType::Text},           {"Channel", KeyType::Number},      {"Authentication", KeyType::Number},
        {"Encryption", KeyType::Number},   {"WEPKeyFormat", KeyType::Number}, {"WEPKeyLength", KeyType::Number},
        {"WEPActiveKey", KeyType::Number}, {"WEPKey0", KeyType::Text},        {"WEPKey1", KeyType::Text},
        {"WEPKey2", KeyType::Text},        {"WEPKey3", KeyType::Text},        {"PreSharedKey", KeyType::Text},
    };
    const auto found = table.find(key);
    return found == table.end() ? KeyType::Unknown : found->second;
}

}  // namespace

KeyType keyType(const std::string& section, const std::string& key) {
    const auto found = keys().find({section, key});
    if (found != keys().end()) return found->second;
    if (section == "WIRELESS" || section == "WIRELESS_REP") return wirelessType(key);
    return KeyType::Unknown;
}

}  // namespace fake
