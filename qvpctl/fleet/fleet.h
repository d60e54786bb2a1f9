// What the commands share that work with a file of cameras.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "client/error.h"
#include "client/fleet/camera_file.h"
#include "client/fleet/camera_job.h"
#include "client/fleet/conflicts.h"
#include "client/fleet/settle.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/fleet/site_file.h"
#include "qvpctl/options.h"
#include "qvpctl/output.h"

struct FleetOptions {
    std::string file;
    uint32_t parallel = 8;
    bool elsewhere = false;
};

void addFile(CLI::App& app, FleetOptions& options);
void addParallel(CLI::App& app, FleetOptions& options);
void addElsewhere(CLI::App& app, FleetOptions& options);

// Asks everybody who is there, and listens for the reports of those that are looked for and do not answer.
std::vector<client::Found> callRoll(const CommonOptions& common, int stop, std::span<const client::FileCamera> cameras);

// A camera of the file as it was found: with a plan, or an error that says why there is none.
struct Reading {
    const client::FileCamera* camera = nullptr;
    std::optional<client::Found> found;
    std::optional<client::CameraPlan> plan;
    std::optional<client::Error> error;

    bool hasChanges() const { return plan && !plan->changes.empty(); }
};

// The login of the options and, for a camera that the file gives another password, that one.
std::vector<client::Login> loginsFor(const client::FileCamera& camera, const client::Login& login);

// The login of a camera. Throws Error Credentials when none is known.
using LoginOf = std::function<client::Login(Mac)>;

class Fleet {
public:
    Fleet(FleetOptions options, const CommonOptions& common, int stop);

    // Of a file that was read already.
    Fleet(client::CameraFile file, LoginOf loginOf, FleetOptions options, const CommonOptions& common, int stop);

    // Reads every camera, as it was found or where it is looked for here.
    void read();
    void read(std::vector<client::Found> found);

    // Everything that the cameras would refuse and, if asked, that would not go together; in the order of the file.
    enum class Conflicts { Ignored, Refused };
    std::vector<client::Fault> faults(Conflicts conflicts) const;

    // Throws them as one Error BadValue.
    void refuseFaults(Conflicts conflicts) const;

    // Says which columns may be taken for settings, and are none.
    void tellInformation() const;

    const client::CameraFile& file() const { return file_; }
    const std::vector<Reading>& readings() const { return readings_; }
    const client::Login& login() const { return login_; }

private:
    Reading readOne(const client::FileCamera& camera) const;
    std::vector<client::Fault> conflicts() const;

    FleetOptions options_;
    const CommonOptions& common_;
    int stop_;
    client::CameraFile file_;
    client::Login login_;
    LoginOf loginOf_;
    std::vector<client::Found> found_;
    client::Settled settled_;  // that the readings point to
    std::vector<Reading> readings_;
};

// How a command ends for which these cameras could not be read; the highest status that one of them comes to.
ExitCode worstOf(const std::vector<Reading>& readings);

// "unreachable" or "failed".
const char* resultOf(const client::Error& error);
