#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static constexpr size_t kJunk = 4096;

static Room room;

// What the upgrade worker does, on a thread that is not the main one.
static void onWorker(void* (*work)(void*), void* argument) {
    pthread_t thread;
    if (pthread_create(&thread, nullptr, work, argument) != 0) return fail("no thread for it");
    pthread_join(thread, nullptr);
}

// An image in memory, with room for what deciphers it in place.
struct Image {
    void* bytes;
    int length;
};

static bool readImage(const char* path, Image& image) {
    struct stat status;
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || status.st_size == 0) {
        fail("cannot read %s", path);
        return false;
    }
    image.length = static_cast<int>(status.st_size);
    image.bytes =
        mmap(nullptr, static_cast<size_t>(status.st_size), PROT_READ | PROT_WRITE, MAP_PRIVATE, descriptor, 0);
    close(descriptor);
    return image.bytes != MAP_FAILED;
}

static void* makeJunk() {
    uint8_t* junk = static_cast<uint8_t*>(prepare(room, kJunk));
    for (size_t at = 0; at < kJunk; at++) junk[at] = static_cast<uint8_t>(at * 37 + 11);
    return junk;
}

static bool isJunk() {
    for (size_t at = 0; at < kJunk; at++) {
        if (inside(room)[at] != static_cast<uint8_t>(at * 37 + 11)) return false;
    }
    return true;
}

static void* verifyJunk(void*) {
    const int verdict = VerifyFWCode(makeJunk(), static_cast<int>(kJunk));
    if (verdict == 0) fail("bytes that are no image may be installed");
    if (verdict != 0 && verdict != 1 && verdict != 2 && verdict != -1)
        fail("returns %d, which is none of 0, 1, 2 and -1", verdict);
    if (!isJunk()) fail("changes the image");
    holdsValue(room, 0, "an image");
    return nullptr;
}

static void* verifyImage(void* image) {
    const Image& it = *static_cast<const Image*>(image);
    if (VerifyFWCode(it.bytes, it.length) != 0) fail("the image may not be installed");
    return nullptr;
}

void checkVerifyFWCode(const Settings& settings) {
    Image image;
    onWorker(verifyJunk, nullptr);
    if (settings.firmware == nullptr) return note("refuses bytes that are no image; a real one: --firmware FILE");
    if (readImage(settings.firmware, image)) onWorker(verifyImage, &image);
}

static void* upgrade(void* image) {
    const Image& it = *static_cast<const Image*>(image);
    if (VerifyFWCode(it.bytes, it.length) != 0) return nullptr;
    const int result = UpgradeFWCode(it.bytes, it.length);
    if (result != 0) fail("returns %d for an image that VerifyFWCode allows", result);
    return nullptr;
}

void checkUpgradeFWCode(const Settings& settings) {
    Image image;
    if (settings.firmware == nullptr) return skip("it writes the firmware (--firmware FILE)");
    if (readImage(settings.firmware, image)) onWorker(upgrade, &image);
}

static void* decodeJunk(void*) {
    cfgAesDecode(makeJunk(), static_cast<int>(kJunk));
    holdsValue(room, 0, "an archive");
    return nullptr;
}

static void* decode(void* image) {
    const Image& it = *static_cast<const Image*>(image);
    const int result = cfgAesDecode(it.bytes, it.length);
    if (result <= 0) fail("returns %d for an archive", result);
    return nullptr;
}

void checkCfgAesDecode(const Settings& settings) {
    Image image;
    onWorker(decodeJunk, nullptr);
    if (settings.configuration == nullptr)
        return note("stays within what is no archive; a real one: --configuration FILE");
    if (readImage(settings.configuration, image)) onWorker(decode, &image);
}

static void* unpack(void* image) {
    const Image& it = *static_cast<const Image*>(image);
    if (cfgAesDecode(it.bytes, it.length) <= 0) return nullptr;
    const int result = unpackCFG(it.bytes, it.length);
    if (result != 0) fail("returns %d for an archive that was deciphered", result);
    return nullptr;
}

void checkUnpackCFG(const Settings& settings) {
    Image image;
    if (settings.configuration == nullptr) return skip("it installs settings (--configuration FILE)");
    if (readImage(settings.configuration, image)) onWorker(unpack, &image);
}
