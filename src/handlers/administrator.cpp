// The administrator's account: is this the administrator, and a new password.
#include "protocol/administrator.h"

#include <stdio.h>
#include <string.h>

#include "camera/pending_actions.h"
#include "camera/settings.h"
#include "handlers/commands.h"
#include "platform.h"
#include "system/shell.h"
#include "util/credentials.h"
#include "util/packet.h"

static constexpr uint8_t kAdministrator = 1;
static constexpr uint8_t kOtherUser = 2;
static constexpr size_t kLongestUser = 64;  // of the system account

static void verifyUser(const uint8_t* request, uint8_t* reply) {
    const Credentials& given = view<ProtectedRequest>(request).credentials;
    char user[kTextSize];
    char password[kTextSize];
    decodeField(user, given.user);
    decodeField(password, given.password);  // decoded by custom, used for nothing
    usrInit(0);
    bool admin = strcmp(usrGetGroupName(user), kAdministrators) == 0;
    view<UserVerificationReply>(reply).user_class = admin ? kAdministrator : kOtherUser;
}

// Makes a text safe inside a double-quoted word of the shell.
static void escape(char (&escaped)[2 * kTextSize], const char* text) {
    char* out = escaped;
    for (; *text != '\0'; text++) {
        if (strchr("\"`\\$", *text) != nullptr) *out++ = '\\';
        *out++ = *text;
    }
    *out = '\0';
}

static void setSystemPassword(const char* password) {
    char user[kTextSize];
    char escaped[2 * kTextSize];
    char command[sizeof user + sizeof escaped + 64];
    read(kAdministratorName, user);
    user[kLongestUser] = '\0';
    escape(escaped, password);
    snprintf(command, sizeof command, "/usr/sbin/set_passwd -u \"%s\" -p \"%s\"  2>/dev/null 1>/dev/null", user,
             escaped);
    shell(command);
}

static void changeAdmin(const uint8_t* request, uint8_t*) {
    char password[kTextSize];
    decodeField(password, view<ChangeAdminRequest>(request).new_password);
    write(kAdministratorPassword, password);
    setSystemPassword(password);
    g_nAuthReset = 1;
}

const Command kUserVerification{"user_verification", Addressing::MacOnly, Protection::Protected,
                                sizeof(UserVerificationReply), verifyUser};
const Command kChangeAdminIdPwd{"change_admin_id_pwd", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply),
                                changeAdmin};
