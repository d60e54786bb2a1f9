#include "fuzz/outlets.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/camera.h"
#include "system/shell.h"
#include "system/trace_output.h"

using fuzz::require;

static std::time_t g_now;

void fuzz::setTime(std::time_t now) { g_now = now; }

// As a shell reads a word in double quotes: where it ends, and nothing of it is done.
static std::string quotedWord(std::string_view& line) {
    std::string word;
    require(line.starts_with('"'), "the word of a command is quoted");
    for (line.remove_prefix(1); !line.starts_with('"'); line.remove_prefix(1)) {
        require(!line.empty(), "the quote of a command is closed");
        require(line[0] != '$' && line[0] != '`', "nothing is expanded in a command");
        if (line[0] == '\\') line.remove_prefix(1);
        word += line[0];
    }
    line.remove_prefix(1);
    return word;
}

static void skip(std::string_view& line, std::string_view words) {
    require(line.starts_with(words), "the command is as it always is");
    line.remove_prefix(words.size());
}

// The password is a stranger's; the name is that of the store.
static void checkSetPassword(std::string_view line) {
    const std::string user = fuzz::storedText("USER_ADMIN", "Username1").substr(0, 64);
    if (user.find_first_of("\"`\\$") != user.npos) return;
    skip(line, "/usr/sbin/set_passwd -u ");
    require(quotedWord(line) == user, "the password is that of the administrator");
    skip(line, " -p ");
    require(quotedWord(line) == fuzz::storedText("USER_ADMIN", "Password1"), "the system gets the stored password");
    require(line == "  2>/dev/null 1>/dev/null", "a command ends as it always does");
}

void shell(const char* command) {
    constexpr std::string_view kFolders[] = {"/etc/init.d/", "/usr/sbin/", "/var/reboot "};
    const std::string_view line = command;
    const auto isIn = [&](std::string_view folder) { return line.starts_with(folder); };
    require(std::ranges::any_of(kFolders, isIn), "only known commands are run");
    if (line.starts_with("/usr/sbin/set_passwd")) checkSetPassword(line);
}

void shellOnWorker(const char* command) { shell(command); }

void putTrace(const char* line, size_t length) {
    require(length > 0 && length <= 1024 && line[length - 1] == '\n', "a trace is one line");
    require(std::memchr(line, '\0', length) == nullptr, "a trace is text");
}

void openTraceOutput() {}

// A number as a person reads it, of any length.
static bool isNumber(std::string_view text, int number) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0]))) text.remove_prefix(1);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    while (text.size() > 1 && text[0] == '0') text.remove_prefix(1);
    return (isNegative && text != "0" ? "-" : "") + std::string(text) == std::to_string(number);
}

// "M<month>.<week>.<weekday>/<hour>:<minute>:..."
static void checkRuleDate(std::string_view text, const int32_t (&numbers)[5]) {
    require(text.starts_with('M'), "a rule begins with its month");
    fuzz::Input input(reinterpret_cast<const uint8_t*>(text.data()) + 1, text.size() - 1);
    const char* ends = "../::";
    for (const int32_t number : numbers) {
        require(isNumber(input.upTo(*ends++), number), "daylight saving is what the store says");
    }
}

extern "C" {

int set_timezone(int, int, int mode, const TimezoneRule* rule) {
    require((mode == kDaylightSavingOfTheUser) == (rule != nullptr), "a rule comes with its mode");
    if (rule == nullptr) return 0;
    const TimezoneRule& one = *rule;
    const std::string start = fuzz::storedText("DATETIME", "Starttime").substr(0, 31);
    const std::string stop = fuzz::storedText("DATETIME", "Stoptime").substr(0, 31);
    checkRuleDate(start, {one.start_month, one.start_week, one.start_weekday, one.start_hour, one.start_minute});
    checkRuleDate(stop, {one.stop_month, one.stop_week, one.stop_weekday, one.stop_hour, one.stop_minute});
    return 0;
}

time_t __wrap_time(time_t* out) {
    if (out != nullptr) *out = g_now;
    return g_now;
}

int __wrap_clock_settime(clockid_t, const timespec*) { return 0; }
int __wrap_clock_nanosleep(clockid_t, int, const timespec*, timespec*) { return 0; }

}  // extern "C"
