// Why a setting command was refused: bytes 22-25 of a reply whose `status` is 2.
#pragma once

#include <stdint.h>

constexpr uint32_t kAccepted = 0;

// Basic information.
constexpr uint32_t kBadPort        = 3;  // 0, or the reserved 8088
constexpr uint32_t kBadAddressMode = 8;

// Date and time.
constexpr uint32_t kBadTime           = 101;
constexpr uint32_t kBadTimezone       = 102;
constexpr uint32_t kBadDaylightSaving = 103;
constexpr uint32_t kBadNtp            = 104;

// Wireless.
constexpr uint32_t kWifiNotEnabled    = 201;
constexpr uint32_t kBadChannel        = 202;
constexpr uint32_t kBadMode           = 204;
constexpr uint32_t kBadEncryption     = 205;
constexpr uint32_t kBadAuthentication = 206;
constexpr uint32_t kBadWepKeyLength   = 207;
constexpr uint32_t kBadWepKeyFormat   = 208;
constexpr uint32_t kBadPreSharedKey   = 210;
constexpr uint32_t kBadWepKey         = 211;
constexpr uint32_t kBadActiveWepKey   = 212;

// Advanced network settings.
constexpr uint32_t kBadNetworkFlag = 304;
