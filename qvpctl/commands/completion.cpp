// qvpctl completion: the script that lets a shell complete the tool's command lines.
#include "qvpctl/completion.h"

#include <iostream>
#include <memory>

#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/output.h"

static const char kExamples[] =
    "  qvpctl completion fish | source    for ~/.config/fish/config.fish\n"
    "  eval \"$(qvpctl completion bash)\"   for ~/.bashrc\n"
    "  eval \"$(qvpctl completion zsh)\"    for ~/.zshrc, behind compinit\n";

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto shell = std::make_shared<std::string>();
    addChoice(app, "SHELL", *shell, {"bash", "zsh", "fish"}, "bash, zsh or fish");
    return [shell, &common] {
        printText(common.json, completionScript(*shell));
        return kSuccess;
    };
}

const Subcommand kCompletion = {"completion", "Print the completion script of a shell.", kExamples, prepare};
