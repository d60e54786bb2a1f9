#include "client/commands/account.h"

#include "protocol/administrator.h"

namespace client {

UserClass decodeUserClass(std::span<const uint8_t> reply) {
    return layoutOf<UserVerificationReply>(reply).user_class == 1 ? UserClass::Administrator : UserClass::Other;
}

std::vector<uint8_t> encodePasswordChange(const Login& login, const Secret& password) {
    ChangeAdminRequest change{};
    putCredential(change.new_password, password.reveal(), "the new password");
    return protectedRequest(login, change);
}

}  // namespace client
