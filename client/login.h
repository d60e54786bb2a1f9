// The administrator's name and password, and how a request carries them.
#pragma once

#include <string>
#include <vector>

#include "client/layout.h"
#include "client/secret.h"
#include "protocol/credentials.h"

namespace client {

struct Login {
    std::string user;
    Secret password;
};

// The longest name or password that a request can carry: 48 bytes are 64 as Base64.
constexpr size_t kLongestCredential = 48;

// Writes a text as Base64 into its field. Throws Error BadValue for one that does not fit; `what` names it there.
void putCredential(std::span<uint8_t> field, const std::string& text, const char* what);

// A request with the login behind its header; `layout` begins with room for both and is cut to `length` bytes. Throws
// Error BadValue for a name or password that does not fit.
std::vector<uint8_t> protectedRequest(const Login& login, std::vector<uint8_t> request = std::vector<uint8_t>(150));

template <typename Layout>
std::vector<uint8_t> protectedRequest(const Login& login, const Layout& layout, size_t length = sizeof(Layout)) {
    return protectedRequest(login, bytesOfLayout(layout, length));
}

}  // namespace client
