// Files whose content is kept between requests: one stat a request tells whether it is still the file's.
#pragma once

#include <stdint.h>
#include <sys/stat.h>

extern uint32_t requestNumber;  // of the request that is served now; 0: nobody has told of one

// What was seen of a file when it was read. All zeros: nothing yet.
struct KeptFile {
    bool wasRead;
    struct stat status;   // taken before the content was read
    int64_t firstSeen;    // when the file was first seen in this state, in milliseconds of the monotonic clock
    int64_t readAt;       // when the last read of it began
    uint32_t lookedAtIn;  // the request in which it was last looked at
};

// True when the file was looked at in this request: what was read of it may be used. Never before the platform was told
// of a request: then every use reads anew.
inline bool wasLookedAt(const KeptFile& file) { return file.wasRead && file.lookedAtIn == requestNumber; }

// Looks at the file. True when what was read of it may be used in this request.
bool isStillSame(KeptFile& file, const char* path);

// To be called whenever the file has been read, with its state from before and with the time before that, of
// millisecondsNow().
void noteRead(KeptFile& file, const struct stat& status, int64_t startedAt);

// What was read is not the file's any more.
void forget(KeptFile& file);
