// The options of the commands. Only this part and the command line know CLI11, whose header costs a compiler seconds.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "client/request.h"

namespace CLI {
class App;
}

inline constexpr char kCommonGroup[] = "Common options";

enum class Traffic { Asks, OnlyListens };

// Those that commands have in common.
struct CommonOptions {
    std::string interface;  // empty: every one that can broadcast
    client::Family family = client::Family::Primary;
    double waitSeconds = 2;
    unsigned retries = 2;
    std::string user;          // empty: of the environment, else "admin"
    std::string passwordFile;  // empty: of the environment, else asked for
    bool json = false;

    std::chrono::milliseconds wait() const;
};

// For a command that only listens: those that are not about requests.
void addCommonOptions(CLI::App& app, CommonOptions& options, Traffic traffic);

// What stands behind the name without a dash: CAMERA, and words of a command's own.
void addCamera(CLI::App& app, std::string& camera);
void addWords(CLI::App& app, const char* name, std::vector<std::string>& words, const char* help);
void addNeededWords(CLI::App& app, const char* name, std::vector<std::string>& words, const char* help);
void addNeededWord(CLI::App& app, const char* name, std::string& word, const char* help);
// The words are what completion offers, too.
void addChoice(CLI::App& app, const char* name, std::string& word, const std::vector<std::string>& words,
               const char* help);
// The same for a word that need not be there.
void addOptionalChoice(CLI::App& app, const char* name, std::string& word, const std::vector<std::string>& words,
                       const char* help);

// Words of that list with commas between them, in any order.
void addList(CLI::App& app, const char* names, std::vector<std::string>& words, const std::vector<std::string>& known,
             const char* help);
void addText(CLI::App& app, const char* names, std::string& text, const char* type, const char* help);
void addFile(CLI::App& app, const char* names, std::string& path, const char* help);
void addCount(CLI::App& app, const char* names, uint32_t& count, const char* help);
void addBoundedCount(CLI::App& app, const char* names, uint32_t& count, uint32_t most, const char* help);  // from 1
void addFlag(CLI::App& app, const char* names, bool& flag, const char* help);

// Text at the end of the help page, made when it is shown.
void addFooter(CLI::App& app, std::function<std::string()> text);

// Checks in CLI11's form: what is wrong with the text, or "".
std::string checkSeconds(const std::string& text);  // 0.1 to 3600
std::string checkCount(const std::string& text);    // 1 to 4294967295
