// The manual pages, made from the commands and the settings themselves.
#pragma once

#include <span>
#include <string>

#include "qvpctl/command.h"
#include "qvpctl/description.h"

// In the roff of man(7): of the whole tool, and of one command.
std::string manualPage(std::span<const Subcommand* const> commands, const std::vector<CommandText>& texts);
std::string commandPage(const Subcommand& command, const CommandText& text);
