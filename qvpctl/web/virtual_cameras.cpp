#include "qvpctl/web/virtual_cameras.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "client/error.h"

using client::Error;
using client::ErrorKind;

static constexpr char kProgram[] = "virtual-camera";

bool isOnVirtualLan() { return std::getenv("QVP_LAN") != nullptr; }

static bool isInstalled() {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string file = folder + "/" + kProgram;
        if (!std::filesystem::is_directory(file) && access(file.c_str(), X_OK) == 0) return true;
    }
    return false;
}

bool canStartVirtualCameras() { return !isOnVirtualLan() && isInstalled(); }

static std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

// With the signals as a program expects them.
static int start(std::vector<std::string> words, int errors, pid_t& process) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
    sigset_t none, pipe;
    sigemptyset(&none);
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &pipe);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&files, errors, STDERR_FILENO);
    const int error = posix_spawnp(&process, kProgram, &files, &attributes, pointersTo(words).data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return error;
}

static std::string lastLineOf(int memory) {
    std::string text(4096, '\0');
    const ssize_t length = pread(memory, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    while (text.ends_with('\n')) text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

void tryVirtualCameras() {
    const int errors = memfd_create("virtual-camera", MFD_CLOEXEC);
    pid_t process = 0;
    int status = 0;
    const int error = start({kProgram, "run", "-n", "0", "--", "true"}, errors, process);
    while (error == 0 && waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    const std::string why = lastLineOf(errors);
    close(errors);
    if (error != 0) throw client::localError("cannot start virtual-camera", error);
    if (status != 0) throw Error(ErrorKind::Local, "no virtual cameras here: " + why);
}

void becomeVirtualCameras(const std::vector<std::string>& words) {
    std::vector<std::string> all = {kProgram, "run", "-n", "3", "--", std::filesystem::read_symlink("/proc/self/exe")};
    all.insert(all.end(), words.begin(), words.end());
    signal(SIGPIPE, SIG_DFL);
    execvp(kProgram, pointersTo(all).data());
    throw client::localError("cannot start virtual-camera", errno);
}
