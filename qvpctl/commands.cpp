#include "qvpctl/commands.h"

static const Subcommand* const kAll[] = {
    &kDiscover, &kWatch,     &kShow,   &kGet,    &kSet,  &kPasswd,     &kPlan,   &kApply,
    &kRevert,   &kDiff,      &kExport, &kVerify, &kScan, &kOpen,       &kReboot, &kFactoryReset,
    &kCommit,   &kSupported, &kAlert,  &kRaw,    &kWeb,  &kCompletion, &kHelp,
};

std::span<const Subcommand* const> allCommands() { return kAll; }
