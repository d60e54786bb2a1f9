#include "client/login.h"

#include <cstddef>

#include "client/error.h"
#include "client/text.h"

namespace client {

void putCredential(std::span<uint8_t> field, const std::string& text, const char* what) {
    const std::string name = what;
    if (text.size() > kLongestCredential) {
        throw Error(ErrorKind::BadValue, name + " is longer than the " + std::to_string(kLongestCredential) +
                                             " bytes that a request can carry");
    }
    if (text.find('\0') != text.npos) throw Error(ErrorKind::BadValue, name + " holds a NUL byte");
    putText(field, base64(text));
}

std::vector<uint8_t> protectedRequest(const Login& login, std::vector<uint8_t> request) {
    Credentials credentials{};
    putCredential(credentials.user, login.user, "the user name");
    putCredential(credentials.password, login.password.reveal(), "the password");
    memcpy(request.data() + offsetof(ProtectedRequest, credentials), &credentials, sizeof credentials);
    return request;
}

}  // namespace client
