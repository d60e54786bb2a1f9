// The cameras of the last discovery, kept for the shell's completion.
#pragma once

#include <string>
#include <vector>

#include "client/search.h"

// They stand in qvpctl/cameras of the user's cache folder. A cache that cannot be written is none.
void rememberCameras(const std::vector<client::Found>& cameras);

// Names and MACs, as they are to be typed; a name that a terminal cannot show as it is, or that is empty, is left out.
std::vector<std::string> knownCameras();
