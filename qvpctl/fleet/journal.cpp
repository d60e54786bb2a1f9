#include "qvpctl/fleet/journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "client/text.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"

namespace fs = std::filesystem;
using client::Error;
using client::ErrorKind;
using client::localError;

LockedFile::LockedFile(const std::string& path, int flags) : descriptor_(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0) throw localError("cannot open " + printable(path), errno);
    if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return;
    close(descriptor_);
    throw Error(ErrorKind::Local, "another run works with " + printable(path));
}

LockedFile::LockedFile(LockedFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

LockedFile::~LockedFile() {
    if (descriptor_ >= 0) close(descriptor_);
}

// FNV-1a: it guards against a mistake, not against an attacker.
std::string digestOf(const std::string& text) {
    uint64_t hash = 0xCBF29CE484222325;
    for (const char letter : text) hash = (hash ^ static_cast<uint8_t>(letter)) * 0x100000001B3;
    char digits[17];
    snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

std::string digestOf(const std::vector<client::Assignment>& assignments) {
    std::string texts;
    for (const client::Assignment& one : assignments) {
        const auto* text = std::get_if<std::string>(&one.value);
        texts += std::string(one.setting->key) + '=' + (text != nullptr ? *text : "") + '\0';
    }
    return digestOf(texts);
}

static std::map<std::string, std::string> textsOf(const Record& values) {
    std::map<std::string, std::string> texts;
    for (const auto& [key, value] : values.items()) texts[key] = value.get<std::string>();
    return texts;
}

// The first that was seen of a setting is what was there: a later one is of a run that went on.
static void takeBefore(const Record& record, CameraBefore& before) {
    before.changed.merge(textsOf(record.at("before")));
    before.basic.merge(textsOf(record.at("basic")));
    for (const Record& key : record.at("lost")) before.lost.insert(key.get<std::string>());
    before.wanted = record.at("wanted").get<std::string>();
}

static void takeLine(const Record& record, JournalContent& content) {
    if (record.contains("journal")) content.digest = record.at("digest").get<std::string>();
    if (record.contains("before")) {
        takeBefore(record, content.before[record.at("mac").get<std::string>()]);
        content.isOver = false;
    }
    if (record.contains("end")) content.isOver = true;
}

JournalContent readJournal(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) throw localError("cannot read " + printable(path), errno != 0 ? errno : EIO);
    JournalContent content;
    size_t number = 1;
    try {
        for (std::string line; std::getline(file, line) && !file.eof(); number++) {
            takeLine(Record::parse(line), content);
        }
    } catch (const Record::exception&) {
        const bool isJournal = !content.digest.empty();
        throw Error(ErrorKind::BadValue,
                    printable(path) + (isJournal ? " is damaged in line " + std::to_string(number) : " is no journal"));
    }
    if (content.digest.empty()) throw Error(ErrorKind::BadValue, printable(path) + " is no journal");
    return content;
}

// A name is on disk only with its folder.
static void flushFolder(const std::string& path) {
    const fs::path folder = fs::absolute(path).parent_path();
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) throw localError("cannot open " + printable(folder.string()), errno);
    fsync(descriptor);
    close(descriptor);
}

static void keepOld(const std::string& path) {
    for (int number = 1;; number++) {
        const std::string kept = path + "." + std::to_string(number);
        if (fs::exists(kept)) continue;
        std::error_code failure;
        fs::rename(path, kept, failure);
        if (failure) throw localError("cannot rename " + printable(path), failure.value());
        say("the journal of the run before is kept as " + kept + ", for 'qvpctl revert'");
        return;
    }
}

Journal Journal::begin(const std::string& path, const std::string& digest) {
    if (fs::exists(path)) keepOld(path);
    Journal journal(LockedFile(path, O_WRONLY | O_CREAT | O_EXCL | O_APPEND));
    journal.write({
        {"journal", 1     },
        {"digest",  digest}
    });
    flushFolder(path);
    return journal;
}

// What a run left half written is cut off, so that the next line stands by itself.
static void cutToLines(const std::string& path, int descriptor) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    const size_t end = text.str().rfind('\n');
    const off_t length = end == std::string::npos ? 0 : static_cast<off_t>(end + 1);
    if (ftruncate(descriptor, length) != 0) throw localError("cannot write " + printable(path), errno);
}

Journal Journal::goOn(const std::string& path) {
    Journal journal(LockedFile(path, O_WRONLY | O_APPEND));
    cutToLines(path, journal.file_.descriptor());
    return journal;
}

void Journal::write(const Record& record) {
    const std::string line = jsonLine(record);
    const off_t before = lseek(file_.descriptor(), 0, SEEK_END);
    const ssize_t written = ::write(file_.descriptor(), line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size()) && fdatasync(file_.descriptor()) == 0) return;
    const int reason = written < 0 ? errno : ENOSPC;
    if (ftruncate(file_.descriptor(), before) != 0) {  // half a line, which the next run cuts off
    }
    throw localError("cannot write the journal", reason);
}

// Texts of a camera may be any bytes, which JSON does not carry: such a one cannot be put back.
static bool isText(const std::string& value) {
    try {
        return !Record(value).dump().empty();
    } catch (const Record::exception&) {
        return false;
    }
}

// Of a camera that is only heard, its name and its address are all that is known.
static bool isKnown(const client::Setting& setting, const client::CameraPlan& plan) {
    const std::string key = setting.key;
    return !plan.isOnlyHeard() || key == "name" || key == "ipv4.address";
}

void Journal::noteBefore(const client::CameraPlan& plan) {
    Record before = Record::object(), basic = Record::object(), lost = Record::array();
    const auto valueOf = [&](const client::Setting& setting) {
        const auto value = isKnown(setting, plan) ? client::restorableValue(setting, plan.state) : std::nullopt;
        return value && isText(*value) ? value : std::nullopt;
    };
    for (const client::SettingChange& change : plan.changes) {
        if (const auto value = valueOf(*change.setting)) {
            before[change.setting->key] = *value;
        } else {
            lost.push_back(change.setting->key);
        }
    }
    for (const client::Setting& setting : client::allSettings()) {
        if (setting.group != client::Group::Basic || setting.isReadOnly()) continue;
        if (const auto value = valueOf(setting)) {
            basic[setting.key] = *value;
        } else if (plan.isOnlyHeard()) {
            lost.push_back(setting.key);  // it is told all of them, and has said only some
        }
    }
    write({
        {"mac",    client::macText(plan.found.camera.mac)},
        {"before", before                                },
        {"basic",  basic                                 },
        {"lost",   lost                                  },
        {"wanted", digestOf(plan.assignments)            }
    });
}

void Journal::noteAfter(const Outcome& outcome) {
    write({
        {"mac",    client::macText(outcome.mac)},
        {"result", outcome.result()            }
    });
}

void Journal::noteEnd() {
    write({
        {"end", true}
    });
}
