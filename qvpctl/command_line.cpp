#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>
#include <iostream>

#include "qvpctl/command.h"
#include "qvpctl/completion.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/output.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"

// For the shells' completion scripts alone: its words are no options of the tool's.
static constexpr char kCompleteCommand[] = "__complete";

static const char kExamples[] =
    "  qvpctl discover                                   find every camera on the networks of this machine\n"
    "  qvpctl show 'Front door'                          everything about one of them\n"
    "  qvpctl set 02:00:5e:10:00:01 name='Front door'    set one up\n"
    "  qvpctl scan 'Front door'                          the wireless networks it sees\n";

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

static void addSubcommand(CLI::App& tool, const Subcommand& command, CommonOptions& common, Work& chosen) {
    CLI::App* app = tool.add_subcommand(command.name, command.summary);
    app->formatter(std::make_shared<ExamplesFirst>(command.examples));
    const Work work = command.prepare(*app, common);
    addCommonOptions(*app, common, command.traffic);
    app->callback([work, &chosen] { chosen = work; });
}

static std::string errorPrefix() {
    return isStyled(STDERR_FILENO) ? styled("qvpctl:", Look::Failure) + " " : "qvpctl: ";
}

static void reportAsJson(const char* code, const std::string& message) {
    std::cerr << jsonLine({
        {"error", {{"code", code}, {"message", message}}}
    });
}

static int reportError(const client::Error& error, bool json) {
    if (json) {
        reportAsJson(stableName(error.kind()), error.what());
    } else {
        std::cerr << errorPrefix() << error.what() << "\n";
    }
    return exitCodeOf(error.kind());
}

// An argument too many may be a secret that lost its option, so only the names of options are shown.
static std::string extraText(const std::vector<std::string>& extras) {
    for (const std::string& extra : extras) {
        if (extra.starts_with("-")) return "no such option: " + printable(extra.substr(0, extra.find('=')));
    }
    return extras.size() == 1 ? "there is an argument too many" : "there are arguments too many";
}

static std::string usageText(const CLI::App& tool, const CLI::ParseError& error) {
    const auto commands = tool.get_subcommands();
    const auto extras = tool.remaining(true);
    const bool isExtra = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    if (!commands.empty()) return isExtra ? extraText(extras) : error.what();
    if (extras.empty()) return "a command is needed";
    const bool isOption = extras[0].starts_with("-");
    return isOption ? extraText(extras) : "no such command: " + printable(extras[0]);
}

static int reportUsage(const CLI::App& tool, const CLI::ParseError& error, bool json) {
    const auto commands = tool.get_subcommands();
    const std::string help = commands.empty() ? "qvpctl --help" : "qvpctl " + commands[0]->get_name() + " --help";
    const std::string what = usageText(tool, error);
    if (json) {
        reportAsJson("usage", what);
    } else {
        std::cerr << errorPrefix() << what << "\nTry '" << help << "'.\n";
    }
    return kUsage;
}

// The command line did not make sense, so the options were not taken over.
static bool isJsonAsked(int argc, char** argv) {
    return std::any_of(argv, argv + argc, [](const char* argument) { return strcmp(argument, "--json") == 0; });
}

int runTool(std::span<const Subcommand* const> commands, int argc, char** argv) {
    CLI::App tool("Finds cameras on the local network and sets them up.", "qvpctl");
    tool.formatter(std::make_shared<ExamplesFirst>(kExamples));
    tool.footer(exitStatusHelp());
    tool.set_version_flag("--version", "qvpctl " QVPCTL_VERSION, "Print the version and exit");
    tool.require_subcommand(1);
    CommonOptions common;
    Work chosen;
    for (const Subcommand* command : commands) addSubcommand(tool, *command, common, chosen);
    if (argc > 1 && strcmp(argv[1], kCompleteCommand) == 0) {
        complete(describe(tool), {argv + 2, argv + argc});
        return kSuccess;
    }
    try {
        tool.parse(argc, argv);
        if (common.json) sayInJson();
        return chosen();
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        return isHelp ? tool.exit(error) : reportUsage(tool, error, isJsonAsked(argc, argv));
    } catch (const client::Error& error) {
        return reportError(error, common.json);
    }
}
