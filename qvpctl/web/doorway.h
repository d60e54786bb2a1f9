// The way into the page for the browser that is opened with it. Everybody on this machine can read the words that a
// program is started with, so they name a file that only this user can read, and the file leads on.
#pragma once

#include <string>

// Makes the file, in a folder of its own. Throws Error Local.
std::string makeDoorway(const std::string& address);

// Removes it, if it is there; nothing that is "".
void removeDoorway(const std::string& file);
