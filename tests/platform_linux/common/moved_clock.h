// Files that stay as they are for a while, without the wait.
#pragma once

#include <filesystem>

// From here on the clock that never goes back is so much further.
void moveClock(int seconds);

// Returns once a change of the file would leave other times than it has now.
void awaitNextTick(const std::filesystem::path& file);
