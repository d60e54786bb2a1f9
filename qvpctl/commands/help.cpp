// qvpctl help: what is of no one command.
#include <iostream>
#include <memory>

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
    "  qvpctl help manual | man -l -\n";

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

static std::string textOf(const std::string& topic, const CLI::App& app) {
    if (topic == "manual") return manualPage(allCommands(), describe(app));
    if (topic == "exit-status") return std::string(exitStatusHelp()) + "\n";
    return topic == "settings" ? settingsHelp() : zonesHelp();
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto topic = std::make_shared<std::string>();
    addChoice(app, "TOPIC", *topic, {"exit-status", "settings", "time-zones", "manual"},
              "exit-status, settings, time-zones or manual");
    return [topic, &app, &common] {
        printText(common.json, textOf(*topic, app));
        return kSuccess;
    };
}

const Subcommand kHelp = {"help", "Explain exit status, settings or time zones; print the manual.", kExamples, prepare};
