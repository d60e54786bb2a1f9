#include "service/usage.h"

#include <string.h>
#include <unistd.h>

static constexpr char kVersion[] = "qvp " QVP_VERSION "\n";
static constexpr char kHelp[] =
    "Usage: qvp INTERFACE\n"
    "Answer configuration tools on the network of one interface, and apply what they set.\n"
    "\n"
    "Listens on UDP port 62976 of the interface and reports the camera's presence every 30 seconds, in the foreground\n"
    "until SIGINT or SIGTERM ends it. Traces go to standard error. /var/run/qvp-INTERFACE.pid keeps a second one off.\n"
    "\n"
    "  --help     this text\n"
    "  --version  the version\n"
    "\n"
    "Exit status: 0 when it was stopped, 255 when it cannot start.\n";

static bool tell(const char* text) {
    const ssize_t written = write(STDOUT_FILENO, text, strlen(text));
    static_cast<void>(written);  // whoever has closed it does not want to know
    return true;
}

bool tellAbout(const char* argument) {
    if (strcmp(argument, "--help") == 0) return tell(kHelp);
    return strcmp(argument, "--version") == 0 && tell(kVersion);
}
