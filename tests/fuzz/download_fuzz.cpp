// The upgrade worker's download: its address, and what a server answers.
//
// An input is a byte, and the address when that is 0; else the byte is how much comes at once, and the answer follows.
#include <fcntl.h>
#include <netdb.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>
#include <memory>
#include <optional>

#include "fuzz/fuzz.h"
#include "upgrade/download_url.h"
#include "upgrade/http_download.h"

using namespace fuzz;

constexpr size_t kMemory = 1 << 16;  // of a camera that has little

static std::string_view g_answer;
static size_t g_piece;

// The number that a text begins with, in decimal digits and however long; blanks and zeros in front do not count.
static std::string numberOf(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text[0]))) text.remove_prefix(1);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    std::string digits(text.begin(), std::ranges::find_if_not(text, isDigit));
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.empty() ? "0" : (isNegative ? "-" : "") + digits;
}

static void checkPort(const std::string& number, long port) {
    constexpr size_t kSafe = 18;  // digits that a long has room for
    if (number.size() <= kSafe)
        return require(std::to_string(port) == number, "a port is the number that stands there");
    require(number[0] == '-' ? port < 0 : port > 65535, "a number beyond all ports is none");
}

// `text` is from the host on.
static void checkUrl(const std::string& text, UrlResult result, const DownloadUrl& url) {
    const size_t colon = text.find(':');
    const size_t slash = text.find('/');
    if (colon == text.npos && slash == text.npos) return require(result == UrlResult::HostWithoutEnd, "host alone");
    const bool isCut = colon != text.npos && text.find('/', colon) == text.npos;
    require(result == (isCut ? UrlResult::Invalid : UrlResult::Complete), "a port is followed by a path");
    if (isCut) return;
    require(url.host == text.substr(0, colon != text.npos ? colon : slash), "the host is what stands in front");
    require(url.path == text.substr(slash), "the path is the rest");
    checkPort(colon != text.npos ? numberOf(std::string_view(text).substr(colon + 1)) : "443", url.port);
}

static void takeUrl(std::string_view text) {
    char url[256] = {};
    DownloadUrl out;
    text.copy(url, sizeof url);
    if (text.size() >= sizeof url && std::ranges::find(url, '\0') == std::end(url)) {
        return require(takeApart(url, out) == UrlResult::Invalid, "an address ends");
    }
    const std::string host = url;
    checkUrl(host, takeHostApart(host.c_str(), out), out);
    const UrlResult result = takeApart(url, out);
    std::string lower = host;
    for (char& letter : lower) letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter + 32 : letter);
    require(url == lower, "an address is in lower case");
    const size_t secure = lower.find("https://");
    const bool hasBoth = secure != lower.npos && lower.find("http://") != lower.npos;
    if (!hasBoth) return require(result == UrlResult::Invalid, "an address has both schemes");
    checkUrl(lower.substr(secure + 1), result, out);
}

// What the header announces; nothing when there is nothing to get.
static std::optional<std::string> lengthIn(const std::string& header) {
    if (header.size() < 4 || header.size() > 1023) return std::nullopt;
    const std::string status = header.size() > 8 ? header.substr(8).c_str() : "";
    if (numberOf(status) != "200") return std::nullopt;
    const std::string text = header.c_str();
    const size_t field = text.find("Content-Length:");
    if (field == text.npos) return std::nullopt;
    return numberOf(header.substr(std::min(field + 16, header.size())).c_str());
}

static void takeAnswer(std::string_view answer) {
    uint8_t* data = nullptr;
    const size_t end = answer.find("\r\n\r\n");
    const auto length = lengthIn(end == answer.npos ? "" : std::string(answer.substr(0, end + 4)));
    g_answer = answer;
    const int result = http_download("camera.example", 80, "/image", &data);
    const std::unique_ptr<uint8_t, decltype(&std::free)> kept(data, &std::free);
    const bool isTooLong = !length || length->size() > 6 || std::stol(*length) < 0;
    if (isTooLong) return require(result == -1, "what is refused is not got");
    const std::string_view body = answer.substr(end + 4);
    const auto size = static_cast<size_t>(std::stol(*length));
    const bool isWhole = body.size() >= size && size <= kMemory;
    require(result == (isWhole ? size > 0 ? 1 : 0 : -1), "a whole body is got, no other");
    if (isWhole) require(std::memcmp(data, body.data(), size) == 0, "a body is what was sent");
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input input(bytes, size);
    g_piece = input.byte();
    if (g_piece == 0) {
        takeUrl(input.rest());
    } else {
        takeAnswer(input.rest());
    }
    return 0;
}

extern "C" {

void* __real_calloc(size_t count, size_t size);

void* __wrap_calloc(size_t count, size_t size) { return count * size > kMemory ? nullptr : __real_calloc(count, size); }

hostent* __wrap_gethostbyname(const char*) {
    static char octets[] = {127, 0, 0, 1};
    static char* addresses[] = {octets, nullptr};
    static hostent host = {nullptr, nullptr, AF_INET, 4, addresses};
    return &host;
}

int __wrap_connect(int, const sockaddr*, socklen_t) { return 0; }
int __wrap_select(int, fd_set*, fd_set*, fd_set*, timeval*) { return 1; }
ssize_t __wrap_send(int, const void*, size_t length, int) { return static_cast<ssize_t>(length); }
unsigned __wrap_sleep(unsigned) { return 0; }

ssize_t __wrap_recv(int, void* data, size_t room, int) {
    const size_t length = g_answer.copy(static_cast<char*>(data), std::min(room, g_piece));
    g_answer.remove_prefix(length);
    return static_cast<ssize_t>(length);
}

}  // extern "C"
