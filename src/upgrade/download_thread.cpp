#include "upgrade/download_thread.h"

#include <pthread.h>
#include <signal.h>
#include <stdint.h>

#include "platform.h"
#include "system/shell.h"
#include "upgrade/download_url.h"
#include "upgrade/http_download.h"
#include "upgrade/install.h"

// `status` of the record.
static constexpr int kRunSucceeded = 0;
static constexpr int kRunStarted = 1;
static constexpr int kRunFailed = 2;

// What the two workers do differently.
struct Worker {
    int statusWhenStopped;
    int statusWithoutHostEnd;  // no ':' and no '/' behind the host
    bool publishesState;       // in the shared upgrade-state slot
    int (*install)(uint8_t* data, int32_t length);
};

static constexpr Worker kConfigurationWorker{kRunFailed, kRunStarted, false, decode_and_unpack_config};
static constexpr Worker kFirmwareWorker{kRunStarted, kRunFailed, true, verify_and_upgrade_firmware};

static void publish(const Worker& worker, int upgradeState) {
    if (worker.publishesState) SIWriteInt(kUpgradeStateSlot, upgradeState);
}

// Returns the status the run ends with; kRunStarted: given up without a word.
static int download(DownThreadState& state, const Worker& worker) {
    DownloadUrl url;
    switch (takeApart(state.url, url)) {
        case UrlResult::Complete:
            break;
        case UrlResult::Invalid:
            return kRunFailed;
        case UrlResult::HostWithoutEnd:
            return worker.statusWithoutHostEnd;
    }
    if (http_download(url.host, url.port, url.path, &state.data) != 0) return kRunFailed;
    return worker.install(state.data, state.data_length) == -1 ? kRunFailed : kRunSucceeded;
}

static void work(DownThreadState& state, const Worker& worker) {
    storeShared(state.status, kRunStarted);
    storeShared(state.busy, 1);
    bool stopped = loadShared(state.stop_request) != 0;
    int status = stopped ? worker.statusWhenStopped : download(state, worker);
    if (status == kRunSucceeded) publish(worker, kUpgradeDone);
    storeShared(state.status, status);
    if (stopped || status == kRunFailed) publish(worker, kUpgradeFailed);
    if (status == kRunSucceeded) shellOnWorker(kRebootCommand);
    storeShared(state.busy, 0);
}

static void* runConfigurationWorker(void* state) {
    work(*static_cast<DownThreadState*>(state), kConfigurationWorker);
    return nullptr;
}

static void* runFirmwareWorker(void* state) {
    work(*static_cast<DownThreadState*>(state), kFirmwareWorker);
    return nullptr;
}

// Every signal is the main thread's.
static void createBlocked(DownThreadState* state, const pthread_attr_t& attributes, void* (*run)(void*)) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pthread_create(&state->thread, &attributes, run, state);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

int start_download_thread(DownThreadState* state, const char* kind) {
    if (state == nullptr || loadShared(state->busy) != 0) return -1;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return -1;
    if (pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) != 0) {
        pthread_attr_destroy(&attributes);
        return -1;
    }
    storeShared(state->stop_request, 0);
    createBlocked(state, attributes, kind != nullptr ? runConfigurationWorker : runFirmwareWorker);
    return pthread_attr_destroy(&attributes) == 0 ? 0 : -1;
}
