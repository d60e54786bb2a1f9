// Turns between programs that replace files of a folder.
#pragma once

// Waits for the exclusive lock on an open folder; closing the folder lets the next one in. All locks of a request share
// one wait of some seconds: once that is over, a lock is asked for once. Returns 0, or -1 with errno set, EWOULDBLOCK
// when somebody else has the lock all the time.
int lockFolder(int descriptor);
