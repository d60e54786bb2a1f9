#include "upgrade/download_url.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

static constexpr long kDefaultPort = 443;

void str_to_lower(char* text) {
    if (text == nullptr) return;
    for (; *text != '\0'; text++) {
        if (*text >= 'A' && *text <= 'Z') *text = static_cast<char>(*text - 'A' + 'a');
    }
}

static void takeHost(const char* text, const char* end, DownloadUrl& out) {
    size_t length = static_cast<size_t>(end - text);
    memcpy(out.host, text, length);
    out.host[length] = '\0';
}

// A number beyond all ports stays beyond them: strtol ends at the largest long.
static bool takePort(const char* text, DownloadUrl& out) {
    out.port = strtol(text, nullptr, 10);
    return strchr(text, '/') != nullptr;
}

UrlResult takeHostApart(const char* text, DownloadUrl& out) {
    const char* slash = strchr(text, '/');
    const char* colon = strchr(text, ':');
    out.port = kDefaultPort;
    out.path = slash;
    if (colon == nullptr && slash == nullptr) return UrlResult::HostWithoutEnd;
    if (colon != nullptr && !takePort(colon + 1, out)) return UrlResult::Invalid;
    takeHost(text, colon != nullptr ? colon : slash, out);
    return UrlResult::Complete;
}

UrlResult takeApart(char (&url)[256], DownloadUrl& out) {
    if (memchr(url, '\0', sizeof url) == nullptr) return UrlResult::Invalid;
    str_to_lower(url);
    const char* secure = strstr(url, "https://");
    if (secure == nullptr || strstr(url, "http://") == nullptr) return UrlResult::Invalid;
    return takeHostApart(secure + 1, out);
}
