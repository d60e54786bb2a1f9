// A configuration store of the test's own, in a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform.h"
#include "support/temporary_folder.h"

// A store's bytes before and after INFO/Product is written.
inline const std::string kOld = "# factory\n[INFO]\nProduct=old\n\n[DDNS]\nUID=user\n";
inline const std::string kNew = "# factory\n[INFO]\nProduct=new\n\n[DDNS]\nUID=user\n";

class StoreTest : public testing::Test {
protected:
    StoreTest();
    ~StoreTest() override;

    std::string path() const { return (folder / "camera.ini").string(); }
    void put(const std::string& bytes) const { writeFile(path(), bytes); }
    std::string bytes() const { return readFile(path()); }

    TemporaryFolder folder;
};

// What cfgRead gives to a new request; nothing when it answers -1, which must leave the target as it was.
std::optional<std::string> storedText(const char* section, const char* key);
template <typename Number>
std::optional<Number> storedNumber(const char* section, const char* key) {
    constexpr Number kBefore = static_cast<Number>(0xA5);
    Number number = kBefore;
    requestBegins();
    if (cfgRead(section, key, &number) == 0) return number;
    EXPECT_EQ(number, kBefore);
    return std::nullopt;
}

int writeText(const char* section, const char* key, const std::string& text);
