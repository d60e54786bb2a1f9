// What the targets share: an input taken apart, and the rules that must hold of what came of it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace fuzz {

class Input {
public:
    Input(const uint8_t* bytes, size_t size) : left_(reinterpret_cast<const char*>(bytes), size) {}

    bool isEmpty() const { return left_.empty(); }

    // Behind the end, zeros and nothing.
    uint8_t byte() {
        const std::string_view one = text(1);
        return one.empty() ? uint8_t{0} : static_cast<uint8_t>(one[0]);
    }

    std::string_view text(size_t length) {
        const std::string_view taken = left_.substr(0, length);
        left_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest() { return text(left_.size()); }

    // What stands in front of the next such byte, which is taken too.
    std::string_view upTo(char end) {
        const std::string_view taken = text(left_.find(end) == left_.npos ? left_.size() : left_.find(end));
        text(1);
        return taken;
    }

private:
    std::string_view left_;
};

// A rule that does not hold is a crash, which the fuzzer keeps the input of.
inline void require(bool holds, const char* rule) {
    if (holds) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

}  // namespace fuzz
