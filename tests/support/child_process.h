// Parts of a test in a process of their own.
#pragma once

#include <functional>
#include <string>

// Ends a child process at once, which leaves the parent's buffers and exit handlers alone. What it has reached counts
// for the coverage.
[[noreturn]] void endChild(int status);

// Exit status of a child process that runs `body`: 0 when it returns without a failure, 1 with one, -1 when the process
// did not end by itself.
int inChild(const std::function<void()>& body);

// Runs `body` in a child process that has `folder` as its /etc, which must not fail. Returns false where the
// kernel does not allow that.
bool withPrivateEtc(const std::string& folder, const std::function<void()>& body);
