#include <limits.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static constexpr int kSlot = 4;
static constexpr int kOtherSlot = 5;
static constexpr int kValues[] = {1, 0, 2, 3, -1, INT_MIN, INT_MAX};

static Room room;

// An int at an address that suits it, guarded like any other variable.
static bool readSlot(int slot, int& value) {
    char what[32];
    snprintf(what, sizeof what, "slot %d", slot);
    struct {
        int before, value, behind;
    } guarded;
    memset(&guarded, 0xA5, sizeof guarded);
    const int result = SIReadInt(slot, &guarded.value);
    prepare(room, sizeof(int));
    memcpy(inside(room) - sizeof(int), &guarded, sizeof guarded);
    if (!holdsValue(room, result, what)) return false;
    value = guarded.value;
    return true;
}

static bool holds(int slot, int expected) {
    int value;
    return readSlot(slot, value) && value == expected;
}

// A slot's number before the checks, and that number again behind them.
struct Kept {
    int slot, value;
    bool exists;
};

static Kept keep(int slot) {
    Kept kept = {slot, 0, false};
    kept.exists = readSlot(slot, kept.value);
    return kept;
}

static void putBack(const Kept& kept) { SIWriteInt(kept.slot, kept.value); }

static void roundTrips() {
    for (int value : kValues) {
        inProcess([value] {
            const int result = SIWriteInt(kSlot, value);
            if (result != 0) fail("returns %d for %d", result, value);
        });
        inProcess([value] {
            if (!holds(kSlot, value)) fail("another process does not read the %d that was written", value);
        });
    }
}

void checkSIReadInt(const Settings& settings) {
    int value;
    const int slots[] = {0, kSlot, kOtherSlot, 1000000};
    for (int slot : slots) readSlot(slot, value);
    if (leavesDescriptors([] {
            int unused;
            SIReadInt(kSlot, &unused);
        })) {
        fail("leaves descriptors open");
    }
    if (!settings.integers) return note("what comes back of what was written: --integers");
    const Kept kept = keep(kSlot);
    roundTrips();
    putBack(kept);
}

static void* writeOnThread(void* result) {
    *static_cast<int*>(result) = SIWriteInt(kSlot, 2);
    return nullptr;
}

static void writeFromAThread() {
    pthread_t thread;
    int result = -1;
    if (pthread_create(&thread, nullptr, writeOnThread, &result) != 0) return fail("no thread for it");
    pthread_join(thread, nullptr);
    if (result != 0) fail("returns %d on the upgrade worker's thread", result);
    if (!holds(kSlot, 2)) fail("the number written on another thread is not read");
}

struct Race {
    int failures;
    bool isOver;
};

static void* writeInTurn(void* argument) {
    Race& race = *static_cast<Race*>(argument);
    for (int turn = 0; turn < 500; turn++) {
        if (SIWriteInt(kSlot, turn % 2 == 0 ? 1 : -2000000000) != 0) race.failures++;
    }
    __atomic_store_n(&race.isOver, true, __ATOMIC_RELEASE);
    return nullptr;
}

// While the worker writes, the main thread reads and writes too.
static void writeAndReadAtOnce() {
    pthread_t thread;
    Race race = {0, false};
    SIWriteInt(kSlot, 1);
    if (pthread_create(&thread, nullptr, writeInTurn, &race) != 0) return fail("no thread for it");
    int strange = 0;
    while (!__atomic_load_n(&race.isOver, __ATOMIC_ACQUIRE)) {
        int value = 0;
        if (!readSlot(kSlot, value) || (value != 1 && value != -2000000000)) strange++;
        if (SIWriteInt(kSlot, 1) != 0) race.failures++;
    }
    pthread_join(thread, nullptr);
    if (strange > 0) fail("%d reads during writes found neither number", strange);
    if (race.failures > 0) fail("%d of two threads' writes failed", race.failures);
}

void checkSIWriteInt(const Settings& settings) {
    if (!settings.integers) return skip("it changes the camera's shared integers (--integers)");
    const Kept kept = keep(kSlot);
    const Kept other = keep(kOtherSlot);
    roundTrips();
    const Kept now = keep(kOtherSlot);
    if (now.exists != other.exists || now.value != other.value) fail("another slot is not as it was");
    if (leavesDescriptors([] { SIWriteInt(kSlot, 0); })) fail("leaves descriptors open");
    writeFromAThread();
    if (!hasFailed()) writeAndReadAtOnce();
    putBack(kept);
}
