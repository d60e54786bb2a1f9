// Virtual cameras to try the page with, where they are installed.
#pragma once

#include <string>
#include <vector>

// True on a network of virtual cameras.
bool isOnVirtualLan();

// True when there is a virtual-camera on the PATH, and this is no such network.
bool canStartVirtualCameras();

// Makes a network without cameras, to see whether this system allows it. Throws Error Local with the reason.
void tryVirtualCameras();

// Becomes virtual-camera, which runs this program with those words beside three virtual cameras. Throws Error Local.
[[noreturn]] void becomeVirtualCameras(const std::vector<std::string>& words);
