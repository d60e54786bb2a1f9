// Every command; each stands in a file of commands/.
#pragma once

#include "qvpctl/command.h"

extern const Subcommand kAlert;
extern const Subcommand kApply;
extern const Subcommand kCommit;
extern const Subcommand kCompletion;
extern const Subcommand kDiff;
extern const Subcommand kDiscover;
extern const Subcommand kExport;
extern const Subcommand kFactoryReset;
extern const Subcommand kGet;
extern const Subcommand kHelp;
extern const Subcommand kOpen;
extern const Subcommand kPasswd;
extern const Subcommand kPlan;
extern const Subcommand kRaw;
extern const Subcommand kReboot;
extern const Subcommand kRevert;
extern const Subcommand kScan;
extern const Subcommand kSet;
extern const Subcommand kShow;
extern const Subcommand kSupported;
extern const Subcommand kVerify;
extern const Subcommand kWatch;
extern const Subcommand kWeb;

// All of them, in the order of the help.
std::span<const Subcommand* const> allCommands();
