#include "qvpctl/description.h"

#include <CLI/CLI.hpp>

#include <sstream>

#include "qvpctl/options.h"

// `addChoice` leaves the words in the name of what checks them.
static std::vector<std::string> choicesOf(CLI::Option& option) {
    std::vector<std::string> choices;
    try {
        for (int i = 0;; i++) {
            std::istringstream words(option.get_validator(i)->get_name());
            for (std::string word; words >> word;) choices.push_back(word);
        }
    } catch (const CLI::OptionNotFound&) {  // how CLI11 says that there are no more
        return choices;
    }
}

static std::vector<std::string> namesOf(const CLI::Option& option) {
    if (option.get_positional()) return {option.get_name(true)};
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

static OptionText describe(CLI::Option& option) {
    const bool isFlag = option.get_items_expected_max() == 0;
    return {
        .names = namesOf(option),
        .type = isFlag ? "" : option.get_type_name(),
        .help = option.get_description(),
        .choices = choicesOf(option),
        .isWord = option.get_positional(),
        .isNeeded = option.get_required(),
        .isRepeated = option.get_items_expected_max() > 1,
        .isCommon = option.get_group() == kCommonGroup,
    };
}

static std::vector<OptionText> optionsOf(CLI::App& command) {
    std::vector<OptionText> options;
    for (CLI::Option* option : command.get_options([](const CLI::Option* one) { return !one->get_group().empty(); })) {
        options.push_back(describe(*option));
    }
    return options;
}

std::vector<CommandText> describe(const CLI::App& app) {
    const CLI::App& tool = app.get_parent() != nullptr ? *app.get_parent() : app;
    std::vector<CommandText> commands;
    // Only a list of commands that are not constant has options.
    for (CLI::App* command : const_cast<CLI::App&>(tool).get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back({command->get_name(), command->get_description(), optionsOf(*command)});
    }
    return commands;
}
