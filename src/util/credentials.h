// The administrator's name and password.
#pragma once

#include "camera/settings.h"
#include "protocol/credentials.h"

// Compares Base64 texts with what the store holds in the clear. Returns 0 when both match, -1 when not or for a null
// argument.
int checkAuthentication(const char* userBase64, const char* passwordBase64);

// Decodes a Base64 field of a request, bounded to the field, up to the first NUL that it decodes to. The rest of `text`
// is cleared.
void decodeField(char (&text)[kTextSize], const uint8_t (&field)[64]);
