// Helpers of the time-zone tests: folders, programs that show the time, a private /etc.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

extern const std::string kTokyoFile;  // the zone file of "JST-9", byte for byte

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return path_.string(); }
    std::filesystem::path operator/(const char* name) const { return path_ / name; }
    std::vector<std::string> names() const;  // sorted

private:
    std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& bytes);

int64_t utc(const std::string& text);  // "2026-03-29 01:00:00"

// Local times as "2026-03-29 03:00:00 +0200 CEST", one a moment.
std::vector<std::string> shownBy(const std::string& command, const std::vector<int64_t>& moments);
std::vector<std::string> shownByDate(const std::string& tz, const std::vector<int64_t>& moments);
std::string shownHere(int64_t moment);  // by this process

// Runs `body` in a child process that has `folder` as its /etc, and passes its failures on. Returns false where the
// kernel does not allow that.
bool withPrivateEtc(const std::string& folder, const std::function<void()>& body);
