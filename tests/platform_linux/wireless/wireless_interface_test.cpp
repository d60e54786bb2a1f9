#include "wireless/wireless_interface.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(WirelessInterface, IsTheFirstThatHasAWirelessFolder) {
    TemporaryFolder folder;
    const std::string devices = (folder / "dev").string(), classes = (folder / "net").string();
    writeFile(devices,
              "Inter-|   Receive                 |  Transmit\n"
              " face |bytes    packets errs drop |bytes    packets errs\n"
              "    lo:    1290      14    0    0     1290\n"
              "  eth0: 1 2 3\n wlan1:1 2\n  wlan0: 1 2 3\n");
    char name[IFNAMSIZ] = "";
    for (const char* interface : {"lo", "eth0", "wlan0", "wlan1"}) {
        fs::create_directories(fs::path(classes) / interface);
    }
    EXPECT_FALSE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    fs::create_directory(fs::path(classes) / "wlan0/wireless");
    EXPECT_TRUE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    EXPECT_STREQ(name, "wlan0");
    fs::create_directory(fs::path(classes) / "wlan1/phy80211");
    EXPECT_TRUE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    EXPECT_STREQ(name, "wlan1");
    fs::create_directories(fs::path(classes) / "face/wireless");  // a word of the heading
    EXPECT_TRUE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    EXPECT_STREQ(name, "wlan1");
    EXPECT_FALSE(firstWirelessInterface("/nowhere", classes.c_str(), name));
}
