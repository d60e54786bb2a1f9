// The tie between the socket and the served interface.
#pragma once

// Returns what setsockopt does.
int bindToInterface(const char* interfaceName);

// Called before every report. An interface that was deleted and made again, as a radio is that was reset, is another
// one to the system: binds the socket to it, and asks for its MAC. One that got another name is served, but nothing is
// found out about it by the old one: says so once.
void keepBoundToInterface();
