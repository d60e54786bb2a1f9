#include <string>

#include "event_log.h"
#include "fake_platform.h"

using fake::appendEvent;
using fake::camera;

extern "C" {

int VerifyFWCode(const void*, int length) {
    appendEvent("VerifyFWCode " + std::to_string(length));
    return camera().verifyResult;
}

int UpgradeFWCode(const void*, int length) {
    appendEvent("UpgradeFWCode " + std::to_string(length));
    return camera().upgradeResult;
}

int cfgAesDecode(void*, int length) {
    appendEvent("cfgAesDecode " + std::to_string(length));
    return camera().decodeResult;
}

int unpackCFG(const void*, int length) {
    appendEvent("unpackCFG " + std::to_string(length));
    return camera().unpackResult;
}

}  // extern "C"
