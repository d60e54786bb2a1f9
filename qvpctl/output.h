// The one way a command prints: it hands over records, and the chosen output gives them their form.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <span>

#include "qvpctl/style.h"

// An object; its keys are what --json shows. Texts may hold any bytes: each output makes them safe in its own way.
using Record = nlohmann::ordered_json;

// Which value of a record the text outputs show, and under which heading.
struct Column {
    const char* heading;
    const char* key;
    size_t width;  // the least, where rows are printed before the longest is known
    Look look = Look::Plain;
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

// Whether the tables show looks: where the stream is a terminal that can.
enum class Looks { No, Yes };

// A table when all records are there, as wide as it must be, in the order in which they came. Without headings when
// the first is empty.
std::unique_ptr<Output> table(std::ostream& stream, std::span<const Column> columns, Looks looks);

// RFC 4180: a heading of the columns' keys, then a line a record, at once. Texts are harmless to terminals and to
// spreadsheets.
std::unique_ptr<Output> csv(std::ostream& stream, std::span<const Column> columns);

// One value a line and nothing else.
std::unique_ptr<Output> plainValues(std::ostream& stream, const char* key);

// A heading, then a row for each record at once.
std::unique_ptr<Output> liveTable(std::ostream& stream, std::span<const Column> columns, Looks looks);

// The output of a command on standard output: JSON if it is asked for, else a table.
std::unique_ptr<Output> tableOrJson(bool json, std::span<const Column> columns);

// A text that is no table: with JSON, in a record of its own.
void printText(bool json, const std::string& text);

// The looks that standard output can show.
Looks outputLooks();

// Puts records in the natural order of their values of that key; those without one come last.
void sortBy(std::vector<Record>& records, const std::string& key);
