// The commands and their options as plain data: what completion and the manual are made from.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

struct OptionText {
    std::vector<std::string> names;    // "-i", "--interface"; of a word without a dash its one name, "CAMERA"
    std::string type;                  // of its value, "NAME"; "" for a flag and for a word
    std::string help;                  // one line
    std::vector<std::string> choices;  // every value it takes, where those are few; else empty
    bool isWord;                       // stands without a dash
    bool isNeeded;
    bool isRepeated;
    bool isCommon;  // most commands have it

    bool isFlag() const { return !isWord && type.empty(); }
};

struct CommandText {
    std::string name;
    std::string summary;
    std::vector<OptionText> options;
};

// Every command in the order of the help: of the tool, or of the tool that a command belongs to.
std::vector<CommandText> describe(const CLI::App& app);
