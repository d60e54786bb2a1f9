#include "time_zone/clocks.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>

#include "support/temporary_folder.h"

constexpr const char* kFormat = "%Y-%m-%d %H:%M:%S %z %Z";

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
    while (output != nullptr && fgets(line, sizeof line, output) != nullptr) {
        lines.emplace_back(line, std::string(line).find_last_not_of('\n') + 1);
    }
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
