// Numbered integers as files of a folder, each named by its number, decimal text inside, so that a script can take
// part: echo 1 > /run/qvp/sysinfo/4
#pragma once

// Each returns 0, or -1 with the value untouched, or with the slot as it was and a line on standard error. Any thread
// may call them at any time.
int readSharedInteger(const char* folder, int slot, int& value);
int writeSharedInteger(const char* folder, int slot, int value);
