#include "qvpctl/text.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <iterator>

void useUtf8() {
    if (setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
        setlocale(LC_CTYPE, "");
    }
}

std::string fieldText(std::span<const uint8_t> field) {
    return std::string(field.begin(), std::find(field.begin(), field.end(), uint8_t{0}));
}

std::string macText(Mac mac) {
    char text[18];
    const uint8_t* b = mac.bytes;
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3], b[4], b[5]);
    return text;
}

std::string addressText(Ipv4 address) {
    char text[16];
    const uint8_t* b = address.bytes;
    snprintf(text, sizeof text, "%u.%u.%u.%u", b[0], b[1], b[2], b[3]);
    return text;
}

std::optional<std::string> isoTime(std::string_view digits) {
    if (digits.size() != 14 || digits.find_first_not_of("0123456789") != digits.npos) {
        return std::nullopt;
    }
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    sscanf(std::string(digits).c_str(), "%4u%2u%2u%2u%2u%2u", &year, &month, &day, &hour, &minute, &second);
    const bool isDate = month >= 1 && month <= 12 && day >= 1 && day <= 31;
    if (!isDate || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    char text[64];
    snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", year, month, day, hour, minute, second);
    return text;
}

// Characters that a terminal shows as nothing, or that change the order of what stands around them.
static bool hidesText(wchar_t character) {
    struct Range {
        wchar_t first, last;
    };
    static constexpr Range kRanges[] = {
        {0x00AD,  0x00AD }, // soft hyphen
        {0x061C,  0x061C }, // Arabic letter mark
        {0x180B,  0x180F }, // Mongolian variation selectors
        {0x200B,  0x200F }, // zero-width characters, direction marks
        {0x2028,  0x202E }, // line separators, direction overrides
        {0x2060,  0x206F }, // invisible operators, direction isolates
        {0xFEFF,  0xFEFF }, // byte order mark
        {0xFFF9,  0xFFFB }, // interlinear annotation
        {0xE0000, 0xE0FFF}, // tags
    };
    return std::any_of(std::begin(kRanges), std::end(kRanges),
                       [=](Range range) { return character >= range.first && character <= range.last; });
}

struct Character {
    wchar_t code;   // meaningless unless `isValid`
    size_t length;  // in bytes, at least 1
    bool isValid;
};

static Character firstCharacter(std::string_view text) {
    mbstate_t state{};
    wchar_t code = 0;
    const size_t length = mbrtowc(&code, text.data(), text.size(), &state);
    const bool isValid = length >= 1 && length <= text.size() && code <= 0x10FFFF;
    return {code, isValid ? length : 1, isValid};
}

static std::string escaped(std::string_view bytes, const Character& character) {
    if (character.isValid && character.code == L'\\') {
        return "\\\\";
    }
    char text[16];
    if (character.isValid && character.length > 1) {
        snprintf(text, sizeof text, "\\u{%X}", static_cast<unsigned>(character.code));
    } else {
        snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned char>(bytes[0]));
    }
    return text;
}

static bool isShown(const Character& character) {
    return character.isValid && character.code != L'\\' && wcwidth(character.code) >= 0 && !hidesText(character.code);
}

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        result += isShown(character) ? std::string(text.substr(0, character.length)) : escaped(text, character);
        text.remove_prefix(character.length);
    }
    return result;
}

size_t displayWidth(std::string_view text) {
    size_t width = 0;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const int columns = character.isValid ? wcwidth(character.code) : 1;
        width += columns > 0 ? static_cast<size_t>(columns) : 0;
        text.remove_prefix(character.length);
    }
    return width;
}
