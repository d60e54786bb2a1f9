// The socket that the browser comes to, and how it is handed to this program started again.
#pragma once

#include <optional>

#include "qvpctl/web/gate.h"

// A socket that listens on 127.0.0.1 alone; port 0 is any that is free. Throws Error Local.
int listenLocally(uint16_t port);

uint16_t portOf(int socket);

struct Handover {
    int socket;
    WebSecrets secrets;
    uint64_t nextEvent;
    std::string doorway = "";  // the file that the browser was opened with
};

// What this program left for itself. Nothing when it was started by somebody else; throws Error Local when what is
// there is not what it leaves.
std::optional<Handover> takeHandover();

// Leaves it for the program that this process becomes next: the socket as descriptor 3, as LISTEN_FDS says, and the
// secrets in memory that is descriptor 4. Neither words nor environment hold them. Throws Error Local.
void leaveHandover(const Handover& handover);
