// Files that appear when they are whole: who reads one finds the old text or the new one, and never a part.
#pragma once

#include <sys/types.h>

#include <string>

// Throws Error Local when there is something other than a file: a device or a pipe must not be replaced.
void refuseOtherThanFiles(const std::string& path);

// Puts the text in the place of what the file held; a new file gets `mode`. It need not outlive a power cut.
// Throws Error Local when that cannot be done, and leaves what was there.
void writeWhole(const std::string& path, const std::string& text, mode_t mode = 0666);
