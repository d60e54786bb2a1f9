// What the daemon does beside its replies, as a target sees it: commands of the shell, the zone and the clock. Nothing
// of it reaches the system.
#pragma once

#include <ctime>

namespace fuzz {

// What time() says.
void setTime(std::time_t now);

}  // namespace fuzz
