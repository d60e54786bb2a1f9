#include "qvpctl/web/fleet_work.h"

#include <algorithm>
#include <exception>
#include <sstream>

#include "client/text.h"
#include "qvpctl/fleet/change_run.h"
#include "qvpctl/fleet/export_table.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/web/fleet_body.h"

using client::Error;
using client::ErrorKind;
using client::Fault;
using client::Found;

static constexpr uint32_t kMostParallel = 64;

static WebAnswer faultsAnswer(const std::vector<Fault>& faults) {
    Record list = Record::array();
    for (const Fault& fault : faults) {
        list.push_back({
            {"line",   fault.place.line  },
            {"column", fault.place.column},
            {"text",   fault.text        }
        });
    }
    const Error error(ErrorKind::BadValue, "nothing is sent: the table has faults");
    Record record = errorRecord(error);
    record["faults"] = list;
    return jsonAnswer(
        {
            {"error", record}
    },
        400);
}

static LoginOf loginOf(const WebContext& context) {
    return [&context](Mac mac) {
        const auto login = context.state.login(client::macText(mac));
        if (login) return *login;
        throw Error(ErrorKind::Credentials, "log in first: no user name and password of this camera are known");
    };
}

// The cameras that are known, and those of the table that nobody has heard of, if they answer now.
static std::vector<Found> foundFor(const WebContext& context, const client::CameraFile& file) {
    std::vector<Found> found = context.state.cameras();
    const bool areKnown = std::ranges::all_of(file.cameras, [&](const client::FileCamera& one) {
        return context.state.camera(client::macText(one.mac)).has_value();
    });
    if (areKnown) return found;
    context.state.askForSearch();
    for (const Found& one : callRoll(context.common, context.stop, {})) {
        if (one.answered) found.push_back(one);
    }
    return found;
}

// Calls `work` with all cameras read, unless there is something wrong with the table or with what it asks for.
static WebAnswer withFleet(const WebContext& context, const JsonBody& body, uint32_t parallel,
                           const std::function<WebAnswer(const Fleet&)>& work) {
    client::CameraFile file = fleetFile(body);
    if (!file.faults.empty()) return faultsAnswer(file.faults);
    std::vector<Found> found = foundFor(context, file);
    Fleet fleet(std::move(file), loginOf(context), {.file = "", .parallel = parallel}, context.common, context.stop);
    fleet.read(std::move(found));
    const std::vector<Fault> faults = fleet.faults(Fleet::Conflicts::Refused);
    return faults.empty() ? work(fleet) : faultsAnswer(faults);
}

static uint32_t parallelOf(const JsonBody& body) {
    return body.count("parallel", FleetOptions{}.parallel, kMostParallel);
}

WebAnswer planFleet(const WebContext& context, const JsonBody& body) {
    const uint32_t parallel = parallelOf(body);
    return withFleet(context, body, parallel, [&](const Fleet& fleet) {
        Record cameras = Record::array();
        for (const Reading& one : fleet.readings()) cameras.push_back(planRecord(one));
        Record record = summaryRecord(summaryOf(fleet.readings(), parallel));
        record["cameras"] = cameras;
        return jsonAnswer(record);
    });
}

// What came of a camera: for the run, for the table of cameras, and for the next login.
static void note(const WebContext& context, const std::vector<ChangeTask>& tasks, const Outcome& outcome) {
    context.state.changeRun([&](WebRun& run) { run.finish(outcome); });
    const auto task = std::ranges::find_if(
        tasks, [&](const ChangeTask& one) { return client::isSame(one.found.camera.mac, outcome.mac); });
    if (outcome.error || task == tasks.end()) return;
    for (const client::Assignment& one : task->assignments) {
        if (std::string_view(one.setting->key) != "password") continue;
        const std::string user = task->logins.front().user;
        context.state.setLogin(client::macText(outcome.mac), {user, std::get<client::Secret>(one.value)});
    }
    Found now = task->found;
    now.camera = *outcome.camera;
    now.isNear = client::isNear(now.interface, now.camera.address);
    context.state.take(now);
}

static void run(const WebContext& context, const std::vector<ChangeTask>& tasks, uint32_t parallel) {
    const ChangeWatch watch = {
        .before = [](const client::CameraPlan&) {},
        .after = [&](const Outcome& outcome) { note(context, tasks, outcome); },
        .step =
            [&](Mac mac, const client::Progress& progress) {
                context.state.changeRun([&](WebRun& one) { one.step(mac, progress); });
            },
        .isEnough = [&] { return context.state.isRunStopped(); },
    };
    try {
        const auto outcomes =
            ChangeRun(context.common, parallel, context.stop, watch).run(tasks, ChangeRun::First::Ahead);
        for (const Outcome& one : outcomes) context.state.changeRun([&](WebRun& all) { all.finish(one); });
    } catch (const std::exception& error) {
        context.state.notice(std::string("the run was cut off: ") + error.what());
    }
    context.state.endRun();
    context.state.askForSearch();
}

// Those that there is nothing to do for are done.
static std::vector<ChangeTask> tasksOf(const WebContext& context, const Fleet& fleet) {
    std::vector<ChangeTask> tasks;
    for (const Reading& one : fleet.readings()) {
        if (one.hasChanges()) {
            tasks.push_back({*one.found, one.camera->assignments, one.plan->logins});
            continue;
        }
        Outcome outcome{one.camera->mac, {}, {}, one.error};
        if (one.found) outcome.camera = one.found->camera;
        context.state.changeRun([&](WebRun& all) { all.finish(outcome); });
    }
    return tasks;
}

static WebAnswer begin(WebContext& context, const Fleet& fleet, uint32_t parallel) {
    std::vector<Mac> macs;
    for (const Reading& one : fleet.readings()) macs.push_back(one.camera->mac);
    const auto id = context.state.beginRun(macs);
    if (!id) return errorAnswer(409, "busy", "another run, or the change of one of these cameras, is on the way");
    const auto tasks = tasksOf(context, fleet);
    if (!context.jobs.start([&context, tasks, parallel] { run(context, tasks, parallel); })) {
        context.state.endRun();
        return errorAnswer(429, "too-many", "too many changes at once");
    }
    return jsonAnswer(
        {
            {"id", *id}
    },
        202);
}

WebAnswer applyFleet(WebContext& context, const JsonBody& body) {
    const uint32_t parallel = parallelOf(body);
    return withFleet(context, body, parallel, [&](const Fleet& fleet) { return begin(context, fleet, parallel); });
}

static WebAnswer csvAnswer(const std::string& text, const char* name) {
    return {200,
            "text/csv; charset=utf-8",
            text,
            {{"Content-Disposition", std::string("attachment; filename=\"") + name + "\""}}};
}

static const Column kResult[] = {
    {"", "mac",     0},
    {"", "name",    0},
    {"", "address", 0},
    {"", "result",  0},
    {"", "why",     0},
};

WebAnswer resultTable(const WebContext& context) {
    const auto last = context.state.run();
    if (!last) return errorAnswer(404, "not-found", "nothing was applied yet");
    std::ostringstream text;
    const auto output = csv(text, kResult);
    for (const Outcome& one : last->outcomes()) {
        Record record = outcomeRecord(one);
        record["why"] = record["reason"];
        output->add(record);
    }
    return csvAnswer(text.str(), "result.csv");
}

WebAnswer exportTable(const WebContext& context) {
    const auto cameras =
        readForExport(context.state.cameras(), loginOf(context), FleetOptions{}.parallel, context.common, context.stop);
    if (cameras.empty()) return errorAnswer(404, "not-found", "no camera has answered");
    std::ostringstream text;
    writeExport(text, cameras);
    return csvAnswer(text.str(), "cameras.csv");
}
