#include "camera/request.h"

#include "platform.h"

// Null in a daemon whose platform has none.
extern "C" void requestBegins() __attribute__((weak));

void beginRequest() {
    if (requestBegins != nullptr) requestBegins();
}
