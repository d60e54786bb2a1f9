// What `iw` prints of a scan, and the list of networks that is made of it.
//
// An input is two bytes for the room that there is for the list, and the scan.
#include <algorithm>
#include <cctype>
#include <charconv>
#include <vector>

#include "fuzz/fuzz.h"
#include "wireless/iw_scan.h"

using namespace fuzz;

constexpr size_t kLine = 101;

static bool isBssid(std::string_view text) {
    if (text.size() < 17) return false;
    for (size_t i = 0; i < 17; i++) {
        if (i % 3 == 2 ? text[i] != ':' : !std::isxdigit(static_cast<unsigned char>(text[i]))) return false;
    }
    return true;
}

// The addresses of all networks, in lower case.
static std::vector<std::string> networksOf(std::string_view scan) {
    std::vector<std::string> networks;
    Input input(reinterpret_cast<const uint8_t*>(scan.data()), scan.size());
    while (!input.isEmpty()) {
        std::string_view line = input.upTo('\n');
        if (!line.starts_with("BSS ") || !isBssid(line.substr(4))) continue;
        std::string network(line.substr(4, 17));
        std::ranges::transform(network, network.begin(), [](unsigned char letter) { return std::tolower(letter); });
        networks.push_back(network);
    }
    return networks;
}

static std::string column(std::string_view line, size_t from, size_t width) {
    const std::string_view text = line.substr(from, width);
    return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
}

static bool isNumber(const std::string& text, int most) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= most;
}

static bool isAny(const std::string& word, std::initializer_list<const char*> words) {
    return std::ranges::find(words, word) != words.end();
}

static void checkLine(std::string_view line, const std::string& bssid) {
    require(line.size() == kLine - 1 && line.find('\0') == line.npos, "a line is as long as every line, and text");
    require(isNumber(column(line, 0, 4), 999), "a channel is a number");
    require(column(line, 37, 20) == bssid, "each network stands in its line");
    require(isNumber(column(line, 80, 10), 100), "a signal is a percentage");
    require(isAny(column(line, 90, 8), {"11b/g", "11a", "11n", "11ac", "11ax"}), "a mode is a known one");
    require(isAny(column(line, 98, 2), {"In", "Ad"}), "a network has a type");
    require(line[36] == ' ' && line[79] == ' ' && line[97] == ' ', "columns are apart");
}

static void check(std::string_view scan, size_t room) {
    std::string list(room + 1, 'Z');
    const int count = siteListFromScan(scan.data(), scan.size(), list.data(), room);
    require(list[room] == 'Z', "a list keeps within its room");
    if (room <= kLine) return require(count == -1 && list[0] == 'Z', "no list without room for its heading");
    const std::vector<std::string> networks = networksOf(scan);
    const size_t expected = std::min(networks.size(), (room - 1) / kLine - 1);
    require(count == static_cast<int>(expected), "every network with room for it is listed");
    require(list.find('\0') == (expected + 1) * kLine, "a list ends with its last line");
    for (size_t i = 0; i < expected; i++) {
        const std::string_view line = std::string_view(list).substr((i + 1) * kLine, kLine);
        require(line.ends_with('\n'), "a line ends");
        checkLine(line.substr(0, kLine - 1), networks[i]);
    }
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input input(bytes, size);
    const size_t room = input.byte() + input.byte() * size_t{256};
    const std::string scan(input.rest());
    check(scan, room);
    check(scan, 21844);
    return 0;
}
