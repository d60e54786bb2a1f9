// The configuration store of the reference platform: what is written is read back, and the rest stays as it was.
//
// An input is a byte for the key that is written, a byte for the length of the value, the value, and the file.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

#include "fuzz/fuzz.h"
#include "platform.h"
#include "store_keys.h"

using namespace fuzz;
namespace fs = std::filesystem;

struct Key {
    const char* section;
    const char* name;
    bool isText;
    size_t size;
};

#define TEXT_ROW(constant, section, name) {section, name, true, 256},
#define NUMBER_ROW(constant, section, name) {section, name, false, 4},
#define SHORT_ROW(constant, section, name) {section, name, false, 2},
#define FLAG_ROW(constant, section, name) {section, name, false, 1},
static constexpr Key kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};

// A file system in memory, where there is one: every input is a file.
class Folder {
public:
    Folder() {
        std::string path = fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path().string();
        path += "/qvp-store-XXXXXX";
        require(mkdtemp(path.data()) != nullptr, "a folder can be made");
        path_ = path;
        setenv("QVP_STORE", file().c_str(), 1);
    }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file() const { return path_ + "/camera.ini"; }

private:
    std::string path_;
};

static const Folder& folder() {
    static const Folder folder;
    return folder;
}

static void writeFile(std::string_view text) {
    const int file = open(folder().file().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    require(file >= 0, "the store can be made");
    require(write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "the store can be filled");
    close(file);
}

static std::string readFile() {
    std::string text(fs::file_size(folder().file()), '\0');
    const int file = open(folder().file().c_str(), O_RDONLY | O_CLOEXEC);
    require(file >= 0, "the store is there");
    require(read(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "the store can be read");
    close(file);
    return text;
}

// Zeros for a key that is missing.
using Value = std::array<char, 256>;

static Value valueOf(const Key& key, bool& isThere) {
    Value value{};
    isThere = cfgRead(key.section, key.name, value.data()) == 0;
    if (isThere && key.isText) require(std::ranges::count(value, '\0') > 0, "a text of the store ends");
    if (!isThere || !key.isText)
        require(std::all_of(&value[isThere ? key.size : 0], value.end(), [](char byte) { return byte == 0; }),
                "a read keeps its bounds");
    return value;
}

struct Content {
    std::vector<Value> values;
    std::array<bool, std::size(kKeys)> isThere{};
};

static Content contentOf() {
    Content content;
    for (size_t i = 0; i < std::size(kKeys); i++) content.values.push_back(valueOf(kKeys[i], content.isThere[i]));
    return content;
}

// They differ in one place, and what went from there was of one line.
static void checkLines(std::string_view before, std::string_view after) {
    const auto front = static_cast<size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
    before.remove_prefix(front);
    after.remove_prefix(front);
    while (!before.empty() && !after.empty() && before.back() == after.back()) {
        before.remove_suffix(1);
        after.remove_suffix(1);
    }
    require(before.find('\n') == before.npos, "the other lines of a store stay as they are");
}

static std::string_view trimmed(std::string_view text) {
    const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(start, text.find_last_not_of(" \t") - start + 1);
}

// What stands behind the first `=` of a line that is that key's; nothing when none is.
static std::optional<std::string_view> rawValueOf(const Key& key, std::string_view text) {
    std::string_view section;
    Input input(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    while (!input.isEmpty()) {
        std::string_view line = input.upTo('\n');
        if (line.ends_with('\r')) line.remove_suffix(1);
        line = trimmed(line);
        const size_t end = line.find(line.starts_with('[') ? ']' : '=');
        if (line.empty() || line[0] == '#' || line[0] == ';' || end == line.npos || end == 0) continue;
        if (line[0] == '[') section = trimmed(line.substr(1, end - 1));
        if (line[0] == '[' || section.data() == nullptr) continue;
        if (section == key.section && trimmed(line.substr(0, end)) == key.name) return trimmed(line.substr(end + 1));
    }
    return std::nullopt;
}

// A value in quotes is the other rules' matter.
static void checkReading(const Content& content, std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    for (size_t i = 0; i < std::size(kKeys); i++) {
        const auto raw = rawValueOf(kKeys[i], text);
        if (!raw) require(!content.isThere[i], "a key that no line names is missing");
        if (!raw || !kKeys[i].isText || raw->starts_with('"')) continue;
        require(content.isThere[i] == (raw->find('\0') == raw->npos), "a text is there unless a NUL is in it");
        if (content.isThere[i])
            require(raw->substr(0, 255) == content.values[i].data(), "a text is what its line says");
    }
}

static void checkWrite(const Key& key, const Value& value, std::string_view text) {
    const size_t number = static_cast<size_t>(&key - kKeys);
    const Content before = contentOf();
    checkReading(before, text);
    const bool isWritten = cfgWrite(key.section, key.name, value.data(), kWriteThrough) == 0;
    if (!isWritten) return require(readFile() == text, "a write that fails leaves the store as it was");
    require(!fs::exists(folder().file() + ".new"), "no temporary file is left");
    requestBegins();
    const Content after = contentOf();
    require(after.isThere[number] && after.values[number] == value, "what is written is read back");
    for (size_t i = 0; i < std::size(kKeys); i++) {
        if (i == number) continue;
        const bool isSame = after.isThere[i] == before.isThere[i] && after.values[i] == before.values[i];
        require(isSame, "the other keys keep their values");
    }
    checkLines(text, readFile());
}

static void checkNames() {
    ListNode* sections = CfgEnumSec(folder().file().c_str());
    for (const ListNode* one = sections; one != nullptr; one = one->next) {
        ListFree(CfgEnumField(folder().file().c_str(), one->name));
    }
    ListFree(sections);
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input input(bytes, size);
    const Key& key = kKeys[input.byte() % std::size(kKeys)];
    const std::string_view given = input.text(input.byte());
    Value value{};
    given.substr(0, given.find('\0')).copy(value.data(), key.isText ? 255 : key.size);
    if (!key.isText) given.copy(value.data(), key.size);
    const std::string_view text = input.rest();
    requestBegins();
    writeFile(text);
    checkWrite(key, value, text);
    checkNames();
    return 0;
}

// Nobody cuts the power.
extern "C" int __wrap_fsync(int) { return 0; }
