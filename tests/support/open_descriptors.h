// How many descriptors this process has open.
#pragma once

#include <filesystem>
#include <iterator>

inline long openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}
