// POSIX time-zone texts, such as "CET-1CEST,M3.5.0,M10.5.0/3": reading their standard time, and making the text of a
// zone under the daylight saving that the user chose.
#pragma once

#include "platform.h"

struct StandardTime {
    int nameAt;      // first letter of the abbreviation, behind a '<'
    int nameLength;  // without the brackets
    int textLength;  // abbreviation and offset: the whole text of a zone without daylight saving
    int offset;      // seconds east of UTC
};

constexpr int kZoneTextSize = 96;  // room for any text makeZoneText makes

// The standard time a well-formed text begins with. POSIX counts offsets westward: "CET-1" is an hour east.
constexpr StandardTime readStandardTime(const char* text) {
    StandardTime standard{};
    bool quoted = text[0] == '<';
    int at = quoted ? 1 : 0;

    standard.nameAt = at;
    while (text[at] != '\0' && (quoted ? text[at] != '>' : text[at] >= 'A')) at++;
    standard.nameLength = at - standard.nameAt;
    if (quoted && text[at] == '>') at++;

    int direction = text[at] == '-' ? 1 : -1;
    if (text[at] == '-' || text[at] == '+') at++;
    for (int unit = 3600, number = 0;; at++) {
        if (text[at] >= '0' && text[at] <= '9') {
            number = number * 10 + text[at] - '0';
            continue;
        }
        standard.offset += direction * number * unit;
        number = 0;
        unit /= 60;
        if (text[at] != ':') break;
    }
    standard.textLength = at;
    return standard;
}

// Writes the text of `rule` under `mode` (of set_timezone). Returns 0, or -1 for an unknown mode, and in the user's
// mode for no daylight saving given or one with a number out of its range. The shift, and the offset it leads to, must
// stay under a day; 24:00 is the end of a day.
int makeZoneText(const char* rule, int mode, const TimezoneRule* daylight, char text[kZoneTextSize]);
