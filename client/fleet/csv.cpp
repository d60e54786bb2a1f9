#include "client/fleet/csv.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace client {

static constexpr std::string_view kMark = "\xEF\xBB\xBF";

// The first of the two outside of quotes: headings hold neither.
static char separatorOf(std::string_view text) {
    bool isQuoted = false;
    for (const char letter : text) {
        if (letter == '"') isQuoted = !isQuoted;
        if (isQuoted) continue;
        if (letter == ',' || letter == ';') return letter;
        if (letter == '\n' || letter == '\r') break;
    }
    return ',';
}

// How many bytes the character takes that begins there; 0: it is none of UTF-8.
static size_t characterLength(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (length == 0 || length > text.size()) return 0;
    for (size_t i = 1; i < length; i++) {
        if ((static_cast<uint8_t>(text[i]) & 0xC0) != 0x80) return 0;
    }
    const auto second = length > 1 ? static_cast<uint8_t>(text[1]) : uint8_t{0x80};
    const bool isTooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool isNoCharacter = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return isTooLong || isNoCharacter ? 0 : length;
}

static bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = characterLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

class CsvParser {
public:
    explicit CsvParser(std::string_view text) : text_(text), separator_(separatorOf(text)) {}

    Csv parse() {
        while (at_ < text_.size()) readRow();
        return std::move(csv_);
    }

private:
    bool isAt(char letter) const { return at_ < text_.size() && text_[at_] == letter; }
    bool isAtLineEnd() const { return at_ == text_.size() || isAt('\n') || isAt('\r'); }

    void endLine() {
        if (isAt('\r')) at_++;
        if (isAt('\n')) at_++;
        line_++;
    }

    void readRow() {
        CsvRow row{readCell(1)};
        while (isAt(separator_)) {
            at_++;
            row.push_back(readCell(row.size() + 1));
        }
        endLine();
        const bool isEmpty = std::ranges::all_of(row, [](const CsvCell& cell) { return cell.text.empty(); });
        if (!isEmpty) csv_.rows.push_back(std::move(row));
    }

    CsvCell readCell(size_t column) {
        CsvCell cell{
            "", {line_, column}
        };
        if (isAt('"')) {
            readQuoted(cell);
        } else {
            while (!isAtLineEnd() && !isAt(separator_)) cell.text += text_[at_++];
        }
        if (cell.text.find('\0') != cell.text.npos) {
            fault(cell.place, "holds a NUL byte: the file is no text in UTF-8");
        } else if (!isUtf8(cell.text)) {
            fault(cell.place, "is not UTF-8; have the spreadsheet save it as such");
        }
        return cell;
    }

    void readQuoted(CsvCell& cell) {
        at_++;
        for (; at_ < text_.size(); at_++) {
            if (isAt('"') && !text_.substr(at_ + 1).starts_with('"')) break;
            if (isAt('"')) at_++;
            if (isAt('\n')) line_++;
            cell.text += text_[at_];
        }
        if (at_ == text_.size()) return fault(cell.place, "the quote that opens here is not closed");
        at_++;
        if (isAtLineEnd() || isAt(separator_)) return;
        fault(cell.place, "something stands behind the closing quote");
        while (!isAtLineEnd() && !isAt(separator_)) at_++;
    }

    void fault(Place place, const char* text) { csv_.faults.push_back({place, text}); }

    std::string_view text_;
    char separator_;
    size_t at_ = 0;
    size_t line_ = 1;
    Csv csv_;
};

Csv parseCsv(std::string_view text) {
    if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
    return CsvParser(text).parse();
}

}  // namespace client
