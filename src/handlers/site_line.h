// The driver's list of networks as text: lines of fixed columns.
#pragma once

#include <stdint.h>

// What is left to read.
struct SiteText {
    const char* position;
    const char* end;
};

// The columns of one line that are sent, each ended and without trailing blanks.
struct SiteLine {
    char channel[4 + 1];
    char ssid[33 + 1];
    char security[23 + 1];
    char signal[10 + 1];
    char networkType[2 + 1];
};

// Takes the next line: up to its newline, 1023 bytes or the end, NUL bytes being bytes like any other. A column that
// the line does not reach is empty. Returns false at the end.
bool nextSiteLine(SiteText& text, SiteLine& line);

// The wire's codes for the words of a security column; 15 and 15: not known.
struct SiteSecurity {
    uint8_t authentication;
    uint8_t cipher;
};
SiteSecurity classifySecurity(const char* column);
