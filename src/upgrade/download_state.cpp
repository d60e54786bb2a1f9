#include "upgrade/download_state.h"

DownThreadState g_stDownThread;

int stop_download_file(DownThreadState* state) {
    if (state == nullptr) return -1;
    __atomic_store_n(&state->stop_request, uint8_t{1}, __ATOMIC_RELEASE);
    return 0;
}

int get_download_file_status(const DownThreadState* state) {
    if (state == nullptr) return -1;
    return __atomic_load_n(&state->status, __ATOMIC_ACQUIRE);
}
