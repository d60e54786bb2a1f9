#include "camera/request.h"

#include "platform.h"

// Null in a daemon whose platform has none.
#pragma weak requestBegins

bool requestTookLong;

void beginRequest() {
    if (requestBegins != nullptr) requestBegins();
}
