#include "qvpctl/style.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

bool isStyled(int descriptor) {
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool isUnwanted = noColor != nullptr && *noColor != '\0';
    const bool isDumb = terminal == nullptr || strcmp(terminal, "dumb") == 0;
    return !isUnwanted && !isDumb && isatty(descriptor) != 0;
}

static std::string inColour(const char* code, const std::string& text) {
    return std::string("\033[") + code + "m" + text + "\033[0m";
}

std::string styled(const std::string& text, Look look) {
    switch (look) {
        case Look::Plain:
            return text;
        case Look::Heading:
            return inColour("1", text);
        case Look::Warning:
            return inColour("33", text);
        case Look::Failure:
            return inColour("1;31", text);
        case Look::Link:
            return "\033]8;;" + text + "\033\\" + text + "\033]8;;\033\\";
    }
    return text;
}
