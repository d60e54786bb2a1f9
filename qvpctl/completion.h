// What the shells offer while a command line is typed. Their scripts ask the tool itself, so they cannot drift from it.
#pragma once

#include <string>
#include <vector>

#include "qvpctl/description.h"

// The words that could stand where the last of `words` is being typed, behind the tool's name; those that end with '='
// want a value at once. Empty: the shell's own, which are files.
std::vector<std::string> candidates(const std::vector<CommandText>& commands, const std::vector<std::string>& words);

// A command line as far as it is typed, taken apart as a shell does; the last word may be empty or in an open quote.
struct TypedLine {
    std::vector<std::string> words;
    char openQuote;  // of the last word; '\0': none
};
TypedLine takeApart(const std::string& line);

// Answers the script of a shell, on standard output, one candidate a line:
//   bash LINE PART   the line up to the cursor, and the part of its last word that bash replaces
//   words WORD...    for shells that take lines apart and put quotes around candidates themselves
void complete(const std::vector<CommandText>& commands, const std::vector<std::string>& arguments);

// The script for bash, zsh or fish.
std::string completionScript(const std::string& shell);
