// qvpctl get: settings of one camera.
#include <algorithm>
#include <iostream>
#include <memory>
#include <set>

#include "client/error.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/keys.h"
#include "qvpctl/records.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl get 'Front door'                      every setting of the camera of that name\n"
    "  qvpctl get 02:00:5e:10:00:01 ipv4.address    one value, for a script\n"
    "  qvpctl get 192.168.1.20 wifi.ssid time.zone  some of them\n";

struct GetOptions {
    std::string camera;
    std::vector<std::string> keys;
};

static const Column kColumns[] = {
    {"KEY",   "key",   0},
    {"VALUE", "value", 0},
};

static int get(const GetOptions& options, const CommonOptions& common) {
    const std::vector<const client::Setting*> settings = settingsNamed(options.keys);
    client::UdpLink link(client::UdpLink::Hears::Replies);
    const client::Found camera = findCamera(link, common, options.camera);
    const std::vector<client::Group> groups = groupsOf(settings);
    const bool needsLogin =
        std::ranges::any_of(groups, [](client::Group group) { return group != client::Group::Basic; });
    client::Session session = openSession(link, common, camera, needsLogin ? readLogin(common) : client::Login{});
    const client::CameraState state = session.read(groups);
    const bool isOneValue = options.keys.size() == 1 && settings.size() == 1 && !common.json;
    const auto output = common.json  ? jsonLines(std::cout)
                        : isOneValue ? plainValues(std::cout, "value")
                                     : table(std::cout, kColumns, outputLooks());
    for (const client::Setting* setting : settings) {
        if (setting->get != nullptr || common.json || isOneValue) output->add(recordOf(*setting, state));
    }
    output->finish();
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<GetOptions>();
    addCamera(app, options->camera);
    addWords(app, "KEY", options->keys, "Settings, or their first words such as 'wifi' (default: all)");
    addFooter(app, [] { return settingsHelp() + "\n" + exitStatusHelp(); });
    return [options, &common] { return get(*options, common); };
}

const Subcommand kGet = {"get", "Show settings of a camera.", kExamples, prepare};
