// Colours and links, for terminals alone.
#pragma once

#include <string>

enum class Look { Plain, Heading, Warning, Failure, Link };

// True for a terminal that can show them, unless the user's NO_COLOR says otherwise (https://no-color.org).
bool isStyled(int descriptor);

// The text in that look. A link leads to the text itself, which has to be printable and a URL.
std::string styled(const std::string& text, Look look);
