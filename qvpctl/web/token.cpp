#include "qvpctl/web/token.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdint>

#include "client/error.h"

std::string randomToken() {
    uint8_t bytes[32];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        throw client::localError("cannot get random bytes", errno);
    }
    std::string text;
    for (const uint8_t byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

bool isSameToken(std::string_view given, std::string_view secret) {
    if (secret.empty() || given.size() != secret.size()) return false;
    volatile unsigned difference = 0;
    for (size_t i = 0; i < secret.size(); i++) {
        difference =
            difference | static_cast<unsigned>(static_cast<uint8_t>(given[i]) ^ static_cast<uint8_t>(secret[i]));
    }
    return difference == 0;
}
