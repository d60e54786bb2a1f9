// The configuration store, read into cleared values: a key that is missing reads as empty or 0.
#pragma once

#include <stdint.h>

constexpr int kTextSize = 256;  // of every text the store hands over

void readText(const char* section, const char* key, char (&text)[kTextSize]);
int32_t readNumber(const char* section, const char* key);
uint16_t readNumber16(const char* section, const char* key);
uint8_t readFlag(const char* section, const char* key);

void writeText(const char* section, const char* key, const char* text);
void writeNumber(const char* section, const char* key, int32_t value);
void writeFlag(const char* section, const char* key, uint8_t value);
