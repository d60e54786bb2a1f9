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

// Where a field stands, or where it would go.
struct Place {
    bool hasSection;
    bool hasField;
    Slice value;         // of the field, when there is one
    const char* behind;  // else the end of the last field line of the section, or of its heading
};

static Place findPlace(const IniText& text, const char* section, const char* name) {
    Place place = {};
    bool inside = false;
    bool firstBlock = false;
    IniLine line;
    for (const char* start = iniFirstLine(text); iniTakeLine(text, start, line); start = line.next) {
        if (line.kind == IniKind::Section) {
            inside = sliceEquals(line.name, section);
            firstBlock = inside && !place.hasSection;
            place.hasSection |= inside;
        }
        if (!inside || line.kind == IniKind::Other) continue;
        if (firstBlock) place.behind = line.next;
        if (line.kind != IniKind::Field || !sliceEquals(line.name, name)) continue;
        place.hasField = true;
        place.value = line.value;
        return place;
    }
    return place;
}

bool iniFind(const IniText& text, const char* section, const char* name, Slice& value) {
    Place place = findPlace(text, section, name);
    if (place.hasField) value = place.value;
    return place.hasField;
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

static void appendNewField(const Place& place, const char* section, const char* name, const char* value,
                           const char* lineEnd, IniText& changed) {
    if (changed.length > 0 && changed.bytes[changed.length - 1] != '\n') append(changed, lineEnd);
    if (!place.hasSection) {
        const char* const heading[] = {changed.length > 0 ? lineEnd : "", "[", section, "]", lineEnd};
        for (const char* piece : heading) append(changed, piece);
    }
    const char* const field[] = {name, "=", value, lineEnd};
    for (const char* piece : field) append(changed, piece);
}

int iniChange(const IniText& text, const char* section, const char* name, const char* value, IniText& changed) {
    const char* end = text.bytes + text.length;
    Place place = findPlace(text, section, name);
    const char* cut = place.hasField ? place.value.text : place.hasSection ? place.behind : end;
    const char* resume = place.hasField ? cut + place.value.length : cut;

    changed.length = 0;
    append(changed, text.bytes, static_cast<size_t>(cut - text.bytes));
    if (place.hasField) {
        append(changed, value);
    } else {
        appendNewField(place, section, name, value, lineBreak(text), changed);
    }
    append(changed, resume, static_cast<size_t>(end - resume));
    if (changed.length <= kIniCapacity) return 0;
    errno = EFBIG;
    return -1;
}
