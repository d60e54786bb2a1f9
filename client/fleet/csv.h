// Tables as spreadsheets save them: RFC 4180 in UTF-8, with or without its mark, commas or semicolons between cells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/fleet/fault.h"

namespace client {

struct CsvCell {
    std::string text;
    Place place;  // where it begins; its column is its number in the row
};

using CsvRow = std::vector<CsvCell>;

struct Csv {
    std::vector<CsvRow> rows;  // without those in which nothing stands
    std::vector<Fault> faults;
};

Csv parseCsv(std::string_view text);

}  // namespace client
