// qvpctl: finds cameras on the local network and sets them up.
#include <fcntl.h>
#include <unistd.h>

#include "qvpctl/commands.h"
#include "qvpctl/terminal_text.h"

// A descriptor that is closed would become that of the first file or socket, and what is printed would go there.
// Instead it becomes one that takes nothing.
static void occupyStandardDescriptors() {
    for (int descriptor = 0; descriptor <= STDERR_FILENO;) descriptor = open("/dev/null", O_RDONLY);
}

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    useUtf8();
    return runTool(allCommands(), argc, argv);
}
