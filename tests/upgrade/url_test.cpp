// Taking download addresses apart.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "upgrade/download_url.h"

namespace {

std::string repeated(std::size_t count, char character) { return std::string(count, character); }

struct HostRow {
    const char* name;
    std::string text;
    UrlResult result;
    std::string host;
    long port;
    std::string path;
};

const HostRow kHostRows[] = {
    {"no port", "camera/x", UrlResult::Complete, "camera", 443, "/x"},
    {"no port, path of one byte", "camera/", UrlResult::Complete, "camera", 443, "/"},
    {"no host", "/x", UrlResult::Complete, "", 443, "/x"},
    {"port", "camera:8080/x/y", UrlResult::Complete, "camera", 8080, "/x/y"},
    {"port without host", ":80/x", UrlResult::Complete, "", 80, "/x"},
    {"empty port", "camera:/x", UrlResult::Complete, "camera", 0, "/x"},
    {"no digit in the port", "camera:abc/x", UrlResult::Complete, "camera", 0, "/x"},
    {"text behind the port", "camera:80abc/x", UrlResult::Complete, "camera", 80, "/x"},
    {"signed port", "camera:-5/x", UrlResult::Complete, "camera", -5, "/x"},
    {"octal-looking port", "camera:010/x", UrlResult::Complete, "camera", 10, "/x"},
    {"hexadecimal-looking port", "camera:0x10/x", UrlResult::Complete, "camera", 0, "/x"},
    {"second colon", "camera:80:90/x", UrlResult::Complete, "camera", 80, "/x"},
    {"what is left of a scheme", "ttps://camera:80/x", UrlResult::Complete, "ttps", 0, "//camera:80/x"},
    {"colon behind the first slash", "camera/a:90/b", UrlResult::Complete, "camera/a", 90, "/a:90/b"},
    {"colon behind the last slash", "camera/a:90", UrlResult::Invalid, "", 0, ""},
    {"port without a path", "camera:80", UrlResult::Invalid, "", 0, ""},
    {"neither port nor path", "camera", UrlResult::HostWithoutEnd, "", 0, ""},
    {"nothing", "", UrlResult::HostWithoutEnd, "", 0, ""},
    {"port of 16 bytes", "camera:0000000000000080/x", UrlResult::Complete, "camera", 80, "/x"},
    {"port of 246 bytes", "camera:" + repeated(244, '0') + "80/x", UrlResult::Complete, "camera", 80, "/x"},
    {"letters as a port of 246 bytes", "camera:" + repeated(246, 'a') + "/x", UrlResult::Complete, "camera", 0, "/x"},
    {"host of 253 bytes", repeated(253, 'h') + "/x", UrlResult::Complete, repeated(253, 'h'), 443, "/x"},
    {"host of 254 bytes, path of one", repeated(254, 'h') + "/", UrlResult::Complete, repeated(254, 'h'), 443, "/"},
    {"host of 250 bytes with a port", repeated(250, 'h') + ":80/x", UrlResult::Complete, repeated(250, 'h'), 80, "/x"},
};

TEST(Url, IsTakenApartFromTheHostOn) {
    for (const HostRow& row : kHostRows) {
        SCOPED_TRACE(row.name);
        DownloadUrl url{};
        ASSERT_EQ(takeHostApart(row.text.c_str(), url), row.result);
        if (row.result != UrlResult::Complete) continue;
        EXPECT_EQ(url.host, row.host);
        EXPECT_EQ(url.port, row.port);
        EXPECT_EQ(url.path, row.path);
    }
}

// A port that no variable holds is out of range, never one that wrapped around into it.
TEST(Url, PortOutOfEveryRangeStaysOutOfRange) {
    for (const std::string& text :
         {std::string("h:65536/x"), std::string("h:4294967376/x"), std::string("h:18446744073709551696/x"),
          "h:" + repeated(250, '9') + "/x", "h:-" + repeated(250, '9') + "/x"}) {
        DownloadUrl url{};
        ASSERT_EQ(takeHostApart(text.c_str(), url), UrlResult::Complete) << text;
        EXPECT_TRUE(url.port < 0 || url.port > 65535) << text << ": " << url.port;
    }
}

TEST(Url, WithoutItsEndIsInvalid) {
    char text[256];
    std::memset(text, 'h', sizeof text);
    std::memcpy(text, "https://http://", 15);
    DownloadUrl url{};
    EXPECT_EQ(takeApart(text, url), UrlResult::Invalid);
    text[255] = '\0';
    EXPECT_EQ(takeApart(text, url), UrlResult::Complete);
}

TEST(Url, LowerCaseIsMadeInPlace) {
    std::string every;
    for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
    std::string lowered = every;
    for (std::size_t letter = 0; letter < 26; ++letter) lowered[64 + letter] = static_cast<char>('a' + letter);
    str_to_lower(every.data());
    EXPECT_EQ(every, lowered);
    str_to_lower(nullptr);
}

}  // namespace
