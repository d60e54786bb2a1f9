#include "client/fleet/camera_file.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "client/error.h"
#include "client/fleet/camera_check.h"
#include "client/fleet/csv.h"
#include "client/text.h"

namespace client {

// The columns of 'qvpctl discover --csv' beside the MAC and what is a setting.
static constexpr std::string_view kInformation[] = {
    "address", "brand", "product",   "model",    "firmware",       "hardware", "httpPort",  "netmask",  "gateway",
    "dns",     "dhcp",  "localTime", "timezone", "daylightSaving", "url",      "interface", "answered", "problems"};

static std::string trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == text.npos) return "";
    return std::string(text.substr(start, text.find_last_not_of(" \t") - start + 1));
}

static void appendUtf8(std::string& text, uint32_t character) {
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | character >> 12);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | character >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

static std::optional<uint32_t> hexadecimal(std::string_view digits) {
    uint32_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, 16);
    if (digits.empty() || error != std::errc() || stop != end || number > 0x10FFFF) return std::nullopt;
    return number;
}

// Takes one escape off the front and appends what it stands for; a backslash that opens none stands for itself.
static void takeEscape(std::string_view& rest, std::string& text) {
    if (rest.starts_with("\\\\")) {
        text += '\\';
        rest.remove_prefix(2);
        return;
    }
    const auto byte = rest.starts_with("\\x") && rest.size() >= 4 ? hexadecimal(rest.substr(2, 2)) : std::nullopt;
    const size_t brace = rest.starts_with("\\u{") ? rest.find('}') : rest.npos;
    const auto character = brace != rest.npos ? hexadecimal(rest.substr(3, brace - 3)) : std::nullopt;
    if (byte) {
        text += static_cast<char>(*byte);
    } else if (character) {
        appendUtf8(text, *character);
    } else {
        text += '\\';
    }
    rest.remove_prefix(byte ? 4 : character ? brace + 1 : 1);
}

std::string plainCell(std::string_view cell) {
    const bool isGuarded = cell.size() > 1 && cell[0] == '\'' && std::string_view("=+-@").find(cell[1]) != cell.npos;
    if (isGuarded) cell.remove_prefix(1);
    std::string text;
    while (!cell.empty()) {
        if (cell[0] == '\\') {
            takeEscape(cell, text);
        } else {
            text += cell[0];
            cell.remove_prefix(1);
        }
    }
    return text;
}

bool isSecretReference(std::string_view text) {
    return (text.starts_with("file:") && text.size() > 5) || (text.starts_with("env:") && text.size() > 4) ||
           (text.starts_with("prompt:") && text.size() > 7) || text == "prompt";
}

namespace {

// What a column of the heading means.
struct FileColumn {
    enum class Kind { Mac, Address, Product, Setting, Information };
    Kind kind = Kind::Information;
    const Setting* setting = nullptr;
};

class FileReader {
public:
    FileReader(Csv csv, const SecretReader& readSecret) : csv_(std::move(csv)), readSecret_(readSecret) {}

    CameraFile read() {
        file_.faults = csv_.faults;
        if (!file_.faults.empty()) return std::move(file_);
        if (csv_.rows.empty()) return faulty("the file is empty; its first line names the columns, such as mac,name");
        readHeading(csv_.rows.front());
        for (size_t i = 1; i < csv_.rows.size(); i++) readRow(csv_.rows[i]);
        if (csv_.rows.size() == 1 && file_.faults.empty()) return faulty("no camera stands below the heading");
        return std::move(file_);
    }

private:
    void fault(Place place, const std::string& text) { file_.faults.push_back({place, text}); }

    CameraFile faulty(const std::string& text) {
        fault({1, 0}, text);
        return std::move(file_);
    }

    void readHeading(const CsvRow& row) {
        for (const CsvCell& cell : row) {
            const FileColumn column = columnOf(cell);
            const auto isSame = [&](const FileColumn& other) {
                return other.kind == column.kind && other.setting == column.setting;
            };
            const bool isTwin = column.kind != FileColumn::Kind::Information && std::ranges::any_of(columns_, isSame);
            if (isTwin) fault(cell.place, trimmed(cell.text) + " stands in the heading twice");
            columns_.push_back(column);
        }
        const bool hasMac = std::ranges::count(columns_, FileColumn::Kind::Mac, &FileColumn::kind) > 0;
        if (!hasMac) fault(row.front().place, "no column is named mac: cameras are known by that");
    }

    FileColumn columnOf(const CsvCell& cell) {
        const std::string key = trimmed(cell.text);
        if (key == "mac") return {FileColumn::Kind::Mac};
        const Setting* setting = findSetting(key);
        if (setting != nullptr) {
            const std::string why = faultOfKey(*setting);
            if (!why.empty()) fault(cell.place, why);
            return {FileColumn::Kind::Setting, setting};
        }
        if (std::ranges::count(kInformation, key) > 0) {
            file_.information.push_back(key);
            if (key == "address") return {FileColumn::Kind::Address};
            return {key == "product" ? FileColumn::Kind::Product : FileColumn::Kind::Information};
        }
        fault(cell.place, faultOfUnknownKey(key));
        return {};
    }

    void readRow(const CsvRow& row) {
        FileCamera camera;
        camera.place = {row.front().place.line, 0};
        const size_t before = file_.faults.size();
        bool hasMac = false;
        for (size_t i = 0; i < row.size(); i++) {
            const std::string text = plainCell(row[i].text);
            if (text.empty()) continue;
            if (i >= columns_.size()) {
                fault(row[i].place, "this cell has no heading; a value with the separator in it stands in quotes");
                break;
            }
            hasMac |= columns_[i].kind == FileColumn::Kind::Mac;
            readCell(columns_[i], text, row[i].place, camera);
        }
        if (!hasMac) fault(camera.place, "mac is missing: which camera is it?");
        const auto together = file_.faults.size() == before ? faultTogether(camera) : std::nullopt;
        if (together) file_.faults.push_back(*together);
        camera.isSound = file_.faults.size() == before;
        file_.cameras.push_back(std::move(camera));
    }

    void readCell(const FileColumn& column, const std::string& text, Place place, FileCamera& camera) {
        if (column.kind == FileColumn::Kind::Address) camera.address = text;
        if (column.kind == FileColumn::Kind::Product) camera.product = text;
        if (column.kind == FileColumn::Kind::Mac) {
            const auto mac = parseMac(trimmed(text));
            if (!mac) fault(place, "mac must be of the form 02:00:5e:10:00:01");
            camera.mac = mac.value_or(Mac{});
        }
        if (column.kind != FileColumn::Kind::Setting || column.setting->isReadOnly()) return;
        try {
            const Assignment assignment = assignmentOf(*column.setting, text);
            checkValue(assignment);
            camera.assignments.push_back(assignment);
            camera.places.push_back(place);
        } catch (const Error& error) {
            fault(place, error.what());
        }
    }

    Assignment assignmentOf(const Setting& setting, const std::string& text) {
        if (!setting.isSecret()) return {&setting, text};
        if (isSecretReference(text)) return {&setting, readSecret_(setting.key, text)};
        throw Error(ErrorKind::BadValue, std::string(setting.key) +
                                             " is a secret and must not stand in the file: write file:PATH, env:NAME, "
                                             "or prompt");
    }

    Csv csv_;
    const SecretReader& readSecret_;
    std::vector<FileColumn> columns_;
    CameraFile file_;
};

}  // namespace

CameraFile readCameraTable(std::string_view csv, const SecretReader& readSecret) {
    return FileReader(parseCsv(csv), readSecret).read();
}

CameraFile readCameraFile(std::string_view csv, const SecretReader& readSecret) {
    CameraFile file = readCameraTable(csv, readSecret);
    std::ranges::copy(findTwins(file), std::back_inserter(file.faults));
    sortByPlace(file.faults);
    return file;
}

}  // namespace client
