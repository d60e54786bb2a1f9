// A worker's record, runs of the worker on it, and what it did, each test on a fresh camera and network.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "fake_platform.h"
#include "upgrade/download_state.h"
#include "upgrade/network_calls.h"

namespace worker {

enum class Kind { Configuration, Firmware };

inline const Kind kBothKinds[] = {Kind::Configuration, Kind::Firmware};

const char* nameOf(Kind kind);

// A URL that the worker takes: host "ttps", port 0, path "//camera/http://file".
inline constexpr char kGoodUrl[] = "https://camera/http://file";

void setUrl(DownThreadState& state, const std::string& url);

int start(DownThreadState& state, Kind kind);

// Events of the worker's outside effects: the network, the installation, slots, commands and waits.
fake::Events effects();

class Fresh : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

class WorkerTest : public Fresh {
protected:
    void TearDown() override;

    // Starts the worker and waits for its end.
    void run(Kind kind);
    void waitForEnd(int threads = 1);

    std::uint8_t busy() const { return loadShared(state.busy); }
    std::int32_t status() const { return get_download_file_status(&state); }

    DownThreadState state{};
};

// A buffer as a download leaves it, to be found, kept or freed by the next. It begins with kOldByte.
std::uint8_t* oldDownload();
constexpr std::uint8_t kOldByte = 0xD1;

// The buffer that http_download() finds and what it leaves, freed at the end.
struct Downloaded {
    Downloaded() = default;
    ~Downloaded();
    Downloaded(const Downloaded&) = delete;
    Downloaded& operator=(const Downloaded&) = delete;

    std::uint8_t* data = oldDownload();
    int result = 0;

    bool isOld() const { return data != nullptr && data[0] == kOldByte; }
    bool isNew() const { return data != nullptr && data[0] != kOldByte; }
    std::string text(std::size_t length) const { return {reinterpret_cast<const char*>(data), length}; }
};

}  // namespace worker
