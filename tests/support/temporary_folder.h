// A folder of the test's own, and its files in one piece.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

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
