// What is wrong with a file of cameras, and where.
#pragma once

#include <cstddef>
#include <string>

namespace client {

// Both count from 1; column 0 is the whole line.
struct Place {
    size_t line = 0;
    size_t column = 0;
};

struct Fault {
    Place place;
    std::string text;  // names the key where there is one, and never a secret
};

}  // namespace client
