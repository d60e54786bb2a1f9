#include "client/fleet/toml_text.h"

#include <toml++/toml.h>

#include <algorithm>

namespace client {

const TomlEntry* TomlValue::find(std::string_view key) const {
    const auto found = std::ranges::find(entries, key, &TomlEntry::key);
    return found != entries.end() ? &*found : nullptr;
}

// Each part of a key is a table in a table, and as deep as those are, as many calls it takes to give them back.
class KeyDepth {
public:
    explicit KeyDepth(std::string_view text) : text_(text) {}

    // Where a key has more parts than any that means something; npos: nowhere.
    size_t excess() {
        constexpr int kMostDots = 8;
        int dots = 0;
        while (at_ < text_.size()) {
            const char letter = text_[at_];
            if (letter == '.') dots++;
            if (std::string_view("\n=,[]{}").find(letter) != std::string_view::npos) dots = 0;
            if (dots > kMostDots) return at_;
            skip(letter);
        }
        return std::string_view::npos;
    }

private:
    void skip(char letter) {
        if (letter == '#') {
            at_ = std::min(text_.find('\n', at_), text_.size());
        } else if (letter == '"' || letter == '\'') {
            skipString(letter);
        } else {
            at_++;
        }
    }

    void skipString(char quote) {
        const std::string three(3, quote);
        const bool isLong = text_.substr(at_).starts_with(three);
        const std::string_view end = std::string_view(three).substr(0, isLong ? 3 : 1);
        for (at_ += end.size(); at_ < text_.size(); at_++) {
            if (text_[at_] == '\n' && !isLong) return;
            if (text_.substr(at_).starts_with(end)) break;
            if (text_[at_] == '\\' && quote == '"') at_++;
        }
        at_ = std::min(at_ + end.size(), text_.size());
    }

    std::string_view text_;
    size_t at_ = 0;
};

static Place placeAt(std::string_view text, size_t at) {
    const std::string_view before = text.substr(0, at);
    const size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    return {1 + static_cast<size_t>(std::ranges::count(before, '\n')), 1 + before.size() - lineStart};
}

static Place placeOf(const toml::source_region& region) { return {region.begin.line, region.begin.column}; }

// Whatever the parser quotes may be a part of a secret, but for what it expected.
static std::string withoutQuotes(std::string_view description) {
    constexpr std::string_view kOpening = "Error while parsing ";
    if (description.starts_with(kOpening)) description.remove_prefix(kOpening.size());
    description = description.substr(0, description.find(", saw"));
    std::string text;
    while (!description.empty()) {
        const bool isForeign = description[0] == '\'' && !text.ends_with("expected ");
        const size_t end = description[0] == '\'' ? description.find('\'', 1) : 0;
        const size_t length = end == std::string_view::npos ? description.size() : end + 1;
        text += isForeign ? "what stands here" : description.substr(0, length);
        description.remove_prefix(length);
    }
    return text;
}

static TomlValue valueOf(const toml::node& node);

static void takeTable(const toml::table& table, TomlValue& value) {
    for (const auto& [key, node] : table) {
        value.entries.push_back({std::string(key.str()), placeOf(key.source()), valueOf(node)});
    }
    std::ranges::sort(value.entries, {},
                      [](const TomlEntry& one) { return std::pair(one.place.line, one.place.column); });
}

static TomlValue valueOf(const toml::node& node) {
    TomlValue value{TomlValue::Kind::Other, "", placeOf(node.source()), {}, {}};
    if (const auto* text = node.as_string()) {
        value.kind = TomlValue::Kind::Text;
        value.text = text->get();
    } else if (const auto* number = node.as_integer()) {
        value.kind = TomlValue::Kind::Number;
        value.text = std::to_string(number->get());
    } else if (const auto* boolean = node.as_boolean()) {
        value.kind = TomlValue::Kind::Switch;
        value.text = boolean->get() ? "on" : "off";
    } else if (const auto* table = node.as_table()) {
        value.kind = TomlValue::Kind::Table;
        takeTable(*table, value);
    } else if (const auto* list = node.as_array()) {
        value.kind = TomlValue::Kind::List;
        for (const toml::node& item : *list) value.items.push_back(valueOf(item));
    }
    return value;
}

Toml parseToml(std::string_view text) {
    constexpr size_t kLargest = 1024 * 1024;
    if (text.size() > kLargest) {
        return {{}, {{{1, 0}, "is larger than 1 MiB; many cameras belong in a table beside the policy"}}};
    }
    const size_t excess = KeyDepth(text).excess();
    if (excess != std::string_view::npos) return {{}, {{placeAt(text, excess), "this key has too many parts"}}};
    try {
        return {valueOf(toml::parse(text)), {}};
    } catch (const toml::parse_error& error) {
        const std::string reason = withoutQuotes(error.description());
        return {{}, {{placeOf(error.source()), "is no TOML: " + reason}}};
    }
}

}  // namespace client
