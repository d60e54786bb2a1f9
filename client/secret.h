// A text that must not be seen: it goes into datagrams and nowhere else.
#pragma once

#include <string>
#include <utility>

namespace client {

// Nothing prints, compares or converts it; whoever needs its bytes says so by `reveal`.
class Secret {
public:
    Secret() = default;
    explicit Secret(std::string text) : text_(std::move(text)) {}
    Secret(const Secret&) = default;
    Secret(Secret&&) = default;
    Secret& operator=(const Secret&) = default;
    Secret& operator=(Secret&&) = default;
    ~Secret() { wipe(); }

    const std::string& reveal() const { return text_; }

private:
    void wipe() {
        for (volatile char& byte : text_) byte = '\0';
    }

    std::string text_;
};

}  // namespace client
