#include "qvpctl/fleet/fleet.h"

#include <algorithm>

#include "client/fleet/camera_check.h"
#include "client/neighbours.h"
#include "client/text.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

using client::Error;
using client::ErrorKind;
using client::Fault;
using client::FileCamera;
using client::Found;

void addFile(CLI::App& app, FleetOptions& options) {
    addNeededWord(app, "FILE", options.file, "A table as spreadsheets save it (CSV), or a policy (FILE.toml)");
}

void addParallel(CLI::App& app, FleetOptions& options) {
    constexpr uint32_t kMost = 64;
    addBoundedCount(app, "--parallel", options.parallel, kMost, "How many cameras at a time, 1 to 64 (default 8)");
}

void addElsewhere(CLI::App& app, FleetOptions& options) {
    addFlag(app, "--elsewhere", options.elsewhere, "Allow addresses that are of no network of this machine");
}

// One heard twice is taken as it answered.
static std::optional<Found> foundOf(const std::vector<Found>& found, Mac mac) {
    std::optional<Found> best;
    for (const Found& one : found) {
        if (client::isSame(one.camera.mac, mac) && (!best || (one.answered && !best->answered))) best = one;
    }
    return best;
}

static std::vector<Found> search(client::Link& link, const CommonOptions& common, std::chrono::milliseconds wait,
                                 const std::function<bool(const Found&)>& isLast) {
    client::Search search{chosenInterfaces(common), common.family, wait, 0, isLast};
    search.rounds = static_cast<int>(common.retries) + 1;
    client::Finder finder(link, search, say);
    finder.run([](const Found&) {});
    return finder.all();
}

// A camera that is heard only by its reports sends one every 30 seconds.
static constexpr std::chrono::seconds kReportInterval(31);

std::vector<Found> callRoll(const CommonOptions& common, int stop, std::span<const FileCamera> cameras) {
    client::UdpLink network = linkWithReports(stop);
    WaitBar link(network, common);
    std::vector<Found> found = search(link, common, common.wait(), nullptr);
    std::vector<Mac> missing;
    for (const FileCamera& one : cameras) {
        if (!foundOf(found, one.mac)) missing.push_back(one.mac);
    }
    if (missing.empty()) return found;
    say(std::to_string(missing.size()) + (missing.size() == 1 ? " camera has" : " cameras have") +
        " not answered; listening for presence reports, for up to " + std::to_string(kReportInterval.count()) + " s");
    bool isSilent = false;
    const auto isLast = [&](const Found& one) {
        const auto isIt = [&one](Mac mac) { return client::isSame(mac, one.camera.mac); };
        isSilent |= std::erase_if(missing, isIt) > 0 && !one.answered && one.isNear;
        return missing.empty();
    };
    for (const Found& one : search(link, common, kReportInterval, isLast)) found.push_back(one);
    if (!isSilent) return found;
    // A report comes whenever it comes: a camera nearby may have come up since it was asked.
    for (const Found& one : search(link, common, common.wait(), nullptr)) found.push_back(one);
    return found;
}

std::vector<client::Login> loginsFor(const FileCamera& camera, const client::Login& login) {
    std::vector<client::Login> logins = {login};
    for (const client::Assignment& one : camera.assignments) {
        if (std::string_view(one.setting->key) != "password") continue;
        const auto& password = std::get<client::Secret>(one.value);
        if (password.reveal() != login.password.reveal()) logins.push_back({login.user, password});
    }
    return logins;
}

Fleet::Fleet(FleetOptions options, const CommonOptions& common, int stop)
    : options_(std::move(options)),
      common_(common),
      stop_(stop),
      file_(loadCameraFile(options_.file)),
      login_(readLogin(common)),
      loginOf_([login = login_](Mac) { return login; }) {}

Fleet::Fleet(client::CameraFile file, LoginOf loginOf, FleetOptions options, const CommonOptions& common, int stop)
    : options_(std::move(options)),
      common_(common),
      stop_(stop),
      file_(std::move(file)),
      loginOf_(std::move(loginOf)) {}

Reading Fleet::readOne(const FileCamera& camera) const {
    Reading reading{&camera, foundOf(found_, camera.mac), {}, {}};
    try {
        if (!reading.found) throw Error(ErrorKind::NotFound, "it has neither answered nor reported");
        if (camera.unsettled) throw Error(*camera.unsettled);
        withJob(common_, loginsFor(camera, loginOf_(camera.mac)), stop_,
                [&](client::CameraJob& job) { reading.plan = job.look(*reading.found, camera.assignments); });
    } catch (const Error& error) {
        reading.error = error;
    }
    return reading;
}

static client::Seen seenOf(const std::optional<Found>& found) {
    if (!found) return {};
    return {found->camera.name, found->camera.product};
}

void Fleet::read() { read(callRoll(common_, stop_, file_.cameras)); }

void Fleet::read(std::vector<Found> found) {
    found_ = std::move(found);
    std::vector<client::Seen> seen;
    for (const FileCamera& camera : file_.cameras) seen.push_back(seenOf(foundOf(found_, camera.mac)));
    settled_ = client::settle(file_, seen);
    for (const Fault& note : settled_.notes) {
        say(pathOf(options_.file, file_, note.place) + ":" + std::to_string(note.place.line) + ": " + note.text);
    }
    readings_.assign(settled_.cameras.size(), {});
    inParallel(settled_.cameras.size(), options_.parallel, stop_,
               [this](size_t i) { readings_[i] = readOne(settled_.cameras[i]); });
    if (isStopped(stop_)) throw Error(ErrorKind::Unverified, "stopped: nothing was sent that changes a camera");
}

std::vector<Fault> Fleet::conflicts() const {
    std::vector<client::PlannedCamera> planned;
    for (const Reading& one : readings_) {
        if (one.plan) planned.push_back({one.camera, *one.plan});
    }
    const auto hosts = client::answeringHosts(newAddresses(planned), std::chrono::seconds(1));
    const auto elsewhere = options_.elsewhere ? client::Elsewhere::Allowed : client::Elsewhere::Refused;
    return findConflicts(planned, found_, hosts, elsewhere);
}

std::vector<Fault> Fleet::faults(Conflicts conflicts) const {
    std::vector<Fault> faults = settled_.faults;
    if (conflicts == Conflicts::Refused) std::ranges::copy(this->conflicts(), std::back_inserter(faults));
    for (const Reading& one : readings_) {
        const bool isFault = one.error && one.error->kind() == ErrorKind::BadValue;
        if (isFault) faults.push_back(faultOn(*one.camera, one.error->what()));
    }
    client::sortByPlace(faults);
    return faults;
}

void Fleet::refuseFaults(Conflicts conflicts) const {
    const std::vector<Fault> faults = this->faults(conflicts);
    if (!faults.empty()) throw faultsOf(options_.file, file_, faults);
}

void Fleet::tellInformation() const {
    std::string names;
    for (const std::string& name : file_.information) names += (names.empty() ? "" : ", ") + name;
    if (!names.empty()) say("these columns are for people, and set nothing: " + names);
    for (const Reading& one : readings_) {
        if (!one.plan || one.camera->address.empty()) continue;
        const std::string has = client::addressText(one.plan->state.camera.address);
        const std::string gets = client::addressText(one.plan->wanted.camera.address);
        if (one.camera->address == has || one.camera->address == gets) continue;
        say(client::macText(one.camera->mac) + " has the address " + has + ", and its column address says " +
            one.camera->address + ": that sets nothing, ipv4.address does");
    }
}

ExitCode worstOf(const std::vector<Reading>& readings) {
    ExitCode worst = kSuccess;
    for (const Reading& one : readings) {
        if (one.error) worst = std::max(worst, exitCodeOf(one.error->kind()));
    }
    return worst;
}

const char* resultOf(const Error& error) {
    if (error.kind() == ErrorKind::Unverified) return "unverified";
    return error.kind() == ErrorKind::NotFound ? "unreachable" : "failed";
}
