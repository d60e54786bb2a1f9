#include <CLI/CLI.hpp>

#include <cstring>
#include <iostream>

#include "qvpctl/command.h"
#include "qvpctl/failure.h"
#include "qvpctl/text.h"

static const char kExamples[] =
    "  qvpctl discover              find every camera on the networks of this machine\n"
    "  qvpctl discover -i eth0      look on one interface only\n"
    "  qvpctl watch                 show cameras as they report themselves\n";

static const char kExitCodes[] =
    "Exit status: 0 done; 1 no camera answered; 2 wrong usage; 3 system error (no such interface, no permission...)";

// A help page that opens with examples, where most readers stop.
class ExamplesFirst : public CLI::Formatter {
public:
    explicit ExamplesFirst(const char* examples) : examples_(examples) {}

    std::string make_description(const CLI::App* app) const override {
        return app->get_description() + "\n\nExamples:\n" + examples_ + "\n";
    }

private:
    const char* examples_;
};

Failure systemFailure(const std::string& what, int error) {
    return Failure(kSystemError, what + ": " + strerror(error));
}

static void addSubcommand(CLI::App& tool, const Subcommand& command, Work& chosen) {
    CLI::App* app = tool.add_subcommand(command.name, command.summary);
    app->formatter(std::make_shared<ExamplesFirst>(command.examples));
    app->callback([work = command.prepare(*app), &chosen] { chosen = work; });
}

static int reportUsage(const CLI::App& tool, const CLI::ParseError& error) {
    const auto commands = tool.get_subcommands();
    const auto unknown = tool.remaining();
    const std::string help = commands.empty() ? "qvpctl --help" : "qvpctl " + commands[0]->get_name() + " --help";
    std::string what = error.what();
    if (commands.empty()) {
        what = unknown.empty() ? "a command is needed" : "no such command: " + printable(unknown[0]);
    }
    std::cerr << "qvpctl: " << what << "\nTry '" << help << "'.\n";
    return kUsageError;
}

int runTool(std::span<const Subcommand* const> commands, int argc, char** argv) {
    CLI::App tool("Finds cameras on the local network and shows what they say of themselves.", "qvpctl");
    tool.formatter(std::make_shared<ExamplesFirst>(kExamples));
    tool.footer(kExitCodes);
    tool.set_version_flag("--version", "qvpctl " QVPCTL_VERSION, "Print the version and exit");
    tool.require_subcommand(1);
    Work chosen;
    for (const Subcommand* command : commands) {
        addSubcommand(tool, *command, chosen);
    }
    try {
        tool.parse(argc, argv);
        return chosen();
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        return isHelp ? tool.exit(error) : reportUsage(tool, error);
    } catch (const Failure& failure) {
        std::cerr << "qvpctl: " << failure.what() << "\n";
        return failure.code();
    }
}
