// TOML as values with their places. The parser behind it takes long to compile, so that only this file's source sees
// it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/fleet/fault.h"

namespace client {

struct TomlEntry;

struct TomlValue {
    enum class Kind { Text, Number, Switch, Table, List, Other };
    Kind kind = Kind::Table;
    std::string text;  // of a text, and of a whole number in decimal; "on" or "off" of a switch
    Place place;
    std::vector<TomlEntry> entries;  // of a table, in the order of the file
    std::vector<TomlValue> items;    // of a list

    // Null: a table without that key, or no table.
    const TomlEntry* find(std::string_view key) const;
};

struct TomlEntry {
    std::string key;
    Place place;  // of the key
    TomlValue value;
};

struct Toml {
    TomlValue root;
    std::vector<Fault> faults;  // one at most; nothing that stands in the file is repeated there: it may be a secret
};

Toml parseToml(std::string_view text);

}  // namespace client
