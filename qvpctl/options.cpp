#include "qvpctl/options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>

static std::string checkNotEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

std::chrono::milliseconds CommonOptions::wait() const { return std::chrono::milliseconds(llround(waitSeconds * 1000)); }

// The name of the check is where `describe` finds the words.
static CLI::Validator isOneOf(const std::vector<std::string>& words) {
    return CLI::IsMember(words).description("").name(CLI::detail::join(words, " "));
}

static void addRequestOptions(CLI::App& app, CommonOptions& options) {
    const auto add = [&](const char* names, auto& value, const char* help, const char* type) {
        return app.add_option(names, value, help)->type_name(type)->group(kCommonGroup);
    };
    add("-w,--wait", options.waitSeconds, "How long to take answers to each request (default 2)", "SECONDS")
        ->check(checkSeconds);
    add("--retries", options.retries, "How often to ask again (default 2)", "N")
        ->check(CLI::Range(0, 100).description(""));
    const auto takeFamily = [&options](const std::string& name) {
        options.family = name == "landap" ? client::Family::Landap : client::Family::Primary;
    };
    app.add_option_function<std::string>("--family", takeFamily, "Command family: primary (default) or landap")
        ->type_name("NAME")
        ->group(kCommonGroup)
        ->check(isOneOf({"primary", "landap"}));
    add("--user", options.user, "Administrator (default $QVPCTL_USER, else admin)", "NAME");
    add("--password-file", options.passwordFile,
        "File whose first line is the password (default $QVPCTL_PASSWORD, else a prompt)", "FILE");
}

void addCommonOptions(CLI::App& app, CommonOptions& options, Traffic traffic) {
    app.add_option("-i,--interface", options.interface, "Use this interface only, loopback too if named")
        ->type_name("NAME")
        ->group(kCommonGroup)
        ->check(checkNotEmpty);
    if (traffic == Traffic::Asks) addRequestOptions(app, options);
    app.add_flag("--json", options.json, "Print JSON, one object a line")->group(kCommonGroup);
}

void addCamera(CLI::App& app, std::string& camera) {
    app.add_option("CAMERA", camera, "MAC, address or name")->required()->type_name("")->check(checkNotEmpty);
}

void addWords(CLI::App& app, const char* name, std::vector<std::string>& words, const char* help) {
    app.add_option(name, words, help)->type_name("");
}

void addNeededWords(CLI::App& app, const char* name, std::vector<std::string>& words, const char* help) {
    app.add_option(name, words, help)->required()->type_name("");
}

void addNeededWord(CLI::App& app, const char* name, std::string& word, const char* help) {
    app.add_option(name, word, help)->required()->type_name("")->check(checkNotEmpty);
}

void addChoice(CLI::App& app, const char* name, std::string& word, const std::vector<std::string>& words,
               const char* help) {
    CLI::Option* option = app.add_option(name, word, help)->check(isOneOf(words));
    const bool isWord = name[0] != '-';
    option->required(isWord)->type_name(isWord ? "" : "WORD");
}

void addOptionalChoice(CLI::App& app, const char* name, std::string& word, const std::vector<std::string>& words,
                       const char* help) {
    app.add_option(name, word, help)->check(isOneOf(words))->type_name("");
}

static std::vector<std::string> wordsOf(const std::string& list) {
    std::vector<std::string> words(1);
    for (const char letter : list) {
        if (letter == ',') {
            words.emplace_back();
        } else {
            words.back() += letter;
        }
    }
    return words;
}

void addList(CLI::App& app, const char* names, std::vector<std::string>& words, const std::vector<std::string>& known,
             const char* help) {
    const auto check = [known](const std::string& list) -> std::string {
        for (const std::string& word : wordsOf(list)) {
            const bool isKnown = std::ranges::count(known, word) > 0;
            if (!isKnown) return "there is no '" + word + "' among " + CLI::detail::join(known, ", ");
        }
        return "";
    };
    const auto take = [&words](const std::string& list) { words = wordsOf(list); };
    app.add_option_function<std::string>(names, take, help)
        ->type_name("LIST")
        ->check(CLI::Validator(check, "", CLI::detail::join(known, " ")));
}

void addText(CLI::App& app, const char* names, std::string& text, const char* type, const char* help) {
    app.add_option(names, text, help)->type_name(type);
}

void addFile(CLI::App& app, const char* names, std::string& path, const char* help) {
    app.add_option(names, path, help)->type_name("FILE")->check(checkNotEmpty);
}

void addCount(CLI::App& app, const char* names, uint32_t& count, const char* help) {
    app.add_option(names, count, help)->type_name("N")->check(checkCount);
}

void addBoundedCount(CLI::App& app, const char* names, uint32_t& count, uint32_t most, const char* help) {
    app.add_option(names, count, help)->type_name("N")->check(CLI::Range(uint32_t{1}, most).description(""));
}

void addFlag(CLI::App& app, const char* names, bool& flag, const char* help) { app.add_flag(names, flag, help); }

void addFooter(CLI::App& app, std::function<std::string()> text) { app.footer(std::move(text)); }

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
