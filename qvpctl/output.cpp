#include "qvpctl/output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "client/error.h"
#include "qvpctl/terminal_text.h"

using Row = std::vector<std::string>;

static void flush(std::ostream& stream) {
    errno = 0;
    if (!stream.flush()) {
        throw client::localError("cannot write the output", errno != 0 ? errno : EIO);
    }
}

static std::string cellText(const Record& value) {
    const std::string text = value.is_string() ? printableCell(value.get<std::string>()) : value.dump();
    return value.is_null() || text.empty() ? "-" : text;
}

static Row headings(std::span<const Column> columns) {
    Row row;
    for (const Column& column : columns) {
        row.push_back(column.heading);
    }
    return row;
}

static Row cells(std::span<const Column> columns, const Record& record) {
    Row row;
    for (const Column& column : columns) {
        row.push_back(cellText(record.at(column.key)));
    }
    return row;
}

// The rows of a table; what a cell looks like takes no place.
class RowPrinter {
public:
    RowPrinter(std::ostream& stream, std::span<const Column> columns, Looks looks)
        : stream_(stream), columns_(columns), looks_(looks) {}

    void printHeadings(const std::vector<size_t>& widths) const {
        print(headings(columns_), widths, [](size_t) { return Look::Heading; });
    }

    void printCells(const Row& row, const std::vector<size_t>& widths) const {
        print(row, widths, [&](size_t i) { return row[i] == "-" ? Look::Plain : columns_[i].look; });
    }

private:
    template <typename LookOf>
    void print(const Row& row, const std::vector<size_t>& widths, LookOf lookOf) const {
        for (size_t i = 0; i < row.size(); i++) {
            const size_t width = displayWidth(row[i]);
            stream_ << (looks_ == Looks::Yes ? styled(row[i], lookOf(i)) : row[i]);
            if (i + 1 < row.size()) stream_ << std::string(std::max(widths[i], width) - width + 2, ' ');
        }
        stream_ << '\n';
    }

    std::ostream& stream_;
    std::span<const Column> columns_;
    Looks looks_;
};

std::string jsonLine(const Record& record) {
    return record.dump(-1, ' ', true, Record::error_handler_t::replace) + "\n";
}

class JsonLines : public Output {
public:
    explicit JsonLines(std::ostream& stream) : stream_(stream) {}

    void add(const Record& record) override {
        stream_ << jsonLine(record);
        flush(stream_);
    }

private:
    std::ostream& stream_;
};

class Table : public Output {
public:
    Table(std::ostream& stream, std::span<const Column> columns, Looks looks)
        : stream_(stream), columns_(columns), printer_(stream, columns, looks) {}

    void add(const Record& record) override { rows_.push_back(cells(columns_, record)); }

    void finish() override {
        if (rows_.empty()) return;
        const bool hasHeadings = *columns_.front().heading != '\0';
        const std::vector<size_t> widths = columnWidths(hasHeadings);
        if (hasHeadings) printer_.printHeadings(widths);
        for (const Row& row : rows_) printer_.printCells(row, widths);
        flush(stream_);
    }

private:
    std::vector<size_t> columnWidths(bool hasHeadings) const {
        std::vector<size_t> widths(columns_.size(), 0);
        const auto widen = [&](const Row& row) {
            for (size_t i = 0; i < row.size(); i++) widths[i] = std::max(widths[i], displayWidth(row[i]));
        };
        if (hasHeadings) widen(headings(columns_));
        std::ranges::for_each(rows_, widen);
        return widths;
    }

    std::ostream& stream_;
    std::span<const Column> columns_;
    RowPrinter printer_;
    std::vector<Row> rows_;
};

// A cell with a comma, a semicolon or a quote stands in quotes, with its own quotes doubled. A text that a spreadsheet
// would take for a formula has an apostrophe in front, which makes it a text.
static std::string csvCell(const Record& value) {
    std::string text = value.is_string() ? printable(value.get<std::string>()) : value.is_null() ? "" : value.dump();
    if (value.is_string() && !text.empty() && std::string_view("=+-@").find(text[0]) != std::string_view::npos) {
        text = std::string(1, '\'').append(text);
    }
    if (text.find_first_of(",;\"") == text.npos) return text;
    std::string quoted = "\"";
    for (const char letter : text) quoted += letter == '"' ? std::string("\"\"") : std::string(1, letter);
    return quoted + "\"";
}

class Csv : public Output {
public:
    Csv(std::ostream& stream, std::span<const Column> columns) : stream_(stream), columns_(columns) {
        for (const Column& column : columns_) stream_ << (&column == columns_.data() ? "" : ",") << column.key;
        stream_ << "\r\n";
        flush(stream_);
    }

    void add(const Record& record) override {
        for (const Column& column : columns_) {
            stream_ << (&column == columns_.data() ? "" : ",") << csvCell(record.at(column.key));
        }
        stream_ << "\r\n";
        flush(stream_);
    }

private:
    std::ostream& stream_;
    std::span<const Column> columns_;
};

class PlainValues : public Output {
public:
    PlainValues(std::ostream& stream, const char* key) : stream_(stream), key_(key) {}

    void add(const Record& record) override {
        const Record& value = record.at(key_);
        if (!value.is_null()) stream_ << printable(value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
        flush(stream_);
    }

private:
    std::ostream& stream_;
    const char* key_;
};

class LiveTable : public Output {
public:
    LiveTable(std::ostream& stream, std::span<const Column> columns, Looks looks)
        : stream_(stream), columns_(columns), printer_(stream, columns, looks) {
        for (const Column& column : columns) widths_.push_back(column.width);
        printer_.printHeadings(widths_);
        flush(stream_);
    }

    void add(const Record& record) override {
        printer_.printCells(cells(columns_, record), widths_);
        flush(stream_);
    }

private:
    std::ostream& stream_;
    std::span<const Column> columns_;
    RowPrinter printer_;
    std::vector<size_t> widths_;
};

std::unique_ptr<Output> jsonLines(std::ostream& stream) { return std::make_unique<JsonLines>(stream); }

std::unique_ptr<Output> table(std::ostream& stream, std::span<const Column> columns, Looks looks) {
    return std::make_unique<Table>(stream, columns, looks);
}

std::unique_ptr<Output> csv(std::ostream& stream, std::span<const Column> columns) {
    return std::make_unique<Csv>(stream, columns);
}

std::unique_ptr<Output> plainValues(std::ostream& stream, const char* key) {
    return std::make_unique<PlainValues>(stream, key);
}

std::unique_ptr<Output> liveTable(std::ostream& stream, std::span<const Column> columns, Looks looks) {
    return std::make_unique<LiveTable>(stream, columns, looks);
}

Looks outputLooks() { return isStyled(STDOUT_FILENO) ? Looks::Yes : Looks::No; }

std::unique_ptr<Output> tableOrJson(bool json, std::span<const Column> columns) {
    return json ? jsonLines(std::cout) : table(std::cout, columns, outputLooks());
}

void printText(bool json, const std::string& text) {
    std::cout << (json ? jsonLine({
                             {"text", text}
    })
                       : text);
    flush(std::cout);
}

void sortBy(std::vector<Record>& records, const std::string& key) {
    const auto textOf = [&](const Record& record) {
        const Record& value = record.at(key);
        return value.is_string() ? value.get<std::string>() : value.is_null() ? "" : value.dump();
    };
    std::ranges::stable_sort(records, [&](const Record& a, const Record& b) {
        const std::string one = textOf(a), other = textOf(b);
        if (one.empty() || other.empty()) return other.empty() && !one.empty();
        return strverscmp(one.c_str(), other.c_str()) < 0;
    });
}
