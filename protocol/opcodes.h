// Command codes, the header's `opcode`. Both families use the same numbers; the last two exist in the primary only.
#pragma once

#include <stdint.h>

namespace opcode {
constexpr uint16_t kPresenceReport   = 0x00A0;  // never a request
constexpr uint16_t kDiscovery        = 0x00A1;
constexpr uint16_t kSetBasicInfo     = 0x00A2;
constexpr uint16_t kUserVerification = 0x00A3;
constexpr uint16_t kChangeAdmin      = 0x00A4;
constexpr uint16_t kQuerySupport     = 0x00A5;
constexpr uint16_t kGetNetworkAdv    = 0x00A6;
constexpr uint16_t kSetNetworkAdv    = 0x00A7;
constexpr uint16_t kGetWifi          = 0x00A8;
constexpr uint16_t kSetWifi          = 0x00A9;
constexpr uint16_t kFactoryReset     = 0x00AB;
constexpr uint16_t kGetDatetime      = 0x00AC;
constexpr uint16_t kSetDatetime      = 0x00AD;
constexpr uint16_t kSiteSurvey       = 0x00AE;
constexpr uint16_t kGetSimpleWifi    = 0x00AF;
constexpr uint16_t kSetSimpleWifi    = 0x00B0;
constexpr uint16_t kInitSiteSurvey   = 0x00B1;
constexpr uint16_t kCommitSetting    = 0x00C0;
constexpr uint16_t kReboot           = 0x0103;
constexpr uint16_t kAlertInfo        = 0x0200;
}  // namespace opcode
