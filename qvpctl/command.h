// What a subcommand is: a row of text for the help, and a function that declares its options and gives back its work.
#pragma once

#include <functional>
#include <span>

namespace CLI {
class App;
}

using Work = std::function<int()>;  // returns an ExitCode; throws Failure

struct Subcommand {
    const char* name;
    const char* summary;             // one line
    const char* examples;            // shown first in its help; lines indented by two blanks
    Work (*prepare)(CLI::App& app);  // the options live as long as the work that is returned
};

extern const Subcommand kDiscover;
extern const Subcommand kWatch;

// Reads the command line and does what it asks; every error ends as one line on standard error. Returns the exit code.
int runTool(std::span<const Subcommand* const> commands, int argc, char** argv);
