#include "support/file_calls.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

static bool g_caught = false;
static int g_made = 0;
static FileCalls g_calls;

CaughtFileCalls::CaughtFileCalls(FileCalls calls) {
    g_calls = std::move(calls);
    g_made = 0;
    g_caught = true;
}

CaughtFileCalls::~CaughtFileCalls() { g_caught = false; }

int CaughtFileCalls::made() const { return g_made; }

static bool isSlow(const std::string& name) { return name == "read" || name == "write" || name == "flock"; }

// False when the call shall fail.
static bool allow(const char* name) {
    if (!g_caught) return true;
    ++g_made;
    if (g_made == g_calls.endAt) _exit(kEndedAtCall);
    if (g_made == g_calls.failAt) {
        errno = g_calls.error;
        return false;
    }
    if (std::string(name) == g_calls.missing) {
        errno = EPERM;
        return false;
    }
    if (g_made == g_calls.interruptAt && isSlow(name)) {
        errno = EINTR;
        return false;
    }
    if (g_calls.before) {
        g_caught = false;  // what the test does itself is not caught
        g_calls.before(name);
        g_caught = true;
    }
    return true;
}

// The names with 64 are those of a build with 64-bit file offsets.
#define CATCH(result, name, parameters, arguments) \
    extern "C" result __real_##name parameters;    \
    extern "C" result __wrap_##name parameters;    \
    extern "C" result __wrap_##name parameters { return allow(#name) ? __real_##name arguments : result{-1}; }

CATCH(int, fstat, (int descriptor, void* status), (descriptor, status))
CATCH(int, fstat64, (int descriptor, void* status), (descriptor, status))
CATCH(int, fstatat, (int folder, const char* path, void* status, int flags), (folder, path, status, flags))
CATCH(int, fstatat64, (int folder, const char* path, void* status, int flags), (folder, path, status, flags))
CATCH(ssize_t, read, (int descriptor, void* bytes, size_t length), (descriptor, bytes, length))
CATCH(ssize_t, readlink, (const char* path, char* target, size_t size), (path, target, size))
CATCH(int, poll, (pollfd * descriptors, nfds_t count, int timeout), (descriptors, count, timeout))
CATCH(int, flock, (int descriptor, int operation), (descriptor, operation))
CATCH(int, fchmod, (int descriptor, mode_t mode), (descriptor, mode))
CATCH(int, fchown, (int descriptor, uid_t user, gid_t group), (descriptor, user, group))
CATCH(int, fchownat, (int folder, const char* path, uid_t user, gid_t group, int flags),
      (folder, path, user, group, flags))
CATCH(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags))
CATCH(ssize_t, readlinkat, (int folder, const char* path, char* target, size_t size), (folder, path, target, size))
CATCH(int, symlinkat, (const char* target, int folder, const char* path), (target, folder, path))
CATCH(int, linkat, (int folder, const char* path, int newFolder, const char* newPath, int flags),
      (folder, path, newFolder, newPath, flags))
CATCH(int, renameat, (int folder, const char* path, int newFolder, const char* newPath),
      (folder, path, newFolder, newPath))

// None of the calls that are counted.
extern "C" int __real_nanosleep(const timespec* pause, timespec* left);
extern "C" int __wrap_nanosleep(const timespec* pause, timespec* left);
extern "C" int __wrap_nanosleep(const timespec* pause, timespec* left) {
    return g_caught && g_calls.noPause ? 0 : __real_nanosleep(pause, left);
}

extern "C" int __real_fsync(int descriptor);
extern "C" int __wrap_fsync(int descriptor);
extern "C" int __wrap_fsync(int descriptor) {
    if (!allow("fsync")) return -1;
    return g_caught && g_calls.noSync ? 0 : __real_fsync(descriptor);
}

// A close that fails has closed the descriptor all the same.
extern "C" int __real_close(int descriptor);
extern "C" int __wrap_close(int descriptor);
extern "C" int __wrap_close(int descriptor) {
    const bool allowed = allow("close");
    const int error = errno;
    const int result = __real_close(descriptor);
    errno = error;
    return allowed ? result : -1;
}

extern "C" ssize_t __real_write(int descriptor, const void* bytes, size_t length);
extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t length);
extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t length) {
    if (!allow("write")) return -1;
    const bool cut = g_caught && g_calls.mostBytes > 0;
    return __real_write(descriptor, bytes, cut ? std::min(length, g_calls.mostBytes) : length);
}

// Handing on a mode that was not given does no harm: it is looked at with O_CREAT only.
static mode_t modeOf(va_list arguments, int flags) { return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0; }

#define CATCH_OPEN(name)                                             \
    extern "C" int __real_##name(const char* path, int flags, ...);  \
    extern "C" int __wrap_##name(const char* path, int flags, ...);  \
    extern "C" int __wrap_##name(const char* path, int flags, ...) { \
        va_list arguments;                                           \
        va_start(arguments, flags);                                  \
        const mode_t mode = modeOf(arguments, flags);                \
        va_end(arguments);                                           \
        return allow(#name) ? __real_##name(path, flags, mode) : -1; \
    }

#define CATCH_OPENAT(name)                                                       \
    extern "C" int __real_##name(int folder, const char* path, int flags, ...);  \
    extern "C" int __wrap_##name(int folder, const char* path, int flags, ...);  \
    extern "C" int __wrap_##name(int folder, const char* path, int flags, ...) { \
        va_list arguments;                                                       \
        va_start(arguments, flags);                                              \
        const mode_t mode = modeOf(arguments, flags);                            \
        va_end(arguments);                                                       \
        return allow(#name) ? __real_##name(folder, path, flags, mode) : -1;     \
    }

CATCH_OPEN(open)
CATCH_OPEN(open64)
CATCH_OPENAT(openat)
CATCH_OPENAT(openat64)
