#include <grp.h>
#include <pwd.h>
#include <stdio.h>

#include "platform.h"

// The system's databases are read anew by every query, so there is nothing to make ready.
int usrInit(int) { return 0; }

const char* usrGetGroupName(const char* name) {
    static char g_group[256];
    g_group[0] = '\0';
    const passwd* user = name != nullptr ? getpwnam(name) : nullptr;
    const group* its_group = user != nullptr ? getgrgid(user->pw_gid) : nullptr;
    if (its_group != nullptr) snprintf(g_group, sizeof g_group, "%s", its_group->gr_name);
    return g_group;
}
