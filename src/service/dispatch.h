// From protocol and opcode to the handler that serves them.
#pragma once

#include <stdint.h>

#include "util/command.h"

// One family's way through the opcodes.
struct FamilyDispatch {
    Handler* (*find)(uint16_t opcode);  // gives null: not served
    SiteSurveyCheck* checkSiteSurvey;
    SiteSurveyFill* fillSiteSurvey;
};

// The family of a header's `protocol`; null: not served.
const FamilyDispatch* findFamily(uint16_t protocol);
