// The one way a command prints: it hands over records, and the chosen output gives them their form.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <span>

// An object; its keys are what --json shows. Texts may hold any bytes: each output makes them safe in its own way.
using Record = nlohmann::ordered_json;

// Which value of a record the text outputs show, and under which heading.
struct Column {
    const char* heading;
    const char* key;
    size_t width;  // the least, where rows are printed before the longest is known
};

class Output {
public:
    virtual ~Output() = default;
    virtual void add(const Record& record) = 0;
    virtual void finish() {}
};

// One object as a line, as `jsonLines` has it.
std::string jsonLine(const Record& record);

// One object a line, at once, in ASCII: other characters are \u escapes, bytes that are not UTF-8 are U+FFFD.
std::unique_ptr<Output> jsonLines(std::ostream& stream);

// A table when all records are there, as wide as it must be; rows in the natural order of their value `sortKey`, or as
// they came. Without headings when the first is empty.
std::unique_ptr<Output> sortedTable(std::ostream& stream, std::span<const Column> columns, const char* sortKey);
std::unique_ptr<Output> table(std::ostream& stream, std::span<const Column> columns);

// RFC 4180: a heading of the columns' keys, then a line a record, at once. Texts are harmless to terminals and to
// spreadsheets.
std::unique_ptr<Output> csv(std::ostream& stream, std::span<const Column> columns);

// One value a line and nothing else.
std::unique_ptr<Output> plainValues(std::ostream& stream, const char* key);

// A heading, then a row for each record at once.
std::unique_ptr<Output> liveTable(std::ostream& stream, std::span<const Column> columns);
