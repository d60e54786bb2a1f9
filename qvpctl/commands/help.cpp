// qvpctl help: what is of no one command.
#include <algorithm>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "client/time_zones.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/keys.h"
#include "qvpctl/manual.h"
#include "qvpctl/output.h"

static const char kExamples[] =
    "  qvpctl help exit-status   what each exit status says\n"
    "  qvpctl help settings      every setting, and the values it takes\n"
    "  qvpctl help time-zones    every time zone that cameras know\n"
    "  qvpctl help manual | man -l -\n"
    "  qvpctl help manual set | man -l -\n";

static std::string zonesHelp() {
    std::string text = "Time zones, west to east; each goes by its number, its name, or any of its places:\n";
    for (const client::TimeZone& zone : client::timeZones()) {
        std::string row = std::to_string(zone.id);
        row.resize(5, ' ');
        row += zone.name;
        row.resize(std::max(row.size() + 2, size_t{38}), ' ');
        text += "  " + row + zone.places + "\n";
    }
    return text;
}

struct HelpWords {
    std::string topic;
    std::string command;
};

static std::string manual(const std::string& command, const CLI::App& app) {
    const std::vector<CommandText> texts = describe(app);
    if (command.empty()) return manualPage(allCommands(), texts);
    const auto commands = allCommands();
    const auto one = std::ranges::find(commands, command, &Subcommand::name);
    return commandPage(**one, *std::ranges::find(texts, command, &CommandText::name));
}

static std::string textOf(const HelpWords& words, const CLI::App& app) {
    if (words.topic == "manual") return manual(words.command, app);
    if (!words.command.empty()) {
        throw client::Error(client::ErrorKind::BadValue, "only the manual has a page for each command");
    }
    if (words.topic == "exit-status") return std::string(exitStatusHelp()) + "\n";
    return words.topic == "settings" ? settingsHelp() : zonesHelp();
}

static std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const Subcommand* command : allCommands()) names.emplace_back(command->name);
    return names;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto words = std::make_shared<HelpWords>();
    addChoice(app, "TOPIC", words->topic, {"exit-status", "settings", "time-zones", "manual"},
              "exit-status, settings, time-zones or manual");
    addOptionalChoice(app, "COMMAND", words->command, commandNames(), "Of the manual, the page of that command");
    return [words, &app, &common] {
        printText(common.json, textOf(*words, app));
        return kSuccess;
    };
}

const Subcommand kHelp = {"help", "Explain exit status, settings or time zones; print the manual.", kExamples, prepare};
