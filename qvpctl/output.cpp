#include "qvpctl/output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
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

static void printRow(std::ostream& stream, const Row& row, const std::vector<size_t>& widths) {
    for (size_t i = 0; i + 1 < row.size(); i++) {
        const size_t width = displayWidth(row[i]);
        stream << row[i] << std::string(std::max(widths[i], width) - width + 2, ' ');
    }
    stream << row.back() << '\n';
}

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

class SortedTable : public Output {
public:
    SortedTable(std::ostream& stream, std::span<const Column> columns, const char* sortKey)
        : stream_(stream), columns_(columns), sortKey_(sortKey) {}

    void add(const Record& record) override { records_.push_back(record); }

    void finish() override {
        if (records_.empty()) {
            return;
        }
        if (sortKey_ != nullptr) sort();
        std::vector<Row> rows;
        if (*columns_.front().heading != '\0') rows.push_back(headings(columns_));
        for (const Record& record : records_) {
            rows.push_back(cells(columns_, record));
        }
        const std::vector<size_t> widths = columnWidths(rows);
        for (const Row& row : rows) {
            printRow(stream_, row, widths);
        }
        flush(stream_);
    }

private:
    const std::string& sortText(const Record& record) const {
        return record.at(sortKey_).get_ref<const std::string&>();
    }

    void sort() {
        std::stable_sort(records_.begin(), records_.end(), [this](const Record& a, const Record& b) {
            return strverscmp(sortText(a).c_str(), sortText(b).c_str()) < 0;
        });
    }

    std::vector<size_t> columnWidths(const std::vector<Row>& rows) const {
        std::vector<size_t> widths(columns_.size(), 0);
        for (const Row& row : rows) {
            for (size_t i = 0; i < row.size(); i++) {
                widths[i] = std::max(widths[i], displayWidth(row[i]));
            }
        }
        return widths;
    }

    std::ostream& stream_;
    std::span<const Column> columns_;
    const char* sortKey_;
    std::vector<Record> records_;
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
    LiveTable(std::ostream& stream, std::span<const Column> columns) : stream_(stream), columns_(columns) {
        for (const Column& column : columns) {
            widths_.push_back(column.width);
        }
        printRow(stream_, headings(columns), widths_);
        flush(stream_);
    }

    void add(const Record& record) override {
        printRow(stream_, cells(columns_, record), widths_);
        flush(stream_);
    }

private:
    std::ostream& stream_;
    std::span<const Column> columns_;
    std::vector<size_t> widths_;
};

std::unique_ptr<Output> jsonLines(std::ostream& stream) { return std::make_unique<JsonLines>(stream); }

std::unique_ptr<Output> sortedTable(std::ostream& stream, std::span<const Column> columns, const char* sortKey) {
    return std::make_unique<SortedTable>(stream, columns, sortKey);
}

std::unique_ptr<Output> table(std::ostream& stream, std::span<const Column> columns) {
    return std::make_unique<SortedTable>(stream, columns, nullptr);
}

std::unique_ptr<Output> csv(std::ostream& stream, std::span<const Column> columns) {
    return std::make_unique<Csv>(stream, columns);
}

std::unique_ptr<Output> plainValues(std::ostream& stream, const char* key) {
    return std::make_unique<PlainValues>(stream, key);
}

std::unique_ptr<Output> liveTable(std::ostream& stream, std::span<const Column> columns) {
    return std::make_unique<LiveTable>(stream, columns);
}
