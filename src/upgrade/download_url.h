// Taking a download address apart, the way upgrade servers have come to write theirs.
#pragma once

struct DownloadUrl {
    char host[256];  // as long as the longest text taken apart
    long port;
    const char* path;  // in the text taken apart
};

enum class UrlResult {
    Complete,
    Invalid,
    HostWithoutEnd,  // neither ':' nor '/' behind the host
};

// Lower-cases `url` (256 bytes) in place and takes it apart. It must hold both "https://" and "http://"; the host
// starts one character behind the start of "https://".
UrlResult takeApart(char (&url)[256], DownloadUrl& out);

// The same from the host on, a text of at most 255 bytes: "host:port/path", or "host/path" for port 443. The port is
// the decimal number that its text begins with, however long, and 0 when it begins with none; a port too large for a
// long is the largest long. A port without a '/' behind it is invalid.
UrlResult takeHostApart(const char* text, DownloadUrl& out);

// Lower-cases every byte in place; null is left alone.
void str_to_lower(char* text);
