// The upgrade worker: fetches a file over HTTP, installs it as firmware or as a configuration archive, and reboots. No
// command starts it.
#pragma once

#include "upgrade/download_state.h"

// Starts the worker on a detached thread; `url` and `data_length` of the record must be set. `kind` null: firmware,
// otherwise configuration. Returns 0, or -1 for a null record, a busy one, or when the thread cannot be set up.
int start_download_thread(DownThreadState* state, const char* kind);
