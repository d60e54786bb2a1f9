// qvpctl open: a camera's web page in the user's browser.
#include <spawn.h>
#include <sys/wait.h>

#include <iostream>
#include <memory>

#include "client/error.h"
#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/output.h"
#include "qvpctl/tool.h"

using client::Error;
using client::ErrorKind;

static const char kExamples[] =
    "  qvpctl open 'Front door'           in the browser that xdg-open knows\n"
    "  qvpctl open 'Front door' --print   only say where it is\n";

static const Column kColumns[] = {
    {"", "url", 0, Look::Link},
};

struct OpenOptions {
    std::string camera;
    bool print = false;
};

static void openInBrowser(const std::string& url) {
    std::string program = "xdg-open", argument = url;
    char* const words[] = {program.data(), argument.data(), nullptr};
    pid_t process = 0;
    const int error = posix_spawnp(&process, words[0], nullptr, nullptr, words, environ);
    if (error != 0) throw client::localError("cannot open " + url + " with xdg-open", error);
    int status = 0;
    waitpid(process, &status, 0);
    if (status != 0) throw Error(ErrorKind::Local, "xdg-open did not open " + url);
}

static int openPage(const OpenOptions& options, const CommonOptions& common) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    const client::Found found = findCamera(link, common, options.camera);
    const auto url = client::webUrl(found.camera);
    if (!url) throw Error(ErrorKind::NotFound, "the camera has no address or no port for a web page");
    if (!options.print) openInBrowser(*url);
    const auto output = tableOrJson(common.json, kColumns);
    output->add({
        {"mac", client::macText(found.camera.mac)},
        {"url", *url                             }
    });
    output->finish();
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<OpenOptions>();
    addCamera(app, options->camera);
    addFlag(app, "--print", options->print, "Say where it is, and open nothing");
    return [options, &common] { return openPage(*options, common); };
}

const Subcommand kOpen = {"open", "Open a camera's web page.", kExamples, prepare};
