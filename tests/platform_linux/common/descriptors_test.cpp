// What the platform keeps open is kept once, and everything else is closed again.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include "common/run_program.h"
#include "common/small_file.h"
#include "platform.h"
#include "support/child_process.h"
#include "support/open_descriptors.h"
#include "support/temporary_folder.h"

// In a child: the socket that asks for addresses stays in the network in which it is opened.
TEST(Descriptors, AreClosedAgain) {
    TemporaryFolder folder;
    writeFile(folder / "list.ini", "[FCC]\nch1=1\n");
    const std::string list = folder / "list.ini";
    uint8_t address[6];
    char text[64];
    int number = 0;
    size_t length = 0;
    const char* const nothing[] = {"true", nullptr};
    const char* const noProgram[] = {"/no/such/program", nullptr};
    const std::function<void()> calls[] = {
        [&] { net_get_ifaddr("lo", address); },
        [&] { net_get_netmask("no-such-one", address); },
        [&] { net_get_gateway("lo", address); },
        [&] { net_get_hwaddr("lo", address); },
        [&] { net_get_dns(address); },
        [&] { net_get_dns2(address); },
        [&] { ListFree(CfgEnumSec(list.c_str())); },
        [&] { ListFree(CfgEnumField(list.c_str(), "none")); },
        [&] { SIReadInt(4, &number); },
        [&] { usrGetGroupName("root"); },
        [&] { readSmallFile(list.c_str(), text, sizeof text); },
        [&] { readSmallFile("/no/such/file", text, sizeof text); },
        [&] { readSmallFile(folder.path().c_str(), text, sizeof text); },
        [&] { runProgram(nothing, 30, text, sizeof text, length); },
        [&] { runProgram(noProgram, 30, text, sizeof text, length); },
    };
    const int status = inChild([&calls] {
        for (const auto& call : calls) call();
        const auto before = openDescriptors();
        int position = 0;
        for (const auto& call : calls) {
            for (int again = 0; again < 3; again++) call();
            EXPECT_EQ(openDescriptors(), before) << "call " << position;
            position++;
        }
    });
    EXPECT_EQ(status, 0);
}
