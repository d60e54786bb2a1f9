// The driver's list of networks: what the daemon makes of it, against a reading of its lines one by one.
//
// An input is the list.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/fuzz.h"
#include "handlers/site_survey.h"

using namespace fuzz;

constexpr size_t kReply = 746;

static std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const size_t newline = text.find('\n');
        const size_t length = std::min({newline == text.npos ? text.npos : newline + 1, size_t{1023}, text.size()});
        lines.emplace_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

// Up to a NUL, and without blanks at its end.
static std::string columnOf(const std::string& line, size_t from, size_t width) {
    std::string text = from < line.size() ? line.substr(from, width) : "";
    text.resize(std::min(text.find('\0'), text.size()));
    while (text.ends_with(' ')) text.pop_back();
    return text;
}

static int64_t numberOf(const std::string& text) {
    size_t at = 0;
    int64_t number = 0;
    while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) at++;
    const bool isNegative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) at++;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; at++) number = number * 10 + (text[at] - '0');
    return isNegative ? -number : number;
}

// Authentication in the low nibble, cipher in the high one.
static int securityOf(const std::string& words) {
    const auto has = [&](const char* word) { return words.find(word) != words.npos; };
    const int cipher = has("TKIP") == has("AES") ? 4 : has("TKIP") ? 2 : 3;
    if (has("NONE")) return 0x00;
    if (has("WEP")) return 0x10;
    if (has("WPAPSK")) return cipher << 4 | 3;
    if (has("WPA1PSK") && has("WPA2PSK")) return cipher << 4 | 5;
    return has("WPA2PSK") && !has("WPA1PSK") ? cipher << 4 | 4 : 0xFF;
}

static std::string entryOf(const std::string& line) {
    std::string entry = columnOf(line, 4, 33).substr(0, 32);
    entry.resize(33);
    const int security = securityOf(columnOf(line, 57, 23));
    const bool isAdHoc = columnOf(line, 98, 2) != "In";
    entry += static_cast<char>(numberOf(columnOf(line, 80, 10)));
    entry += static_cast<char>((security & 0xF0) | (isAdHoc ? 1 : 0));
    entry += static_cast<char>(numberOf(columnOf(line, 0, 4)) << 4 | (security & 0x0F));
    return entry;
}

// Behind the header; "" when no network is in the list.
static std::string pageOf(std::string_view text) {
    std::vector<std::string> lines = linesOf(text);
    if (lines.size() < 2) return "";
    std::string page;
    for (size_t i = 1; i < std::min(lines.size(), size_t{21}); i++) page += entryOf(lines[i]);
    page.resize(720);
    return page + std::string(2, '\0') + std::string(2, lines.size() > 21 ? '\xFF' : '\0');
}

static void check(const char* sites, size_t size) {
    const uint8_t request[1024] = {0xFD, 0xFD};
    std::vector<uint8_t> reply(1024);
    const int length = fillSiteSurveyPage(request, reply.data(), 1024, 0, sites, static_cast<int>(size));
    const std::string page = pageOf({sites, size});
    require(length == (page.empty() ? -1 : static_cast<int>(kReply)), "a list with a network in it has one page");
    if (page.empty()) return;
    require(std::memcmp(reply.data() + 22, page.data(), page.size()) == 0, "the page is what the lines say");
    require(std::all_of(reply.begin() + kReply, reply.end(), [](uint8_t byte) { return byte == 0; }),
            "nothing is written behind a reply");
    require(fillSiteSurveyPage(request, reply.data(), 1024, 1, sites, static_cast<int>(size)) == -1,
            "there is one page alone");
}

// A copy of exactly its size, so that a byte behind its end is seen.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    const std::unique_ptr<char[]> sites(new char[size]);
    std::copy_n(bytes, size, sites.get());
    check(sites.get(), size);
    return 0;
}
