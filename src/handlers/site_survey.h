// The site survey's two steps, for both families.
#pragma once

#include <stdint.h>

struct Family;

// Checks a request for the list and fills the reply's header. Returns the reply's length, or -1: not for this device.
// `accepted` becomes 1 when the list may be sent, 0 when the credentials were wrong.
int checkSiteSurvey(const Family& family, const uint8_t* request, uint8_t* reply, int capacity, int& accepted);

// Builds one page of the list in `sites`. Returns the reply's length, or -1 when no entry stands on that page.
int fillSiteSurveyPage(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites, int size);
