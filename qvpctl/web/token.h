// Words that nobody guesses, and their comparison.
#pragma once

#include <string>
#include <string_view>

// 256 bits of the kernel's randomness as hexadecimal digits. Throws Error Local.
std::string randomToken();

// Takes the same time wherever the two differ. An empty secret is like nothing.
bool isSameToken(std::string_view given, std::string_view secret);
