// Options that several commands share.
#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

void addInterface(CLI::App& app, std::string& name, const char* help);
void addJson(CLI::App& app, bool& json, const char* help);

// Checks in CLI11's form: what is wrong with the text, or "".
std::string checkSeconds(const std::string& text);  // 0.1 to 3600
std::string checkCount(const std::string& text);    // 1 to 4294967295
