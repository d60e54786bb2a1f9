// What is written to standard error while an object of this kind lives, by this process and its children.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace unit {

class CapturedStderr {
public:
    CapturedStderr();
    ~CapturedStderr();
    CapturedStderr(const CapturedStderr&) = delete;
    CapturedStderr& operator=(const CapturedStderr&) = delete;

    std::string text() const;

private:
    std::FILE* file_;
    int original_;
};

std::vector<std::string> linesOf(const std::string& text);

}  // namespace unit
