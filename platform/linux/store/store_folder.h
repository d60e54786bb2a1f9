// The folder that holds the configuration store, locked against other writers.
#pragma once

#include <limits.h>

struct StoreFolder {
    int descriptor;  // of the folder, with the lock on it: closing it lets the next writer in
    char file[NAME_MAX + 1];
    char temporary[NAME_MAX + 1];
};

// Finds the folder of the file that `path` names, behind symbolic links (they stay, their target is what is replaced),
// and waits some seconds for the lock on it. Returns 0, or -1 with errno set, EWOULDBLOCK when another writer has the
// lock all the time.
int lockStoreFolder(const char* path, StoreFolder& folder);
