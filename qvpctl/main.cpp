// qvpctl: finds cameras on the local network and sets them up.
#include "qvpctl/command.h"
#include "qvpctl/text.h"

// In the order the help lists them.
static const Subcommand* const kSubcommands[] = {
    &kDiscover,
    &kWatch,
};

int main(int argc, char** argv) {
    useUtf8();
    return runTool(kSubcommands, argc, argv);
}
