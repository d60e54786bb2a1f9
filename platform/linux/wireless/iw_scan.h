// Turns what `iw dev INTERFACE scan` prints into the list of networks that getSiteList hands out.
#pragma once

#include <stddef.h>

// Writes the heading and a line for each network to `list`, whole lines only and a NUL; networks that do not fit are
// left out. Returns the number of networks written, or -1 with the list untouched when not even the heading fits.
int siteListFromScan(const char* scan, size_t length, char* list, size_t size);
