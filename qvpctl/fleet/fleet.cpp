#include "qvpctl/fleet/fleet.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "client/neighbours.h"
#include "client/text.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

namespace fs = std::filesystem;
using client::CameraFile;
using client::Error;
using client::ErrorKind;
using client::Fault;
using client::FileCamera;
using client::Found;

void addFile(CLI::App& app, FleetOptions& options) {
    addNeededWord(app, "FILE", options.file, "A table as spreadsheets save it (CSV): mac, and settings");
}

void addParallel(CLI::App& app, FleetOptions& options) {
    constexpr uint32_t kMost = 64;
    addBoundedCount(app, "--parallel", options.parallel, kMost, "How many cameras at a time, 1 to 64 (default 8)");
}

void addElsewhere(CLI::App& app, FleetOptions& options) {
    addFlag(app, "--elsewhere", options.elsewhere, "Allow addresses that are of no network of this machine");
}

std::string readWhole(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file) text << file.rdbuf();
    const bool isFolder = fs::is_directory(path);
    if (isFolder || !file || file.bad()) {
        throw client::localError("cannot read " + printable(path), isFolder ? EISDIR : errno != 0 ? errno : EIO);
    }
    return text.str();
}

// A secret that many rows name is read, or asked for, once. A file is looked for beside the table.
class ReferencedSecrets {
public:
    explicit ReferencedSecrets(const std::string& path) : folder_(fs::path(path).parent_path()) {}

    client::Secret read(const std::string& key, const std::string& reference) {
        const auto name = std::pair(key, reference);
        const auto known = known_.find(name);
        if (known != known_.end()) return known->second;
        return known_[name] = readSecret(key, source(reference));
    }

private:
    std::string source(const std::string& reference) const {
        constexpr std::string_view kFile = "file:";
        if (reference == "prompt" || reference.starts_with("prompt:")) return "-";
        return reference.starts_with(kFile) ? "@" + (folder_ / reference.substr(kFile.size())).string() : reference;
    }

    fs::path folder_;
    std::map<std::pair<std::string, std::string>, client::Secret> known_;
};

Error faultsOf(const std::string& path, const std::vector<Fault>& faults) {
    std::string list;
    for (const Fault& fault : faults) {
        const std::string column = fault.place.column > 0 ? " column " + std::to_string(fault.place.column) + ":" : "";
        list += "\n  " + printable(path) + ":" + std::to_string(fault.place.line) + ":" + column + " " +
                printable(fault.text);
    }
    return Error(ErrorKind::BadValue, "nothing is sent: " + printable(path) + " has " + std::to_string(faults.size()) +
                                          (faults.size() == 1 ? " fault" : " faults") + list);
}

CameraFile loadCameraFile(const std::string& path) {
    ReferencedSecrets secrets(path);
    const auto read = [&](const std::string& key, const std::string& reference) {
        return secrets.read(key, reference);
    };
    CameraFile file = client::readCameraFile(readWhole(path), read);
    if (!file.faults.empty()) throw faultsOf(path, file.faults);
    return file;
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
    const auto isLast = [&missing](const Found& one) {
        if (one.answered || !one.isNear)
            std::erase_if(missing, [&](Mac mac) { return client::isSame(mac, one.camera.mac); });
        return missing.empty();
    };
    for (const Found& one : search(link, common, kReportInterval, isLast)) found.push_back(one);
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

Fleet::Fleet(CameraFile file, LoginOf loginOf, FleetOptions options, const CommonOptions& common, int stop)
    : options_(std::move(options)),
      common_(common),
      stop_(stop),
      file_(std::move(file)),
      loginOf_(std::move(loginOf)) {}

Reading Fleet::readOne(const FileCamera& camera) const {
    Reading reading{&camera, foundOf(found_, camera.mac), {}, {}};
    try {
        if (!reading.found) throw Error(ErrorKind::NotFound, "it has neither answered nor reported");
        withJob(common_, loginsFor(camera, loginOf_(camera.mac)), stop_,
                [&](client::CameraJob& job) { reading.plan = job.look(*reading.found, camera.assignments); });
    } catch (const Error& error) {
        reading.error = error;
    }
    return reading;
}

void Fleet::read() { read(callRoll(common_, stop_, file_.cameras)); }

void Fleet::read(std::vector<Found> found) {
    found_ = std::move(found);
    readings_.assign(file_.cameras.size(), {});
    inParallel(file_.cameras.size(), options_.parallel, stop_,
               [this](size_t i) { readings_[i] = readOne(file_.cameras[i]); });
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
    std::vector<Fault> faults;
    if (conflicts == Conflicts::Refused) faults = this->conflicts();
    for (const Reading& one : readings_) {
        const bool isFault = one.error && one.error->kind() == ErrorKind::BadValue;
        if (isFault) faults.push_back({placeOf(*one.camera, one.error->what()), one.error->what()});
    }
    std::ranges::stable_sort(faults, {}, [](const Fault& fault) { return fault.place.line; });
    return faults;
}

void Fleet::refuseFaults(Conflicts conflicts) const {
    const std::vector<Fault> faults = this->faults(conflicts);
    if (!faults.empty()) throw faultsOf(options_.file, faults);
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
