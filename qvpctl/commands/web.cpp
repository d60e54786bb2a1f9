// qvpctl web: a page in this machine's browser that finds cameras and sets them up.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/output.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"
#include "qvpctl/web/doorway.h"
#include "qvpctl/web/lan_watch.h"
#include "qvpctl/web/listener.h"
#include "qvpctl/web/routes.h"
#include "qvpctl/web/server.h"
#include "qvpctl/web/token.h"
#include "qvpctl/web/virtual_cameras.h"

static const char kExamples[] =
    "  qvpctl web                     open the page in the browser that xdg-open knows\n"
    "  qvpctl web --print             only say where it is\n"
    "  qvpctl web --virtual-cameras   try it with three cameras that exist only on this machine\n";

static const Column kColumns[] = {
    {"", "url", 0, Look::Link},
};

struct WebOptions {
    uint32_t port = 0;  // 0: any
    bool print = false;
    bool virtualCameras = false;
};

// A descriptor that is readable once something has happened.
class Happening {
public:
    Happening() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (descriptor_ < 0) throw client::localError("cannot wait for the end", errno);
    }
    ~Happening() { close(descriptor_); }
    Happening(const Happening&) = delete;
    Happening& operator=(const Happening&) = delete;

    void happen() const { eventfd_write(descriptor_, 1); }
    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

// The browser is on its own from here on: it may stay when this program ends.
static void openInBrowser(const std::string& file) {
    std::string program = "xdg-open", argument = file;
    char* const words[] = {program.data(), argument.data(), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&files, stream, "/dev/null", O_RDWR, 0);
    }
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t process = 0;
    const int error = posix_spawnp(&process, words[0], &files, &attributes, words, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) say("there is no xdg-open: open the address in a browser of this machine");
}

class WebCommand {
public:
    WebCommand(const WebOptions& options, const CommonOptions& common)
        : options_(options), common_(common), quiet_(common), handover_(begin()), gate_(port(), handover_.secrets) {
        quiet_.json = true;  // nothing is drawn on a terminal
    }

    ~WebCommand() { removeDoorway(handover_.doorway); }
    WebCommand(const WebCommand&) = delete;
    WebCommand& operator=(const WebCommand&) = delete;

    int run() {
        if (isNew_) announce();
        const bool isVirtual = options_.virtualCameras && !isOnVirtualLan();
        if (isVirtual) tryVirtualCameras();
        if (isVirtual || serve() == Ending::StartAgain) startAgain();
        return kSuccess;
    }

private:
    enum class Ending { Stopped, StartAgain };

    Handover begin() {
        if (auto left = takeHandover()) return *left;
        isNew_ = true;
        return {
            listenLocally(static_cast<uint16_t>(options_.port)), {randomToken(), randomToken()},
             1
        };
    }

    uint16_t port() const { return portOf(handover_.socket); }

    void announce() {
        const auto output = tableOrJson(common_.json, kColumns);
        output->add({
            {"url", gate_.address()}
        });
        output->finish();
        if (isOnVirtualLan()) {
            say("this page can be reached on the virtual LAN alone; qvpctl web --virtual-cameras makes one beside it");
        } else if (!options_.print) {
            openDoorway();
        }
    }

    // The page is there without it, too.
    void openDoorway() try {
        handover_.doorway = makeDoorway(gate_.address());
        openInBrowser(handover_.doorway);
    } catch (const client::Error& error) {
        say(std::string("open the address in a browser of this machine: ") + error.what());
    }

    bool hasPassword() const { return !common_.passwordFile.empty() || std::getenv("QVPCTL_PASSWORD") != nullptr; }

    Ending serve() {
        const StopSignal stop;  // before any thread, so that it is the one that gets the signals
        signal(SIGPIPE, SIG_IGN);
        const Happening over, again;
        WebState state(handover_.nextEvent);
        if (hasPassword()) state.setLogin("", readLogin(common_));
        EventStreams streams(state);
        state.onNews([&] { streams.wake(); });
        Jobs jobs;
        WebContext context{state, jobs, quiet_, over.descriptor(), [&] { again.happen(); }};
        WebServer server(handover_.socket, gate_, streams, jobs,
                         [&](const WebRequest& request) { return routeRequest(context, request); });
        const LanWatch watch(state, quiet_, over.descriptor(), [&] { server.tick(); });
        pollfd ends[] = {
            {stop.descriptor(),  POLLIN, 0},
            {again.descriptor(), POLLIN, 0},
        };
        while (poll(ends, std::size(ends), -1) < 0) continue;
        over.happen();
        server.stop();
        handover_.nextEvent = state.lastEvent() + kGap;
        return ends[0].revents != 0 ? Ending::Stopped : Ending::StartAgain;
    }

    [[noreturn]] void startAgain() {
        handover_.secrets = gate_.secrets();
        leaveHandover(handover_);
        std::vector<std::string> words = {"web", "--wait", std::to_string(common_.waitSeconds), "--retries",
                                          std::to_string(common_.retries)};
        if (common_.family == client::Family::Landap) words.insert(words.end(), {"--family", "landap"});
        if (!common_.user.empty()) words.insert(words.end(), {"--user", common_.user});
        becomeVirtualCameras(words);
    }

    static constexpr uint64_t kGap = 2;  // so that no stream goes on behind an event of before

    const WebOptions& options_;
    const CommonOptions& common_;
    CommonOptions quiet_;
    bool isNew_ = false;
    Handover handover_;
    Gate gate_;
};

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<WebOptions>();
    addBoundedCount(app, "--port", options->port, 65535, "Listen on this port of 127.0.0.1 (default any that is free)");
    addFlag(app, "--print", options->print, "Say where the page is, and open nothing");
    addFlag(app, "--virtual-cameras", options->virtualCameras, "Start three virtual cameras, and find those");
    return [options, &common] { return WebCommand(*options, common).run(); };
}

const Subcommand kWeb = {"web", "Find and set up cameras in the browser.", kExamples, prepare};
