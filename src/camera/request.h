// A request: its beginning, of which the platform may want to know, and what serving it took.
#pragma once

// From here on the platform shows what other programs have changed by now.
void beginRequest();

// Raised by what may take long, a write or what runs after a reply; taken by the service.
extern bool requestTookLong;
