#include "util/credentials.h"

#include <string.h>

#include "platform.h"
#include "util/packet.h"

int checkAuthentication(const char* user_b64, const char* pass_b64) {
    if (user_b64 == nullptr || pass_b64 == nullptr) return -1;
    char storedName[kTextSize];
    char storedPassword[kTextSize];
    read(kAdministratorName, storedName);
    read(kAdministratorPassword, storedPassword);
    char name[kTextSize] = {};
    char password[kTextSize] = {};
    Base64dec(user_b64, name);
    Base64dec(pass_b64, password);
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
