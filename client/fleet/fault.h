// What is wrong with a file of cameras, and where.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <tuple>
#include <vector>

namespace client {

// Line and column count from 1; column 0 is the whole line.
struct Place {
    size_t line = 0;
    size_t column = 0;
    size_t file = 0;  // 0 is the file itself, 1 the table beside a policy
};

struct Fault {
    Place place;
    std::string text;  // names the key where there is one, and never a secret
};

inline void sortByPlace(std::vector<Fault>& faults) {
    std::ranges::stable_sort(
        faults, {}, [](const Fault& one) { return std::tuple(one.place.file, one.place.line, one.place.column); });
}

}  // namespace client
