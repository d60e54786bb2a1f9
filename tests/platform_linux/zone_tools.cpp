#include "zone_tools.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr const char* kFormat = "%Y-%m-%d %H:%M:%S %z %Z";
constexpr int kNotAllowed = 77;

const std::string kTokyoFile =
    "TZif2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\4"s
    "\x80\0\0\0"s
    "\0"s
    "\0\0\x7e\x90\0\0"s
    "JST\0"s
    "TZif2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\4"s
    "\xf8\0\0\0\0\0\0\0"s
    "\0"s
    "\0\0\x7e\x90\0\0"s
    "JST\0"s
    "\nJST-9\n"s;

TemporaryFolder::TemporaryFolder() {
    std::string name = (fs::temp_directory_path() / "time-zone-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp: " + name);
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path_)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
    ASSERT_EQ(readFile(path), bytes);
}

int64_t utc(const std::string& text) {
    std::tm time{};
    const char* end = strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &time);
    EXPECT_TRUE(end != nullptr && *end == '\0') << text;
    return timegm(&time);
}

std::vector<std::string> shownBy(const std::string& command, const std::vector<int64_t>& moments) {
    TemporaryFolder folder;
    std::string text;
    for (int64_t moment : moments) text.append("@").append(std::to_string(moment)).append("\n");
    writeFile(folder / "moments", text);

    std::vector<std::string> lines;
    FILE* output = popen((command + " <" + folder.path() + "/moments").c_str(), "re");
    char line[128];
    while (output != nullptr && fgets(line, sizeof line, output) != nullptr)
        lines.emplace_back(line, std::string(line).find_last_not_of('\n') + 1);
    EXPECT_TRUE(output != nullptr && pclose(output) == 0) << command;
    EXPECT_EQ(lines.size(), moments.size()) << command;
    lines.resize(moments.size());
    return lines;
}

std::vector<std::string> shownByDate(const std::string& tz, const std::vector<int64_t>& moments) {
    const std::string zone = tz.empty() ? "env -u TZ " : "TZ='" + tz + "' ";
    return shownBy(zone + "LC_ALL=C date -f - '+" + kFormat + "'", moments);
}

std::string shownHere(int64_t moment) {
    const std::time_t time = static_cast<std::time_t>(moment);
    char text[64] = "";
    std::strftime(text, sizeof text, kFormat, std::localtime(&time));
    return text;
}

static void writeMap(const char* name, unsigned id) { std::ofstream(name) << id << " " << id << " 1"; }

static bool enterNamespace() {
    const unsigned user = getuid(), group = getgid();
    if (unshare(CLONE_NEWNS) == 0) return true;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    writeMap("/proc/self/uid_map", user);
    writeMap("/proc/self/gid_map", group);
    return true;
}

bool withPrivateEtc(const std::string& folder, const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (!enterNamespace() || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount(folder.c_str(), "/etc", nullptr, MS_BIND, nullptr) != 0)
            _exit(kNotAllowed);
        body();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotAllowed) return false;
    EXPECT_EQ(status, 0) << "in the child with a private /etc";
    return true;
}
