#include "util/credentials.h"

#include <string.h>

#include "platform.h"
#include "util/packet.h"

int checkAuthentication(const char* userBase64, const char* passwordBase64) {
    if (userBase64 == nullptr || passwordBase64 == nullptr) return -1;
    char storedName[kTextSize];
    char storedPassword[kTextSize];
    read(kAdministratorName, storedName);
    read(kAdministratorPassword, storedPassword);
    char name[kTextSize] = {};
    char password[kTextSize] = {};
    Base64dec(userBase64, name);
    Base64dec(passwordBase64, password);
    if (strcmp(storedName, name) != 0) return -1;
    return strcmp(storedPassword, password) == 0 ? 0 : -1;
}

void decodeField(char (&text)[kTextSize], const uint8_t (&field)[64]) {
    char encoded[sizeof field + 1];
    takeText(encoded, field);
    memset(text, 0, sizeof text);
    Base64dec(encoded, text);
    size_t length = strnlen(text, sizeof text);
    memset(text + length, 0, sizeof text - length);
}
