// Ini files: [Section] lines, Name=value lines, and lines that start with # or ; or mean nothing. A line of the last
// two kinds is kept as it stands.
#pragma once

#include <stddef.h>

#include "common/slice.h"

constexpr size_t kIniCapacity = 64 * 1024;

// A whole file. A length above kIniCapacity marks one that did not fit.
struct IniText {
    char bytes[kIniCapacity + 1];
    size_t length;
};

enum class IniKind { Other, Section, Field };

struct IniLine {
    IniKind kind;
    Slice name;        // of the section or of the field, without blanks around it
    Slice value;       // of a field, as it stands in the file, without blanks around it
    const char* next;  // where the next line starts
};

// Room for one more file, for whoever works on one now: it does not outlast his function.
IniText& iniScratch();

// Fills `text` from the descriptor. Returns 0, or -1 with errno set, EFBIG when the file does not fit.
int iniRead(int descriptor, IniText& text);

// Where the first line starts: behind a byte-order mark, if the file has one.
const char* iniFirstLine(const IniText& text);

// Takes the line that starts at `start` apart; false at the end of the text.
bool iniTakeLine(const IniText& text, const char* start, IniLine& line);

// Makes `changed` a copy of `text` with other words in the place of one value of it. Returns 0, or -1 with errno EFBIG
// when the result does not fit.
int iniReplace(const IniText& text, Slice value, const char* words, IniText& changed);

// Makes `changed` a copy of `text` with a field that it does not have: behind the last field of its section, or in a
// new section at the end of the text. Returns 0, or -1 with errno EFBIG when the result does not fit.
int iniAdd(const IniText& text, const char* section, const char* name, const char* value, IniText& changed);
