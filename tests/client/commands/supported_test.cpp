#include "client/commands/supported.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(Supported, ListsTheSlotsThatAreUsed) {
    Bytes reply = replyTo(0x00A5, 262);
    put(reply, 22, {0xA8, 0x00, 0, 0, 0x03, 0x01});
    put(reply, 260, {0x00, 0x02});
    EXPECT_EQ(decodeSupported(reply), (std::vector<uint16_t>{0x00A8, 0x0103, 0x0200}));
    EXPECT_TRUE(decodeSupported(replyTo(0x00A5, 262)).empty());
    EXPECT_THROW(decodeSupported(replyTo(0x00A5, 261)), std::length_error);
}

TEST(Supported, KnowsEveryCommandByName) {
    const std::pair<uint16_t, std::string> rows[] = {
        {0x00A0, "presence report"},
        {0x00A1, "discovery"},
        {0x00A2, "set basic information"},
        {0x00A3, "user verification"},
        {0x00A4, "change administrator password"},
        {0x00A5, "supported-function query"},
        {0x00A6, "get advanced network settings"},
        {0x00A7, "set advanced network settings"},
        {0x00A8, "get wireless settings"},
        {0x00A9, "set wireless settings"},
        {0x00AA, ""},
        {0x00AB, "factory reset"},
        {0x00AC, "get date and time"},
        {0x00AD, "set date and time"},
        {0x00AE, "fetch the site survey"},
        {0x00AF, "get simple wireless settings"},
        {0x00B0, "set simple wireless settings"},
        {0x00B1, "start a site survey"},
        {0x00C0, "commit settings"},
        {0x0103, "reboot"},
        {0x0200, "alert information"},
        {0xFFFF, ""},
    };
    for (const auto& [opcode, name] : rows) EXPECT_EQ(commandName(opcode), name) << opcode;
}
