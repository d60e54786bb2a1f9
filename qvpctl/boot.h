// Waiting for a camera that boots.
#pragma once

#include "client/session/session.h"

// The camera as it is back; nothing when it has not come back within that time.
std::optional<client::Found> awaitBoot(client::Link& link, client::Session& session, std::chrono::seconds patience);
