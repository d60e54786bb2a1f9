// The options of the commands. Only this part and the command line know CLI11, whose header costs a compiler seconds.
#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

void addInterface(CLI::App& app, std::string& name, const char* help);
void addJson(CLI::App& app, bool& json, const char* help);
void addSeconds(CLI::App& app, const char* names, double& seconds, const char* help);
void addCount(CLI::App& app, const char* names, uint32_t& count, const char* help);

// Checks in CLI11's form: what is wrong with the text, or "".
std::string checkSeconds(const std::string& text);  // 0.1 to 3600
std::string checkCount(const std::string& text);    // 1 to 4294967295
