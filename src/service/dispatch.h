// From protocol and opcode to the handler that serves them.
#pragma once

#include <stdint.h>

using Handler = int (*)(const uint8_t* request, uint8_t* reply, int capacity);

// One family's way through the opcodes.
struct FamilyDispatch {
    Handler (*find)(uint16_t opcode);  // null: not served
    int (*checkSiteSurvey)(const uint8_t* request, uint8_t* reply, int capacity, int* accepted);
    int (*fillSiteSurvey)(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites, int size);
};

// The family of a header's `protocol`; null: not served.
const FamilyDispatch* findFamily(uint16_t protocol);
