// Interfaces, users, shared integers, time zones, wireless.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "event_log.h"
#include "fake_platform.h"
#include "parts.h"

namespace fake {
namespace {

template <std::size_t Size>
int answer(const std::optional<std::array<std::uint8_t, Size>>& value, std::uint8_t* target) {
    if (!value) return -1;
    std::copy(value->begin(), value->end(), target);
    return 0;
}

// The interface of that name; one without any address when there is none.
Interface interfaceOf(const char* name) {
    const auto found = camera().interfaces.find(name == nullptr ? "" : name);
    return found == camera().interfaces.end() ? Interface{} : found->second;
}

void recordQuery(const char* function, const char* name) {
    appendEvent(std::string(function) + " " + (name == nullptr ? "null" : name));
}

int base64Digit(char character) {
    static const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t at = alphabet.find(character);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

std::string shown(const TimezoneRule* rule) {
    if (rule == nullptr) return "null";
    std::int32_t numbers[11];
    static_assert(sizeof numbers == sizeof *rule);
    std::memcpy(numbers, rule, sizeof numbers);
    std::string list;
    for (const std::int32_t number : numbers) list += (list.empty() ? "" : ",") + std::to_string(number);
    return list;
}

}  // namespace

Camera& camera() {
    static Camera camera;
    return camera;
}

void reset() {
    camera() = {};
    resetActions();
    resetStore();
    resetFailures();
    resetClock();
    resetScript();
    resetMemory();
    emptyRunFolder();
    clearEventLog();
}

}  // namespace fake

using namespace fake;

extern "C" {

int net_get_ifaddr(const char* interface, uint8_t address[4]) {
    recordQuery("net_get_ifaddr", interface);
    return answer(interfaceOf(interface).address, address);
}

int net_get_netmask(const char* interface, uint8_t mask[4]) {
    recordQuery("net_get_netmask", interface);
    return answer(interfaceOf(interface).netmask, mask);
}

int net_get_gateway(const char* interface, uint8_t address[4]) {
    recordQuery("net_get_gateway", interface);
    return answer(interfaceOf(interface).gateway, address);
}

int net_get_dns(uint8_t address[4]) {
    appendEvent("net_get_dns");
    return answer(camera().dns, address);
}

int net_get_dns2(uint8_t address[4]) {
    appendEvent("net_get_dns2");
    return answer(camera().dns2, address);
}

int net_get_hwaddr(const char* interface, uint8_t mac[6]) {
    recordQuery("net_get_hwaddr", interface);
    return answer(interfaceOf(interface).mac, mac);
}

int Base64dec(const char* text, char* out) {
    if (text == nullptr || out == nullptr) return -1;
    std::size_t length = 0;
    std::string bytes;
    for (unsigned bits = 0; base64Digit(text[length]) >= 0; ++length) {
        bits = (bits << 6 | static_cast<unsigned>(base64Digit(text[length]))) & 0xFFFFFF;
        const unsigned spare =
            length % 4 == 0 ? 8 : 6 - static_cast<unsigned>(length % 4) * 2;  // bits of the next byte
        if (spare != 8 && bytes.size() < 255) bytes += static_cast<char>(bits >> spare & 0xFF);
    }
    const bool cleared = std::all_of(out, out + 256, [](char byte) { return byte == 0; });
    appendEvent("Base64dec " + std::string(text, length) + (cleared ? "" : " dirty"));
    std::memcpy(out, bytes.c_str(), bytes.size() + 1);
    return static_cast<int>(bytes.size());
}

int usrInit(int flag) {
    appendEvent("usrInit " + std::to_string(flag));
    return 0;
}

const char* usrGetGroupName(const char* name) {
    static std::string group;
    appendEvent(std::string("usrGetGroupName ") + name);
    const auto found = camera().groups.find(name);
    group = found == camera().groups.end() ? "" : found->second;
    return group.c_str();
}

int SIReadInt(int slot, int* value) {
    appendEvent("SIReadInt " + std::to_string(slot));
    const auto found = camera().slots.find(slot);
    if (found == camera().slots.end()) return -1;
    *value = found->second;
    return 0;
}

int SIWriteInt(int slot, int value) {
    appendEvent("SIWriteInt " + std::to_string(slot) + " " + std::to_string(value));
    camera().slots[slot] = value;
    return 0;
}

int get_oem_timezone_id(int table, int id) {
    appendEvent("get_oem_timezone_id " + std::to_string(table) + " " + std::to_string(id));
    const auto found = camera().wireIds.find(id);
    return found == camera().wireIds.end() ? -1 : found->second;
}

int get_real_timezone_id(int table, int wire_id) {
    appendEvent("get_real_timezone_id " + std::to_string(table) + " " + std::to_string(wire_id));
    const auto& ids = camera().wireIds;
    const auto found = std::find_if(ids.begin(), ids.end(), [&](const auto& pair) { return pair.second == wire_id; });
    return found == ids.end() ? -1 : found->first;
}

int set_timezone(int zero, int id, int mode, const TimezoneRule* rule) {
    appendEvent("set_timezone " + std::to_string(zero) + " " + std::to_string(id) + " " + std::to_string(mode) + " " +
                shown(rule));
    if (callFails("set_timezone")) return -1;
    const auto zone = camera().zoneTexts.find(id);
    if (zone != camera().zoneTexts.end()) setenv("TZ", zone->second.c_str(), 1);
    return 0;
}

int getSiteList(char* buffer, int size) {
    const bool zeroed = std::all_of(buffer, buffer + size, [](char byte) { return byte == 0; });
    appendEvent("getSiteList " + std::to_string(size) + (zeroed ? "" : " dirty"));
    if (!camera().siteList) return -1;
    const std::size_t length = camera().siteList->copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = '\0';
    return 0;
}

int HWMIB_getRegion(int* region) {
    appendEvent("HWMIB_getRegion");
    if (!camera().region) return -1;
    *region = *camera().region;
    return 0;
}

}  // extern "C"
