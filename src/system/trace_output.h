// Standard error, for which the daemon never waits: a reader that hangs would keep it from its requests and from a
// stop.
#pragma once

#include <stddef.h>

// Called when descriptors 0 to 2 are open. Without it, lines are written as they are everywhere.
void openTraceOutput();

// Writes a line, or drops it where there is no room; the next line for which there is room says before itself how many
// were. Any thread may.
void putTrace(const char* line, size_t length);
