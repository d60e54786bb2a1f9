#include "handlers/site_line.h"

#include <stddef.h>
#include <string.h>

#include "util/validators.h"

static constexpr ptrdiff_t kLongestLine = 1023;
static constexpr uint8_t kUnknown = 15;

static ptrdiff_t lineLength(const SiteText& text) {
    ptrdiff_t left = text.end - text.position;
    ptrdiff_t most = left < kLongestLine ? left : kLongestLine;
    const void* newline = memchr(text.position, '\n', static_cast<size_t>(most));
    return newline == nullptr ? most : static_cast<const char*>(newline) - text.position + 1;
}

// Copies what the line has of a column and ends it.
template <size_t Room>
static void takeColumn(char (&column)[Room], const char* line, ptrdiff_t length, ptrdiff_t position) {
    constexpr ptrdiff_t kWidth = Room - 1;
    memset(column, 0, Room);
    ptrdiff_t reached = length - position;
    if (reached > 0) {
        size_t most = static_cast<size_t>(reached < kWidth ? reached : kWidth);
        memcpy(column, line + position, strnlen(line + position, most));
    }
    rtrim(column, Room);
}

bool nextSiteLine(SiteText& text, SiteLine& line) {
    if (text.position >= text.end) return false;
    ptrdiff_t length = lineLength(text);
    takeColumn(line.channel, text.position, length, 0);
    takeColumn(line.ssid, text.position, length, 4);
    takeColumn(line.security, text.position, length, 57);
    takeColumn(line.signal, text.position, length, 80);
    takeColumn(line.networkType, text.position, length, 98);
    text.position += length;
    return true;
}

static uint8_t pskCipher(const char* column) {
    bool tkip = strstr(column, "TKIP") != nullptr;
    bool aes = strstr(column, "AES") != nullptr;
    if (tkip == aes) return 4;
    return tkip ? 2 : 3;
}

SiteSecurity classifySecurity(const char* column) {
    bool wpa1 = strstr(column, "WPA1PSK") != nullptr;
    bool wpa2 = strstr(column, "WPA2PSK") != nullptr;
    if (strstr(column, "NONE") != nullptr) return {0, 0};
    if (strstr(column, "WEP") != nullptr) return {0, 1};
    if (strstr(column, "WPAPSK") != nullptr) return {3, pskCipher(column)};
    if (wpa1 && wpa2) return {5, pskCipher(column)};
    if (wpa1) return {kUnknown, kUnknown};
    if (wpa2) return {4, pskCipher(column)};
    return {kUnknown, kUnknown};
}
