#include "store/store_fixture.h"

#include <cstdlib>
#include <cstring>

StoreTest::StoreTest() { setenv("QVP_STORE", path().c_str(), 1); }

StoreTest::~StoreTest() { unsetenv("QVP_STORE"); }

std::optional<std::string> storedText(const char* section, const char* key) {
    char text[256];
    memset(text, 0x5A, sizeof text);
    requestBegins();
    if (cfgRead(section, key, text) == 0) return std::string(text, strnlen(text, sizeof text));
    EXPECT_EQ(std::string(text, sizeof text), std::string(256, 0x5A));
    return std::nullopt;
}

int writeText(const char* section, const char* key, const std::string& text) {
    return cfgWrite(section, key, text.c_str(), 1);
}
