// qvpctl: finds cameras on the local network and sets them up.
#include "qvpctl/commands.h"
#include "qvpctl/terminal_text.h"

int main(int argc, char** argv) {
    useUtf8();
    return runTool(allCommands(), argc, argv);
}
