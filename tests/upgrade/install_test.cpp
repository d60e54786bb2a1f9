// What becomes of a download: the configuration archive, the firmware image.
#include "upgrade/install.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/captured_stderr.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::IsEmpty;

using Install = Fresh;

std::uint8_t g_data[16];

TEST_F(Install, NothingToInstall) {
    for (const std::int32_t length : {0, -1, INT32_MIN}) {
        EXPECT_EQ(decode_and_unpack_config(g_data, length), -1);
        EXPECT_EQ(verify_and_upgrade_firmware(g_data, length), -1);
    }
    EXPECT_EQ(decode_and_unpack_config(nullptr, 16), -1);
    EXPECT_EQ(verify_and_upgrade_firmware(nullptr, 16), -1);
    EXPECT_THAT(effects(), IsEmpty());
}

struct ConfigurationRow {
    int decoded, unpacked, result;
    fake::Events events;
};

const ConfigurationRow kConfigurations[] = {
    {1, 0, 0, {"cfgAesDecode 16", "unpackCFG 16"}},
    {9, 0, 0, {"cfgAesDecode 16", "unpackCFG 16"}},
    {1, 1, -1, {"cfgAesDecode 16", "unpackCFG 16"}},
    {1, -1, -1, {"cfgAesDecode 16", "unpackCFG 16"}},
    {0, 0, -1, {"cfgAesDecode 16"}},
    {-1, 0, -1, {"cfgAesDecode 16"}},
};

TEST_F(Install, ConfigurationIsDecodedThenUnpacked) {
    for (const ConfigurationRow& row : kConfigurations) {
        SCOPED_TRACE(std::to_string(row.decoded) + " " + std::to_string(row.unpacked));
        fake::clearEvents();
        fake::camera().decodeResult = row.decoded;
        fake::camera().unpackResult = row.unpacked;
        EXPECT_EQ(decode_and_unpack_config(g_data, 16), row.result);
        EXPECT_EQ(fake::events(), row.events);
    }
}

const fake::Events kWholeUpgrade = {
    "VerifyFWCode 16",
    "execv /bin/sh sh -c /etc/init.d/stop_daemon_when_fwup.sh 2>/dev/null 1>/dev/null",
    "sleep 1",
    "execv /bin/sh sh -c /usr/sbin/twinkling 2>/dev/null 1>/dev/null&",
    "execv /bin/sh sh -c /usr/sbin/userconfig -backup /mnt/flash/config/restore.ini 2>/dev/null 1>/dev/null",
    "UpgradeFWCode 16",
};

struct FirmwareRow {
    int verdict, upgraded, result;
};

const FirmwareRow kFirmware[] = {
    {0, 0, 0}, {0, 1, -1}, {0, -1, -1}, {3, 0, 0}, {3, 1, -1}, {-2, 0, 0}, {-1, 0, -1}, {1, 0, -1}, {2, 0, -1},
};

bool isRefused(int verdict) { return verdict == -1 || verdict == 1 || verdict == 2; }

TEST_F(Install, FirmwareIsVerifiedThenWritten) {
    for (const FirmwareRow& row : kFirmware) {
        SCOPED_TRACE(std::to_string(row.verdict) + " " + std::to_string(row.upgraded));
        fake::clearEvents();
        fake::camera().verifyResult = row.verdict;
        fake::camera().upgradeResult = row.upgraded;
        const unit::CapturedStderr captured;
        EXPECT_EQ(verify_and_upgrade_firmware(g_data, 16), row.result);
        EXPECT_EQ(fake::events(), isRefused(row.verdict) ? fake::Events{"VerifyFWCode 16"} : kWholeUpgrade);
        EXPECT_EQ(captured.text(), isRefused(row.verdict) ? ""
                                                          : "kill the daemons that may effect firmware upgrading\n"
                                                            "start firmware upgrading\n");
    }
}

// While it is captured, standard error can be read back. A command's child has no other descriptor to read it by.
long linesOnStandardError() {
    char text[4096];
    const ssize_t length = pread(STDERR_FILENO, text, sizeof text, 0);
    return length < 0 ? -1 : std::count(text, text + length, '\n');
}

// How many lines stood there at each step.
TEST_F(Install, FirmwareLinesStandBeforeWhatTheyAnnounce) {
    const unit::CapturedStderr captured;
    std::function<void()> note = [&] {
        fake::record("lines " + std::to_string(linesOnStandardError()));
        fake::onEvent("", note);
    };
    fake::onEvent("", note);
    ASSERT_EQ(verify_and_upgrade_firmware(g_data, 16), 0);
    EXPECT_EQ(fake::eventsOf({"lines"}),
              (fake::Events{"lines 0", "lines 1", "lines 1", "lines 1", "lines 1", "lines 2"}));
}

}  // namespace
}  // namespace worker
