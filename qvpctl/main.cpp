// qvpctl: finds cameras on the local network and sets them up.
#include "qvpctl/commands.h"
#include "qvpctl/terminal_text.h"

static const Subcommand* const kSubcommands[] = {
    &kDiscover, &kWatch,  &kShow,         &kGet,    &kSet,       &kPasswd, &kVerify,
    &kScan,     &kReboot, &kFactoryReset, &kCommit, &kSupported, &kAlert,  &kHelp,
};

int main(int argc, char** argv) {
    useUtf8();
    return runTool(kSubcommands, argc, argv);
}
