#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "faults.h"
#include "platform.h"

extern "C" {
int __real_SIReadInt(int slot, int* value);
int __wrap_SIReadInt(int slot, int* value);
int __real_SIWriteInt(int slot, int value);
int __wrap_SIWriteInt(int slot, int value);
int __real_HWMIB_getRegion(int* region);
int __wrap_HWMIB_getRegion(int* region);
}

static bool breaksWrite(const char* fault) { return isBroken("SIWriteInt", fault); }
static bool onMainThread() { return syscall(SYS_gettid) == getpid(); }

int __wrap_SIReadInt(int slot, int* value) {
    const int result = __real_SIReadInt(slot, value);
    if (result == 0 && isBroken("SIReadInt", "16 bits")) *value = static_cast<int16_t>(*value);
    return spoil("SIReadInt", result, value, sizeof *value);
}

// For a moment the slot is empty.
static int writeInSteps(int slot, int value) {
    char path[256];
    snprintf(path, sizeof path, "%s/%d", getenv("QVP_SYSINFO"), slot);
    unlink(path);
    usleep(1000);
    return __real_SIWriteInt(slot, value);
}

static int busy;

// One thread's write fails while another one's lasts.
static int writeAlone(int slot, int value) {
    if (__atomic_exchange_n(&busy, 1, __ATOMIC_ACQ_REL) != 0) return -1;
    usleep(1000);
    const int result = __real_SIWriteInt(slot, value);
    __atomic_store_n(&busy, 0, __ATOMIC_RELEASE);
    return result;
}

int __wrap_SIWriteInt(int slot, int value) {
    leakOf("SIWriteInt");
    if (breaksWrite("private")) return 0;
    if (breaksWrite("main thread only") && !onMainThread()) return -1;
    if (breaksWrite("own threads") && !onMainThread()) return 0;
    if (breaksWrite("in steps") && !onMainThread()) return writeInSteps(slot, value);
    if (breaksWrite("alone")) return writeAlone(slot, value);
    if (breaksWrite("spills")) __real_SIWriteInt(slot + 1, value);
    return resultOf("SIWriteInt", __real_SIWriteInt(slot, value));
}

int __wrap_HWMIB_getRegion(int* region) {
    const bool hasNone = isBroken("HWMIB_getRegion", "touches");
    return spoil("HWMIB_getRegion", hasNone ? -1 : __real_HWMIB_getRegion(region), region, sizeof *region);
}
