#include "qvpctl/terminal_text.h"

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

// Characters that a terminal shows as nothing or as a blank, that change the order of what stands around them, or that
// some terminals join with their neighbours and others do not.
static bool hidesText(wchar_t character) {
    struct Range {
        wchar_t first, last;
    };
    static constexpr Range kRanges[] = {
        {0x00A0,  0x00A0 }, // no-break space
        {0x00AD,  0x00AD }, // soft hyphen
        {0x034F,  0x034F }, // combining grapheme joiner
        {0x061C,  0x061C }, // Arabic letter mark
        {0x115F,  0x1160 }, // Hangul fillers
        {0x1680,  0x1680 }, // Ogham space
        {0x17B4,  0x17B5 }, // Khmer vowels without a shape
        {0x180B,  0x180F }, // Mongolian variation selectors
        {0x2000,  0x200F }, // spaces of every width, zero-width characters, joiners, direction marks
        {0x2028,  0x202F }, // line separators, direction overrides, narrow space
        {0x205F,  0x206F }, // mathematical space, invisible operators, direction isolates
        {0x2800,  0x2800 }, // blank Braille pattern
        {0x3000,  0x3000 }, // ideographic space
        {0x3164,  0x3164 }, // Hangul filler
        {0xFE00,  0xFE0F }, // variation selectors
        {0xFEFF,  0xFEFF }, // byte order mark
        {0xFFA0,  0xFFA0 }, // halfwidth Hangul filler
        {0xFFF9,  0xFFFB }, // interlinear annotation
        {0x16FE4, 0x16FE4}, // Khitan filler
        {0x1BCA0, 0x1BCA3}, // shorthand format controls
        {0x1D159, 0x1D159}, // musical null notehead
        {0x1D173, 0x1D17A}, // musical format controls
        {0x1F3FB, 0x1F3FF}, // skin tones, which change the emoji before them
        {0xE0000, 0xE0FFF}, // tags, variation selectors
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

// More of them on one letter grow into the lines around it.
static constexpr int kMostMarks = 2;

std::string printable(std::string_view text) {
    std::string result;
    int marks = kMostMarks;  // nothing stands before the first character that a mark could stand on
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const bool isMark = character.isValid && wcwidth(character.code) == 0;
        const bool isPlain = isShown(character) && !(isMark && marks >= kMostMarks);
        result += isPlain ? std::string(text.substr(0, character.length)) : escaped(text, character);
        if (isPlain) marks = isMark ? marks + 1 : 0;
        text.remove_prefix(character.length);
    }
    return result;
}

std::string printableCell(std::string_view text) {
    const std::string plain = printable(text);
    std::string result;
    for (size_t i = 0; i < plain.size(); i++) {
        const bool isEdge = i == 0 || i + 1 == plain.size() || plain[i - 1] == ' ';
        result += plain[i] == ' ' && isEdge ? "\\x20" : std::string(1, plain[i]);
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
