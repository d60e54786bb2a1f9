#include "store/ini_file.h"

#include <errno.h>
#include <string.h>
#include <sys/types.h>

#include "common/small_file.h"

IniText& iniScratch() {
    static IniText scratch;
    return scratch;
}

int iniRead(int descriptor, IniText& text) {
    ssize_t length = readUpTo(descriptor, text.bytes, sizeof text.bytes);
    text.length = length > 0 ? static_cast<size_t>(length) : 0;
    if (length < 0) return -1;
    if (text.length <= kIniCapacity) return 0;
    errno = EFBIG;
    return -1;
}

const char* iniFirstLine(const IniText& text) {
    bool marked = text.length >= 3 && memcmp(text.bytes, "\xEF\xBB\xBF", 3) == 0;
    return text.bytes + (marked ? 3 : 0);
}

static bool isBlank(char letter) { return letter == ' ' || letter == '\t'; }

static Slice trimmed(const char* start, const char* stop) {
    while (start < stop && isBlank(*start)) start++;
    while (stop > start && isBlank(stop[-1])) stop--;
    return {start, static_cast<size_t>(stop - start)};
}

static const char* findByte(Slice within, char wanted) {
    return static_cast<const char*>(memchr(within.text, wanted, within.length));
}

static void takeSection(Slice content, IniLine& line) {
    const char* bracket = findByte(content, ']');
    if (bracket == nullptr) return;
    line.kind = IniKind::Section;
    line.name = trimmed(content.text + 1, bracket);
}

static void takeField(Slice content, IniLine& line) {
    const char* equals = findByte(content, '=');
    if (equals == nullptr || equals == content.text) return;
    line.kind = IniKind::Field;
    line.name = trimmed(content.text, equals);
    line.value = trimmed(equals + 1, content.text + content.length);
}

bool iniTakeLine(const IniText& text, const char* start, IniLine& line) {
    const char* stop = text.bytes + text.length;
    if (start >= stop) return false;
    const char* newline = findByte({start, static_cast<size_t>(stop - start)}, '\n');
    const char* end = newline != nullptr ? newline : stop;
    line = {IniKind::Other, {}, {}, newline != nullptr ? newline + 1 : stop};
    if (end > start && end[-1] == '\r') end--;
    Slice content = trimmed(start, end);
    if (content.length == 0 || content.text[0] == '#' || content.text[0] == ';') return true;
    if (content.text[0] == '[') {
        takeSection(content, line);
    } else {
        takeField(content, line);
    }
    return true;
}

// Where a new field goes: behind the last field line of the section's first block, or its heading. Null: there is no
// such section.
static const char* placeForField(const IniText& text, const char* section) {
    const char* place = nullptr;
    bool inside = false;
    IniLine line;
    for (const char* start = iniFirstLine(text); iniTakeLine(text, start, line); start = line.next) {
        if (line.kind == IniKind::Section) {
            if (place != nullptr) return place;
            inside = sliceEquals(line.name, section);
        }
        if (inside && line.kind != IniKind::Other) place = line.next;
    }
    return place;
}

static void append(IniText& text, const char* bytes, size_t length) {
    if (text.length + length > kIniCapacity) {
        text.length = kIniCapacity + 1;
        return;
    }
    memcpy(text.bytes + text.length, bytes, length);
    text.length += length;
}

static void append(IniText& text, const char* words) { append(text, words, strlen(words)); }

// The file's own: that of its first line.
static const char* lineBreak(const IniText& text) {
    const char* newline = findByte({text.bytes, text.length}, '\n');
    return newline != nullptr && newline > text.bytes && newline[-1] == '\r' ? "\r\n" : "\n";
}

static void appendField(bool hasSection, const char* section, const char* name, const char* value, const char* lineEnd,
                        IniText& changed) {
    const char last = changed.length > 0 ? changed.bytes[changed.length - 1] : '\n';
    if (last != '\n') append(changed, last == '\r' ? "\n" : lineEnd);  // half a line break becomes a whole one
    if (!hasSection) {
        const char* const heading[] = {changed.length > 0 ? lineEnd : "", "[", section, "]", lineEnd};
        for (const char* piece : heading) append(changed, piece);
    }
    const char* const field[] = {name, "=", value, lineEnd};
    for (const char* piece : field) append(changed, piece);
}

static int fits(const IniText& text) {
    if (text.length <= kIniCapacity) return 0;
    errno = EFBIG;
    return -1;
}

int iniReplace(const IniText& text, Slice value, const char* words, IniText& changed) {
    const char* const resume = value.text + value.length;
    changed.length = 0;
    append(changed, text.bytes, static_cast<size_t>(value.text - text.bytes));
    append(changed, words);
    append(changed, resume, static_cast<size_t>(text.bytes + text.length - resume));
    return fits(changed);
}

int iniAdd(const IniText& text, const char* section, const char* name, const char* value, IniText& changed) {
    const char* const end = text.bytes + text.length;
    const char* const place = placeForField(text, section);
    const char* const cut = place != nullptr ? place : end;
    changed.length = 0;
    append(changed, text.bytes, static_cast<size_t>(cut - text.bytes));
    appendField(place != nullptr, section, name, value, lineBreak(text), changed);
    append(changed, cut, static_cast<size_t>(end - cut));
    return fits(changed);
}
