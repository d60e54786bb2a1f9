// The system calls that this program's own code makes on files, caught at link time so that a test can make one fail,
// end the process at one, or slip something in before one.
#pragma once

#include <cerrno>
#include <cstddef>
#include <functional>
#include <string>

struct FileCalls {
    int endAt = 0;             // 1: the process ends instead of the first call; 0: never
    int failAt = 0;            // likewise, the call fails
    int error = 0;             // with this errno
    const char* missing = "";  // the file system does not have this call: EPERM
    int interruptAt = 0;       // likewise, by a signal if the call is a kind that can be
    std::function<void(const std::string& name)> before = nullptr;  // called before each call
    bool noSync = false;                                            // fsync does nothing, for tests with many writes
    bool noPause = false;                                           // nanosleep returns at once
    std::size_t mostBytes = 0;  // a write takes no more at once; 0: as many as it is given
};

// What a call on a file may say of the disk, the file system or this process; EINTR has a field of its own.
constexpr int kPlausibleErrors[] = {EIO, ENOSPC, EDQUOT, EROFS, EACCES, ENOMEM, EMFILE};

constexpr int kEndedAtCall = 77;  // exit status of a process that endAt ended

// While it lives, the calls are as it says; then they are the system's own again.
class CaughtFileCalls {
public:
    explicit CaughtFileCalls(FileCalls calls);
    ~CaughtFileCalls();
    int made() const;  // calls so far
    CaughtFileCalls(const CaughtFileCalls&) = delete;
    CaughtFileCalls& operator=(const CaughtFileCalls&) = delete;
};
