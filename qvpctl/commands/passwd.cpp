// qvpctl passwd: a new administrator password.
#include <memory>

#include "client/error.h"
#include "qvpctl/commands.h"
#include "qvpctl/commands/set.h"
#include "qvpctl/secret_source.h"

static const char kExamples[] =
    "  qvpctl passwd 'Front door'                              asks for both, without echo\n"
    "  qvpctl passwd 'Front door' --new @new.txt --password-file old.txt\n";

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<SetOptions>();
    const auto source = std::make_shared<std::string>("-");
    addCamera(app, options->camera);
    addText(app, "--new", *source, "SECRET", "The new password: @FILE, env:NAME, or - for a prompt (default)");
    return [=, &common] {
        if (!isSecretSource(*source)) {
            throw client::Error(
                client::ErrorKind::BadValue,
                "the new password must not stand on the command line: use --new @FILE, --new env:NAME, or "
                "--new - to be asked");
        }
        options->assignments = {"password=" + *source};
        return setSettings(*options, common);
    };
}

const Subcommand kPasswd = {"passwd", "Change a camera's administrator password.", kExamples, prepare};
