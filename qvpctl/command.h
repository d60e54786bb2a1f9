// What a subcommand is: a row of text for the help, and a function that declares its options and gives back its work.
#pragma once

#include <functional>
#include <span>

#include "qvpctl/options.h"

using Work = std::function<int()>;  // returns an ExitCode; throws client::Error

struct Subcommand {
    const char* name;
    const char* summary;   // one line
    const char* examples;  // shown first in its help; lines indented by two blanks
    // The options live as long as the work that is returned; the common ones are added behind them.
    Work (*prepare)(CLI::App& app, const CommonOptions& common);
    Traffic traffic = Traffic::Asks;
};

// Reads the command line and does what it asks, the help listing the commands in that order; every error ends as one
// line on standard error. Returns the exit code.
int runTool(std::span<const Subcommand* const> commands, int argc, char** argv);
