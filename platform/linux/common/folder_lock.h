// Turns between programs that replace files of a folder.
#pragma once

// Waits some seconds for the exclusive lock on an open folder; closing the folder lets the next one in. Returns 0, or
// -1 with errno set, EWOULDBLOCK when somebody else has the lock all the time.
int lockFolder(int descriptor);
