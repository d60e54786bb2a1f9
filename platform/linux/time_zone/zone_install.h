// Putting a time zone in place for every program of the system.
#pragma once

// Replaces `localtime` (the zone file) and `TZ` (the text and a newline) in `folder`. Returns 0, or -1 after a line on
// the error output, with both as they were. Symbolic links are replaced, their targets left alone. After a power cut
// each file is the old or the new one.
int installZone(const char* folder, const char* text);
