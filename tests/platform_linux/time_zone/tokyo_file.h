// The zone file of "JST-9", byte for byte.
#pragma once

#include <string>

using std::string_literals::operator""s;

inline const std::string kTokyoFile =
    "TZif2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\4"
    "\x80\0\0\0"
    "\0"
    "\0\0\x7e\x90\0\0"
    "JST\0"
    "TZif2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\4"
    "\xf8\0\0\0\0\0\0\0"
    "\0"
    "\0\0\x7e\x90\0\0"
    "JST\0"
    "\nJST-9\n"s;
