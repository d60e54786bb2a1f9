#include "qvpctl/stop_signal.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "client/error.h"

StopSignal::StopSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, &before_);
    descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) {
        throw client::localError("cannot wait for signals", errno);
    }
}

StopSignal::~StopSignal() {
    signalfd_siginfo taken;
    while (read(descriptor_, &taken, sizeof taken) > 0) continue;
    close(descriptor_);
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}
