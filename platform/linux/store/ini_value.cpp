#include "store/ini_value.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "common/numbers.h"

static bool isPrintable(char letter) {
    uint8_t byte = static_cast<uint8_t>(letter);
    return byte >= 0x20 && byte != 0x7F;
}

static bool needsQuotes(const char* text) {
    if (text[0] == '\0') return false;
    if (text[0] == ' ' || text[strlen(text) - 1] == ' ') return true;
    for (; *text != '\0'; text++) {
        if (!isPrintable(*text) || *text == '"' || *text == '\\') return true;
    }
    return false;
}

struct Escape {
    char byte;
    char letter;
};

static constexpr Escape kEscapes[] = {
    {'\\', '\\'},
    {'"',  '"' },
    {'\n', 'n' },
    {'\r', 'r' },
    {'\t', 't' },
};

// Returns where the next letter goes.
static char* encodeByte(char byte, char* out) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    for (const Escape& escape : kEscapes) {
        if (escape.byte != byte) continue;
        *out++ = '\\';
        *out++ = escape.letter;
        return out;
    }
    if (isPrintable(byte)) {
        *out++ = byte;
        return out;
    }
    *out++ = '\\';
    *out++ = 'x';
    *out++ = kDigits[static_cast<uint8_t>(byte) >> 4];
    *out++ = kDigits[static_cast<uint8_t>(byte) & 15];
    return out;
}

void iniEncode(const char* text, char* value) {
    if (!needsQuotes(text)) {
        memcpy(value, text, strlen(text) + 1);
        return;
    }
    *value++ = '"';
    for (; *text != '\0'; text++) value = encodeByte(*text, value);
    *value++ = '"';
    *value = '\0';
}

// `value` starts behind a backslash. Returns the number of letters that the escape has there, 0 when it is none.
static size_t decodeEscape(Slice value, char& byte) {
    if (value.length == 0) return 0;
    for (const Escape& escape : kEscapes) {
        if (escape.letter != value.text[0]) continue;
        byte = escape.byte;
        return 1;
    }
    if (value.text[0] != 'x' || value.length < 3) return 0;
    int high = hexDigit(value.text[1]);
    int low = hexDigit(value.text[2]);
    if (high < 0 || low < 0) return 0;
    byte = static_cast<char>(high << 4 | low);
    return 3;
}

struct Decoded {
    char* text;
    long length;
};

static bool put(Decoded& decoded, char byte) {
    if (byte == '\0') return false;
    if (decoded.length < static_cast<long>(kMostText)) decoded.text[decoded.length] = byte;
    decoded.length++;
    return true;
}

static bool decodePlain(Slice value, Decoded& decoded) {
    for (size_t position = 0; position < value.length; position++) {
        if (!put(decoded, value.text[position])) return false;
    }
    return true;
}

// `value` is what stands between the quotes.
static bool decodeQuoted(Slice value, Decoded& decoded) {
    for (size_t position = 0; position < value.length; position++) {
        char byte = value.text[position];
        if (byte == '"') return false;
        if (byte == '\\') {
            size_t letters = decodeEscape({value.text + position + 1, value.length - position - 1}, byte);
            if (letters == 0) return false;
            position += letters;
        }
        if (!put(decoded, byte)) return false;
    }
    return true;
}

static bool decode(Slice value, Decoded& decoded) {
    if (value.length == 0 || value.text[0] != '"') return decodePlain(value, decoded);
    if (value.length < 2 || value.text[value.length - 1] != '"') return false;
    return decodeQuoted({value.text + 1, value.length - 2}, decoded);
}

long iniDecode(Slice value, char (&text)[kMostText + 1]) {
    Decoded decoded = {text, 0};
    if (!decode(value, decoded)) return -1;
    text[decoded.length < static_cast<long>(kMostText) ? decoded.length : static_cast<long>(kMostText)] = '\0';
    return decoded.length;
}
