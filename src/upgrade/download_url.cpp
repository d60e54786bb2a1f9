#include "upgrade/download_url.h"

#include <stdlib.h>
#include <string.h>

static constexpr long kDefaultPort = 443;
static constexpr size_t kLongestPort = 15;

void str_to_lower(char* text) {
    if (text == nullptr) return;
    for (; *text != '\0'; text++) {
        if (*text >= 'A' && *text <= 'Z') *text = static_cast<char>(*text - 'A' + 'a');
    }
}

static bool takeHost(const char* text, const char* end, DownloadUrl& out) {
    size_t length = static_cast<size_t>(end - text);
    if (length >= sizeof out.host) return false;
    memcpy(out.host, text, length);
    out.host[length] = '\0';
    return true;
}

static bool takePort(const char* text, DownloadUrl& out) {
    const char* end = strchr(text, '/');
    if (end == nullptr || static_cast<size_t>(end - text) > kLongestPort) return false;
    out.port = strtol(text, nullptr, 10);
    return true;
}

UrlResult takeHostApart(const char* text, DownloadUrl& out) {
    const char* slash = strchr(text, '/');
    const char* colon = strchr(text, ':');
    out.port = kDefaultPort;
    out.path = slash;
    if (colon == nullptr && slash == nullptr) return UrlResult::HostWithoutEnd;
    if (colon != nullptr && !takePort(colon + 1, out)) return UrlResult::Invalid;
    return takeHost(text, colon != nullptr ? colon : slash, out) ? UrlResult::Complete : UrlResult::Invalid;
}

UrlResult takeApart(char (&url)[256], DownloadUrl& out) {
    if (url[0] == '\0' || memchr(url, '\0', sizeof url) == nullptr) return UrlResult::Invalid;
    str_to_lower(url);
    const char* secure = strstr(url, "https://");
    if (secure == nullptr || strstr(url, "http://") == nullptr) return UrlResult::Invalid;
    return takeHostApart(secure + 1, out);
}
