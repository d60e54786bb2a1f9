// How a text stands in an ini file. One that holds only printable bytes (and bytes from 0x80 up), no blank at either
// end and no " or \ stands plain. Any other stands in double quotes, with the escapes \\ \" \n \r \t \xHH, so that no
// text can end its line.
#pragma once

#include "store/ini_file.h"

constexpr size_t kMostText = 255;
constexpr size_t kMostIniValue = 2 + 4 * kMostText;  // each byte an \xHH, and the quotes

// `text` has at most kMostText bytes; `value` has room for kMostIniValue and a NUL.
void iniEncode(const char* text, char* value);

// Writes at most kMostText bytes and a NUL to `text`. Returns the length of the whole text, which may be more, or -1
// for a malformed value: a quote that does not end the value, an unknown escape, a NUL byte in whatever form.
long iniDecode(Slice value, char (&text)[kMostText + 1]);
