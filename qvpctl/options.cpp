#include "qvpctl/options.h"

#include <CLI/CLI.hpp>

static std::string checkNotEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

void addInterface(CLI::App& app, std::string& name, const char* help) {
    app.add_option("-i,--interface", name, help)->type_name("NAME")->check(checkNotEmpty);
}

void addJson(CLI::App& app, bool& json, const char* help) { app.add_flag("--json", json, help); }

void addSeconds(CLI::App& app, const char* names, double& seconds, const char* help) {
    app.add_option(names, seconds, help)->type_name("SECONDS")->check(checkSeconds);
}

void addCount(CLI::App& app, const char* names, uint32_t& count, const char* help) {
    app.add_option(names, count, help)->type_name("N")->check(checkCount);
}

std::string checkSeconds(const std::string& text) {
    double seconds = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, seconds);
    return isNumber && seconds >= 0.1 && seconds <= 3600 ? "" : "must be 0.1 to 3600 seconds";
}

std::string checkCount(const std::string& text) {
    const bool isNumber = text.find_first_not_of("0123456789") == text.npos && text.size() <= 10;
    const bool isCount = isNumber && !text.empty() && text[0] != '0' && std::stoull(text) <= UINT32_MAX;
    return isCount ? "" : "must be a whole number from 1 to 4294967295";
}
