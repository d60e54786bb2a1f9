// The configuration store's file as a whole: read, and replaced so that a power cut leaves the old file or the new one.
#pragma once

#include "store/stored_values.h"

// $QVP_STORE, else /etc/qvp/camera.ini.
const char* storePath();

// What stands in the file now or, within a request, stood there when it was first asked for; null when it cannot be
// read. Valid until the next call of this file's functions.
const StoredValues* storeLoad();

// Sets one key in the file as it is on disk now, under a lock; a file that has the very bytes already is not written,
// only synced. Returns 0 once the value is safe from a power cut, or -1 after a line on standard error. When another
// writer holds the lock for some seconds, the other keys of the same request fail at once and without a line.
int storeSet(int key, const char* value);
