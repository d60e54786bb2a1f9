// Text made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// Texts are taken as UTF-8, whatever the user's locale. To be called once, before anything is printed.
void useUtf8();

// Printable UTF-8 as it stands; control characters, characters that hide, join or reorder text, marks that stand on
// nothing or pile up, and bytes that are not UTF-8 as \xHH or \u{HHHH}; a backslash doubled, so that no two texts look
// alike.
std::string printable(std::string_view text);

// The same for a cell of a table: a blank at either end or behind another is \x20, so that no text can imitate columns.
std::string printableCell(std::string_view text);

// Terminal columns that printable text takes.
size_t displayWidth(std::string_view text);
