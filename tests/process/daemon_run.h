// The whole daemon, main() and all, in a child process on the scripted network.
#pragma once

#include <string>
#include <vector>

#include "fake_platform.h"
#include "scripted_network.h"
#include "support/handler_test.h"

namespace unit {

struct DaemonRun {
    int status;  // exit status; 1000 and the number when a signal ended it
    std::string standardError;
    std::vector<std::string> trace;  // the same by lines

    // The service's own lines and the shell's, without those that every handler writes.
    std::vector<std::string> serviceTrace() const;
};

// Runs it with these arguments (the program's name stands in front) and without these descriptors; the script of
// scripted_network.h must be there.
DaemonRun runDaemon(const std::vector<std::string>& arguments = {"eth0"}, const std::vector<int>& closed = {});

// What a function of the daemon's gives instead of doing its work, as the linker puts it in.
struct Substitutes {
    bool primaryInitFails = false, landapInitFails = false;
    bool siteSurvey = false;  // the two below stand in for both families' pair
    int checkResult = 0, accepted = 0;
    std::vector<int> fillResults;  // of one call after the other; then -1
};

Substitutes& substitutes();

class DaemonTest : public testing::Test {
protected:
    void SetUp() override;
};

}  // namespace unit
