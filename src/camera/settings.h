// The configuration store, read into cleared values: a key that is missing reads as empty or 0. The type of the key
// chooses the function, so that one of the wrong type does not compile.
#pragma once

#include <stdint.h>

#include "store_keys.h"

constexpr int kTextSize = 256;  // of every text the store hands over or takes

void read(TextKey key, char (&text)[kTextSize]);
int32_t read(NumberKey key);
uint16_t read(ShortKey key);
uint8_t read(FlagKey key);

// Leaves the value as it is when the key is missing.
void readInto(FlagKey key, uint8_t& value);

void write(TextKey key, const char (&text)[kTextSize]);
void write(NumberKey key, int32_t value);
void write(FlagKey key, uint8_t value);
