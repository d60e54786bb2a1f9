#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include "platform.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

TEST(Users, HaveTheGroupOfTheSystemsDatabases) {
    EXPECT_EQ(usrInit(0), 0);
    TemporaryFolder etc;
    writeFile(etc / "passwd",
              "root:x:0:0::/:/bin/sh\nadmin:x:1000:20::/:/bin/sh\nguest:x:1001:30::/:/bin/sh\n"
              "lost:x:1002:99::/:/bin/sh\n");
    writeFile(etc / "group", "root:x:0:\nadministrators:x:20:\n" + std::string(300, 'g') + ":x:30:\n");
    writeFile(etc / "nsswitch.conf", "passwd: files\ngroup: files\n");
    if (!withPrivateEtc(etc.path(), [] {
            EXPECT_STREQ(usrGetGroupName("admin"), "administrators");
            EXPECT_STREQ(usrGetGroupName("root"), "root");
            EXPECT_EQ(usrGetGroupName("guest"), std::string(255, 'g'));
            for (const char* unknown : {"lost", "nobody-knows", "Admin", "admin ", ""}) {
                EXPECT_STREQ(usrGetGroupName(unknown), "") << unknown;
            }
        })) {
        GTEST_SKIP() << "no private /etc on this machine";
    }
}

// Administrators are those in the group `admin`, by whichever of their groups.
TEST(Users, AreAdministratorsByAnyOfTheirGroups) {
    TemporaryFolder etc;
    writeFile(etc / "passwd",
              "primary:x:1000:20::/:/bin/sh\nfirst:x:1001:30::/:/bin/sh\nlast:x:1002:30::/:/bin/sh\n"
              "lost:x:1003:99::/:/bin/sh\nother:x:1004:30::/:/bin/sh\nlas:x:1005:30::/:/bin/sh\n");
    writeFile(etc / "group",
              "Admin:x:5:other\nadministrators:x:20:other\nadmin:x:20:first,lost,stranger,last\nusers:x:30:admin\n"
              "video:x:40:first,last,other\n");
    writeFile(etc / "nsswitch.conf", "passwd: files\ngroup: files\n");
    if (!withPrivateEtc(etc.path(), [] {
            for (const char* user : {"primary", "first", "last", "lost"}) {
                EXPECT_STREQ(usrGetGroupName(user), "admin") << user;
            }
            for (const char* user : {"other", "las"}) EXPECT_STREQ(usrGetGroupName(user), "users") << user;
            for (const char* user : {"stranger", "admin"}) EXPECT_STREQ(usrGetGroupName(user), "") << user;
        })) {
        GTEST_SKIP() << "no private /etc on this machine";
    }
}

TEST(Users, AreThoseOfThisMachine) {
    EXPECT_STREQ(usrGetGroupName(nullptr), "");
    EXPECT_STREQ(usrGetGroupName("no-such-user-here"), "");
    const passwd* self = getpwuid(geteuid());
    if (self == nullptr) GTEST_SKIP() << "this user is in no database";
    const std::string name = self->pw_name;
    const group* own = getgrgid(self->pw_gid);
    const std::string expected = own != nullptr ? own->gr_name : "";
    EXPECT_EQ(usrGetGroupName(name.c_str()), expected);
}
