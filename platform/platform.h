// The firmware's operations: everything the daemon asks of the camera it runs on.
//
// A board brings its own library with these functions (-DQVP_PLATFORM_LIBRARY=…); platform/linux/ is the reference that
// answers on any Linux machine. All of it is plain C. Unless a line says otherwise, the daemon calls from its main
// thread only, one call at a time, with no signal handler able to interrupt a call.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// --- Requests ------------------------------------------------------------------------------------------------------

// Optional: a board need not have it. The daemon calls it when a request has come, before a presence report, and before
// what runs after a reply. A platform may read what it needs once from one call to the next; what other programs have
// finished changing before a call, it must show behind it. Before the first call nothing may be kept. In a static
// library it has to stand in a file with another operation: by itself it does not make the linker take its file.
void requestBegins(void);

// --- Configuration store -------------------------------------------------------------------------------------------
//
// Sections of named keys. The store knows the type of every key, and with it what *out and *value are:
//   text    char[256], NUL-terminated, at most 255 bytes in front of the NUL
//   number  int32_t
//   short   uint16_t
//   flag    uint8_t
// store_keys.h lists the keys with their types.

// Returns 0, or -1 with *out untouched when there is no such key. The daemon does not look at the result: what it has
// put into *out before, zeros but for the PPPoE flag, is then the value.
int cfgRead(const char* section, const char* key, void* out);

enum { kWriteThrough = 1 };  // `flag` of cfgWrite: to permanent storage

// Returns 0 once the value is stored for good, -1 when it could not be: the store is then as it was, or at worst holds
// the value without being safe from a power cut. `flag` is always kWriteThrough. The daemon does not look at the
// result.
int cfgWrite(const char* section, const char* key, const void* value, int flag);

// The names in an ini file, in file order: its sections, and the fields of one section. Null when there are none, or no
// such file or section. The list belongs to the caller until ListFree; ListFree takes null.
struct ListNode {
    char             name[256];
    struct ListNode* next;
};
struct ListNode* CfgEnumSec(const char* file);
struct ListNode* CfgEnumField(const char* file, const char* section);
void             ListFree(struct ListNode* list);

// --- Interfaces ----------------------------------------------------------------------------------------------------
//
// Addresses in network order, first octet first. Each returns 0, or -1 with the target untouched when there is none.

int net_get_ifaddr(const char* interface, uint8_t address[4]);
int net_get_netmask(const char* interface, uint8_t mask[4]);
int net_get_gateway(const char* interface, uint8_t address[4]);  // default gateway reached by that interface
int net_get_dns(uint8_t address[4]);                             // first name server
int net_get_dns2(uint8_t address[4]);                            // second name server
int net_get_hwaddr(const char* interface, uint8_t mac[6]);       // also -1 for a null name

// --- Credentials and users -----------------------------------------------------------------------------------------

// Decodes Base64 text (standard alphabet) up to the first byte outside the alphabet, and keeps the whole bytes decoded
// so far, padded or not. Writes at most 255 bytes and a NUL; `out` has room for 256. Returns the number of bytes, or -1
// for a null argument.
int Base64dec(const char* text, char* out);

// Makes the user table ready; `flag` is always 0. Returns 0, or -1.
int usrInit(int flag);

// The group of the administrators.
static const char kAdministrators[] = "admin";

// Name of the group the user belongs to, "admin" for one who has that group among others; the empty text for an unknown
// user, never null. Valid until the next call.
const char* usrGetGroupName(const char* name);

// --- Shared system information -------------------------------------------------------------------------------------
//
// Integers in numbered slots, shared with the other programs of the camera. SIWriteInt is also called from the upgrade
// worker's thread.

enum { kUpgradeStateSlot = 4 };                                      // how far a firmware upgrade is
enum { kUpgradeRunning = 1, kUpgradeDone = 2, kUpgradeFailed = 3 };  // what stands there

int SIReadInt(int slot, int* value);  // 0, or -1 with *value untouched
int SIWriteInt(int slot, int value);  // 0, or -1

// --- Time zones ----------------------------------------------------------------------------------------------------
//
// A zone has two numbers: the internal id that the store keeps (DATETIME / TimeZone) and the id that configuration
// tools use on the wire, 0 to 255. `table` is always kTimezoneTable.

enum { kTimezoneTable = 2 };

int get_oem_timezone_id(int table, int id);       // internal id to wire id, -1: none
int get_real_timezone_id(int table, int wireId);  // wire id to internal id, -1: none

// Daylight saving as the user gave it. Months 1-12; week of the month 1-5, 5 the last; weekday 0-6, 0 Sunday; local
// wall-clock hours and minutes.
struct TimezoneRule {
    int32_t shift_minutes;
    int32_t start_month, start_week, start_weekday, start_hour, start_minute;
    int32_t stop_month, stop_week, stop_weekday, stop_hour, stop_minute;
};

// `mode` of set_timezone.
enum {
    kNoDaylightSaving        = 0,  // standard time all year
    kDaylightSavingOfTheZone = 1,
    kDaylightSavingOfTheUser = 2,  // by a rule
};

// Installs the zone for the whole system, so that every process sees it from its next tzset on. `zero` is always 0.
// `rule` is null but for the last of the modes. Returns 0, or -1 with the system's zone as it was.
int set_timezone(int zero, int id, int mode, const struct TimezoneRule* rule);

// --- Wireless ------------------------------------------------------------------------------------------------------

// Fills `buffer` (`size` bytes, zeroed by the caller) with the driver's list of networks, NUL-terminated: one heading
// line, then a line a network, its columns at fixed positions:
//   0 channel (4)  4 SSID (33)  37 BSSID (20)  57 security (23)  80 signal (10)  90 mode (8)  98 "In" or "Ad" (2)
// Returns 0, or -1 with the buffer untouched when there is no list. May take seconds.
int getSiteList(char* buffer, int size);

// The radio region's number. Returns 0, or -1 with *region untouched.
int HWMIB_getRegion(int* region);

// --- Firmware and configuration images -----------------------------------------------------------------------------
//
// Called from the upgrade worker's thread only, with the image in memory and its length in bytes.

int VerifyFWCode(const void* image, int length);   // 0: may be installed; 1, 2 or -1: refused
int UpgradeFWCode(const void* image, int length);  // 0: written
int cfgAesDecode(void* data, int length);          // deciphers in place; above 0: done
int unpackCFG(const void* data, int length);       // 0: installed

#ifdef __cplusplus
}
#endif
