// qvpctl show: everything about one camera on one page.
#include <iostream>
#include <memory>

#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/records.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl show 'Front door'               by its name\n"
    "  qvpctl show 02:00:5e:10:00:01 --json   as one JSON object\n";

static const Column kColumns[] = {
    {"", "label", 0},
    {"", "text",  0},
};

static constexpr client::Group kGroups[] = {client::Group::Services, client::Group::Wifi, client::Group::Clock};

static const std::pair<const char*, const char*> kFacts[] = {
    {"mac",       "MAC"     },
    {"product",   "product" },
    {"brand",     "brand"   },
    {"model",     "model"   },
    {"firmware",  "firmware"},
    {"hardware",  "hardware"},
    {"url",       "web page"},
    {"interface", "heard on"},
};

static Record settingsOf(const client::CameraState& state) {
    Record settings = Record::object();
    for (const client::Setting& setting : client::allSettings()) {
        if (setting.get != nullptr) settings[setting.key] = setting.get(state);
    }
    return settings;
}

static int show(const std::string& name, const CommonOptions& common) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    const client::Found camera = findCamera(link, common, name);
    client::Session session = openSession(link, common, camera, readLogin(common));
    Record record = recordOf(camera);
    record["settings"] = settingsOf(session.read(kGroups));
    if (common.json) {
        jsonLines(std::cout)->add(record);
        return kSuccess;
    }
    const auto page = table(std::cout, kColumns, outputLooks());
    const auto add = [&](const std::string& label, const Record& text) {
        page->add({
            {"label", label},
            {"text",  text }
        });
    };
    for (const auto& [key, label] : kFacts) add(label, record.at(key));
    for (const std::string& problem : problemsOf(camera)) add("note", problem);
    for (const auto& [key, value] : record["settings"].items()) add(key, value);
    page->finish();
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto name = std::make_shared<std::string>();
    addCamera(app, *name);
    return [name, &common] { return show(*name, common); };
}

const Subcommand kShow = {"show", "Show everything about a camera.", kExamples, prepare};
