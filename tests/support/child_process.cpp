#include "support/child_process.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

constexpr int kNotAllowed = 77;

#ifdef QVP_COVERAGE
extern "C" void __gcov_dump();
static void writeCounts() { __gcov_dump(); }
#else
static void writeCounts() {}
#endif

void endChild(int status) {
    writeCounts();
    _exit(status);
}

int inChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        body();
        std::fflush(nullptr);
        endChild(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

static void writeMap(const char* name, unsigned id) { std::ofstream(name) << id << " " << id << " 1"; }

static bool enterNamespace() {
    const unsigned user = getuid(), group = getgid();
    if (unshare(CLONE_NEWNS) == 0) return true;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    writeMap("/proc/self/uid_map", user);
    writeMap("/proc/self/gid_map", group);
    return true;
}

static bool makeEtc(const char* folder) {
    return enterNamespace() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount(folder, "/etc", nullptr, MS_BIND, nullptr) == 0;
}

bool withPrivateEtc(const std::string& folder, const std::function<void()>& body) {
    const int status = inChild([&] {
        if (!makeEtc(folder.c_str())) _exit(kNotAllowed);
        body();
    });
    if (status == kNotAllowed) return false;
    EXPECT_EQ(status, 0) << "in the child with a private /etc";
    return true;
}
