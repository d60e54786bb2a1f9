// A camera in memory: every function of platform.h, answered from what a test seeds, and a log of everything the daemon
// asked for, platform calls and system calls alike, in the order it asked.
//
// The system calls are caught at link time. These never reach the system: system, execv, clock_settime, setitimer, and
// every kind of sleep; commands of the shell are recorded even when a child process runs them. The others pass through
// until scripted_network.h takes them over.
#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform.h"

namespace fake {

using Octets = std::array<std::uint8_t, 4>;
using Mac = std::array<std::uint8_t, 6>;

struct Interface {
    std::optional<Octets> address, netmask, gateway;
    std::optional<Mac> mac;
};

// Section names with their field names, in file order.
using IniFile = std::vector<std::pair<std::string, std::vector<std::string>>>;

struct Camera {
    std::map<std::string, Interface> interfaces;
    std::optional<Octets> dns, dns2;
    std::map<std::string, std::string> groups;  // of users
    std::map<int, int> slots;                   // shared integers
    std::map<int, int> wireIds;                 // time zones: internal id to wire id
    std::map<int, std::string> zoneTexts;       // internal id to what set_timezone puts into TZ, if anything
    std::map<std::string, IniFile> iniFiles;    // by path
    std::optional<int> region;
    std::optional<std::string> siteList;
    int verifyResult = 0, upgradeResult = 0, decodeResult = 1, unpackResult = 0;
};

// The camera as the daemon sees it from now on; a test writes into it freely.
Camera& camera();

// An empty camera, an empty log, no armed failure, system calls as at program start.
void reset();

// --- Configuration store. A key of an unknown name, or seeded with the wrong type, ends the test program. ---

// A text of 256 bytes, the most there may be, is handed over without its NUL.
void setText(const std::string& section, const std::string& key, const std::string& value);
void setNumber(const std::string& section, const std::string& key, std::int32_t value);
void setNumber16(const std::string& section, const std::string& key, std::uint16_t value);
void setFlag(const std::string& section, const std::string& key, std::uint8_t value);
void erase(const std::string& section, const std::string& key);

std::optional<std::string> text(const std::string& section, const std::string& key);
std::optional<std::int32_t> number(const std::string& section, const std::string& key);
std::optional<std::uint8_t> flag(const std::string& section, const std::string& key);

// "Section Key" of every read whose target was not all zero (a text's 256 bytes, a number's 2 or 4, a flag's one).
const std::vector<std::string>& unclearedReads();

// "Section Key" of every text written whose 256 bytes were not all zero behind its NUL.
const std::vector<std::string>& unclearedWrites();

// Lists of CfgEnum* handed out and not yet freed. The event of a ListFree names the list's first entry.
int openLists();

// --- The log ---
//
// An event is the function's name and its arguments: `cfgRead INFO Product`, `cfgWrite HTTP Port number 80 1`,
// `cfgWrite CAMSYSTEM CameraName "x" 1`, `system /etc/init.d/ipv4 restart`, `clock_settime 1718454896`. A buffer handed
// to Base64dec or getSiteList that is not all zero shows as `dirty` at the end.

using Events = std::vector<std::string>;

Events events();
Events eventsOf(const std::vector<std::string>& functions);  // those functions' only
Events writes();                                             // cfgWrite
Events commands();                                           // the command lines given to system()
void clearEvents();

// Appends a line of the test's own.
void record(const std::string& event);

// Runs `action` once, right behind the next event that begins with `prefix`, in the process and thread that asked.
void onEvent(const std::string& prefix, std::function<void()> action);

// How a text stands in an event: in quotes, bytes outside 32-126 as \xHH, with \" and \\.
std::string quoted(const std::string& text);

// Commands that were started with one of the daemon's signals blocked; with one ignored that a command must be able to
// die of; with a descriptor of the daemon's open, 0 to 2 apart, and be it close-on-exec.
int commandsWithBlockedSignals();
int commandsWithIgnoredSignals();
int commandsWithOpenDescriptors();

// Reads and writes of the store that one of the daemon's signals could have interrupted.
int storeCallsWithOpenSignals();

// --- System calls ---

// Makes the nth call from now (1 the next) of a caught function, of cfgWrite or of set_timezone fail with this errno.
void failCall(const std::string& function, int nth, int error);

// What time() and CLOCK_REALTIME say, until reset.
void setTime(std::time_t now);

// Sleeps return at once and only move a clock of the fake's own. Its time since reset, in nanoseconds:
std::int64_t slept();

// The nth sleep from now is interrupted half way by this signal.
void interruptSleep(int nth, int signal);

}  // namespace fake
