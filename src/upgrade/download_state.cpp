#include "upgrade/download_state.h"

DownThreadState g_stDownThread;

int stop_download_file(DownThreadState* state) {
    if (state == nullptr) return -1;
    storeShared(state->stop_request, 1);
    return 0;
}

int get_download_file_status(const DownThreadState* state) {
    if (state == nullptr) return -1;
    return loadShared(state->status);
}
