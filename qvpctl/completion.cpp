#include "qvpctl/completion.h"

#include <algorithm>
#include <iostream>

#include "client/interfaces.h"
#include "client/settings/setting.h"
#include "qvpctl/known_cameras.h"

using Words = std::vector<std::string>;

TypedLine takeApart(const std::string& line) {
    TypedLine typed{{""}, '\0'};
    bool isBetween = true;
    for (size_t i = 0; i < line.size(); i++) {
        const char letter = line[i];
        const bool isEscape = letter == '\\' && typed.openQuote != '\'' && i + 1 < line.size();
        if (typed.openQuote == '\0' && letter == ' ') {
            if (!isBetween) typed.words.emplace_back();
            isBetween = true;
            continue;
        }
        isBetween = false;
        if (isEscape) {
            typed.words.back() += line[++i];
        } else if (letter == typed.openQuote) {
            typed.openQuote = '\0';
        } else if (typed.openQuote == '\0' && (letter == '\'' || letter == '"')) {
            typed.openQuote = letter;
        } else {
            typed.words.back() += letter;
        }
    }
    return typed;
}

static Words starting(const Words& words, const std::string& start) {
    Words result;
    std::ranges::copy_if(words, std::back_inserter(result), [&](const auto& word) { return word.starts_with(start); });
    return result;
}

static Words interfaceNames() {
    Words names;
    for (const client::Interface& interface : client::broadcastInterfaces()) names.push_back(interface.name);
    return names;
}

static Words keys(bool canBeSet) {
    Words result;
    for (const client::Setting& setting : client::allSettings()) {
        if (!canBeSet || !setting.isReadOnly()) result.push_back(setting.key + std::string(canBeSet ? "=" : ""));
    }
    return result;
}

static Words assignments(const std::string& typed) {
    const size_t equals = typed.find('=');
    if (equals == typed.npos) return keys(true);
    const std::string key = typed.substr(0, equals);
    const client::Setting* setting = client::findSetting(key);
    Words values;
    if (setting != nullptr && setting->choices != nullptr) values = setting->choices();
    if (setting != nullptr && setting->isSecret()) values = {"@", "env:", "-"};
    for (std::string& value : values) value.insert(0, key + "=");
    return values;
}

// Behind the words of the list that stand already, the others.
static Words lists(const Words& known, const std::string& typed) {
    const std::string before = typed.substr(0, typed.rfind(',') + 1);
    Words words;
    for (const std::string& word : known) {
        if (("," + before).find("," + word + ",") == before.npos) words.push_back(before + word);
    }
    return words;
}

static Words valuesOf(const OptionText& option, const std::string& typed) {
    if (option.type == "LIST") return lists(option.choices, typed);
    if (!option.choices.empty()) return option.choices;
    const std::string& name = option.names.back();
    if (name == "CAMERA") return knownCameras();
    if (name == "KEY") return keys(false);
    if (name == "KEY=VALUE") return assignments(typed);
    if (name == "--interface") return interfaceNames();
    return {};
}

static const OptionText* findOption(const CommandText& command, const std::string& name) {
    const auto found = std::ranges::find_if(
        command.options, [&](const OptionText& one) { return !one.isWord && std::ranges::count(one.names, name) > 0; });
    return found != command.options.end() ? &*found : nullptr;
}

// The words without a dash that were typed before the last, less the values of options.
static size_t wordsBefore(const CommandText& command, const Words& words) {
    size_t count = 0;
    for (size_t i = 1; i + 1 < words.size(); i++) {
        const OptionText* option = findOption(command, words[i]);
        if (option != nullptr && !option->isFlag()) i++;
        if (option == nullptr && !words[i].starts_with("-")) count++;
    }
    return count;
}

static Words optionNames(const CommandText& command) {
    Words names;
    for (const OptionText& option : command.options) {
        if (!option.isWord) names.push_back(option.names.back());
    }
    return names;
}

static Words ofCommand(const CommandText& command, const Words& words) {
    const std::string& typed = words.back();
    if (const OptionText* option = findOption(command, words[words.size() - 2]); option && !option->isFlag()) {
        return valuesOf(*option, typed);
    }
    if (typed.starts_with("-")) return optionNames(command);
    size_t left = wordsBefore(command, words);
    for (const OptionText& option : command.options) {
        if (option.isWord && (left == 0 || option.isRepeated)) return valuesOf(option, typed);
        if (option.isWord) left--;
    }
    return {};
}

Words candidates(const std::vector<CommandText>& commands, const Words& words) {
    const std::string& typed = words.back();
    if (words.size() == 1) {
        Words names = {"--help", "--version"};
        for (const CommandText& command : commands) names.push_back(command.name);
        return typed.empty() ? Words(names.begin() + 2, names.end()) : starting(names, typed);
    }
    const auto command = std::ranges::find(commands, words.front(), &CommandText::name);
    return command != commands.end() ? starting(ofCommand(*command, words), typed) : Words();
}

// What bash puts in the place of its part of the word: quoted as the word was begun.
static std::string forBash(const std::string& text, char openQuote) {
    std::string result;
    for (const char letter : text) {
        const bool isPlain = isalnum(static_cast<unsigned char>(letter)) != 0 || (letter & 0x80) != 0 ||
                             std::string_view("-_./:=@%+,").find(letter) != std::string_view::npos;
        if (openQuote == '\'' && letter == '\'') {
            result += "'\\''";
            continue;
        }
        const bool isSpecial =
            openQuote == '\0' ? !isPlain : openQuote == '"' && (letter == '"' || letter == '$' || letter == '`');
        result += isSpecial ? std::string("\\") + letter : std::string(1, letter);
    }
    return result;
}

static void completeBash(const std::vector<CommandText>& commands, const std::string& line, const std::string& part) {
    const TypedLine typed = takeApart(line);
    if (typed.words.size() < 2) return;
    const std::string partTyped = takeApart(part).words.back();
    const std::string& last = typed.words.back();
    const size_t kept = last.ends_with(partTyped) ? last.size() - partTyped.size() : 0;
    for (const std::string& word : candidates(commands, Words(typed.words.begin() + 1, typed.words.end()))) {
        std::cout << forBash(word.substr(kept), typed.openQuote) << '\n';
    }
}

void complete(const std::vector<CommandText>& commands, const Words& arguments) {
    if (arguments.size() == 3 && arguments[0] == "bash") completeBash(commands, arguments[1], arguments[2]);
    if (arguments.size() < 2 || arguments[0] != "words") return;
    for (const std::string& word : candidates(commands, Words(arguments.begin() + 1, arguments.end()))) {
        std::cout << word << '\n';
    }
}

static constexpr char kBash[] = R"script(# Completion of qvpctl for bash: eval "$(qvpctl completion bash)"
_qvpctl() {
    mapfile -t COMPREPLY < <("$1" __complete bash "${COMP_LINE:0:COMP_POINT}" "$2" 2>/dev/null)
    if [[ ${COMPREPLY[0]-} == *[=@:] ]]; then compopt -o nospace; fi
}
complete -o bashdefault -o default -F _qvpctl qvpctl
)script";

static constexpr char kZsh[] = R"script(#compdef qvpctl
# Completion of qvpctl for zsh: eval "$(qvpctl completion zsh)"
_qvpctl() {
    local -a found plain open
    found=(${(f)"$(${(Q)words[1]} __complete words "${(@Q)words[2,CURRENT]}" 2>/dev/null)"})
    open=(${(M)found:#*[=@:]})
    plain=(${found:#*[=@:]})
    ((${#plain})) && compadd -- "${plain[@]}"
    ((${#open})) && compadd -S '' -- "${open[@]}"
    ((${#found})) || _files
}
compdef _qvpctl qvpctl
)script";

static constexpr char kFish[] = R"script(# Completion of qvpctl for fish: qvpctl completion fish | source
function __qvpctl_candidates
    set -l typed (commandline -opc) (commandline -ct)
    set -l found ($typed[1] __complete words $typed[2..-1] 2>/dev/null)
    test (count $found) -gt 0; and string join -- \n $found; or __fish_complete_path (commandline -ct)
end
complete -c qvpctl -f -a '(__qvpctl_candidates)'
)script";

std::string completionScript(const std::string& shell) {
    if (shell == "bash") return kBash;
    return shell == "zsh" ? kZsh : kFish;
}
