#include "system/trace_output.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

enum class Way { Write, Send, WriteIfReady };

// For the way Write it is a file, or a descriptor of the daemon's own that does not wait.
static int g_nOutput = STDERR_FILENO;
static Way g_nWay = Way::Write;

// What is to be told before the next line.
static uint32_t g_uDropped;
static uint32_t g_uIsCut;

// Room for a part of a pipe or terminal is room for a line.
static bool isReady() {
    pollfd output = {g_nOutput, POLLOUT, 0};
    return poll(&output, 1, 0) > 0;
}

static ssize_t writeSome(const char* text, size_t length) {
    if (g_nWay == Way::Send) return send(g_nOutput, text, length, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (g_nWay == Way::Write || isReady()) return write(g_nOutput, text, length);
    errno = EAGAIN;
    return -1;
}

// Nobody takes it now, and somebody may later: a reader that wakes up, a disk that is cleared.
static bool isWithoutRoom(int reason) {
    return reason == EAGAIN || reason == ENOSPC || reason == EDQUOT || reason == EFBIG;
}

// False when there was no room; `written` is what the first attempt has come to. Where nobody can read it any more,
// there is nothing to tell later.
static bool putRest(const char* text, size_t length, ssize_t written) {
    const char* left = text;
    const char* const end = text + length;
    for (;; written = writeSome(left, static_cast<size_t>(end - left))) {
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && isWithoutRoom(errno)) {
            if (left != text) __atomic_store_n(&g_uIsCut, uint32_t{1}, __ATOMIC_RELAXED);
            return false;
        }
        if (written <= 0) return true;
        left += written;
        if (left == end) return true;
    }
}

static bool putWhole(const char* text, size_t length) { return putRest(text, length, writeSome(text, length)); }

static bool tellDropped() {
    char line[80];
    const uint32_t dropped = __atomic_load_n(&g_uDropped, __ATOMIC_RELAXED);
    const bool isCut = __atomic_exchange_n(&g_uIsCut, uint32_t{0}, __ATOMIC_RELAXED) != 0;
    const int length = snprintf(line, sizeof line, "%sqvp: lines of trace dropped because nobody took them: %u\n",
                                isCut ? "\n" : "", dropped);
    if (!putWhole(line, static_cast<size_t>(length))) {
        if (isCut) __atomic_store_n(&g_uIsCut, uint32_t{1}, __ATOMIC_RELAXED);
        return false;
    }
    __atomic_sub_fetch(&g_uDropped, dropped, __ATOMIC_RELAXED);
    return true;
}

static void drop() { __atomic_add_fetch(&g_uDropped, 1, __ATOMIC_RELAXED); }

// Apart from what every line takes.
[[gnu::noinline]] static void putSlowly(const char* line, size_t length, ssize_t written) {
    if (!putRest(line, length, written)) drop();
}

[[gnu::noinline]] static void putAfterDropped(const char* line, size_t length) {
    if (!tellDropped() || !putWhole(line, length)) drop();
}

void putTrace(const char* line, size_t length) {
    if (__atomic_load_n(&g_uDropped, __ATOMIC_RELAXED) != 0) return putAfterDropped(line, length);
    const ssize_t written = g_nWay == Way::Write ? write(g_nOutput, line, length) : writeSome(line, length);
    if (written != static_cast<ssize_t>(length)) putSlowly(line, length, written);
}

// A file never waits, and its place in it is shared with others who write. Not O_NONBLOCK on standard error itself: a
// shell that has the same terminal would have it, too.
void openTraceOutput() {
    struct stat file;
    if (fstat(STDERR_FILENO, &file) != 0 || S_ISREG(file.st_mode)) return;
    if (S_ISSOCK(file.st_mode)) {
        g_nWay = Way::Send;
        return;
    }
    const int own = open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own >= 0) {
        g_nOutput = own;
    } else {
        g_nWay = Way::WriteIfReady;
    }
}
