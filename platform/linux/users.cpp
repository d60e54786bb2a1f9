#include <grp.h>
#include <pwd.h>
#include <stdio.h>
#include <string.h>

#include "platform.h"

// The system's databases are read anew by every query, so there is nothing to make ready.
int usrInit(int) { return 0; }

static bool isMember(const group& group, const passwd& user) {
    if (group.gr_gid == user.pw_gid) return true;
    for (char* const* member = group.gr_mem; *member != nullptr; member++) {
        if (strcmp(*member, user.pw_name) == 0) return true;
    }
    return false;
}

// A user has many groups; the one that the daemon asks about comes first, wherever it stands among them.
const char* usrGetGroupName(const char* name) {
    static char groupName[256];
    groupName[0] = '\0';
    const passwd* user = name != nullptr ? getpwnam(name) : nullptr;
    if (user == nullptr) return groupName;
    const group* found = getgrnam(kAdministrators);
    if (found == nullptr || !isMember(*found, *user)) found = getgrgid(user->pw_gid);
    if (found != nullptr) snprintf(groupName, sizeof groupName, "%s", found->gr_name);
    return groupName;
}
