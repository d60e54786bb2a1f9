// Fixtures for handlers called one at a time on a camera with interface eth0, MAC 02:00:5E:10:20:30, address
// 192.168.0.20 and the administrator admin / secret.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_platform.h"
#include "support/command_table.h"
#include "support/packet.h"

namespace unit {

// What a handler did with one request.
struct Outcome {
    int length;
    Bytes reply;  // the whole buffer it was given
    std::vector<std::string> trace;
};

// Calls a handler with a request in 1024 bytes and a zeroed buffer of exactly that capacity.
Outcome call(Handler handler, const Bytes& request, int capacity = 1024);

// A request for this device, 1024 bytes, zero behind what is put in: magic, sequence 0x1234, the device's MAC, and the
// administrator's credentials where the command needs them.
Packet request(const CommandRow& row);

// A request's header only, as the shortest datagram.
Bytes headerOnly(const CommandRow& row);

// The reply that such a request gets with status 0 and a zero payload.
Packet reply(const CommandRow& row);

// The reply's length, its every byte, and zeros in the buffer behind it.
testing::AssertionResult replies(const Packet& expected, const Outcome& outcome);

// No reply: -1 and an untouched buffer.
testing::AssertionResult silent(const Outcome& outcome);

// "[prefix][source][function][Line: n]", with the family's prefix and source.
bool isTraceLine(const std::string& line, const Family& family, const std::string& function);

// One trace line a count, each the handler's.
testing::AssertionResult traces(const CommandRow& row, std::size_t count, const Outcome& outcome);

// Names of the flags that are not 0, with their values: "g_nReboot=1".
std::vector<std::string> raisedFlags();
void clearFlags();

// Fills the fake with that camera.
void seedCamera();

class HandlerTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

// The same for a test that runs in both families: handlers by name.
class BothFamilies : public HandlerTest, public testing::WithParamInterface<const Family*> {
protected:
    const CommandRow& row(const std::string& name) const { return command(*GetParam(), name); }
};

// Names of the instances of parametrised tests.
std::string rowName(const testing::TestParamInfo<CommandRow>& info);
std::string familyName(const testing::TestParamInfo<const Family*>& info);

// Compiled once: a generator takes longer to compile than the tests it is for.
decltype(testing::ValuesIn(std::vector<const Family*>())) bothFamilies();

}  // namespace unit
