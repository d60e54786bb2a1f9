// The administrator's password.
#include "client/settings/rows.h"

namespace client {

static void setPassword(CameraState& wanted, const Secret& text) {
    if (text.reveal().empty()) throw badValue("must not be empty");
    checkLength(text.reveal(), kLongestCredential);
    wanted.password = text;
}

static const Secret* password(const CameraState& state) { return state.password ? &*state.password : nullptr; }

static constexpr Setting kPasswordRows[] = {
    {.key = "password",
     .group = Group::Password,
     .summary = "the administrator's password",
     .values = "a secret of at most 48 bytes",
     .quirk = "the user's name stays as it is",
     .setSecret = setPassword,
     .secret = password},
};

std::span<const Setting> passwordRows() { return kPasswordRows; }

}  // namespace client
