// The only user of this board is the administrator that the store names.
#include <string.h>

#include "platform.h"
#include "store_keys.h"

// Returns 0 when usrGetGroupName may be asked, or -1.
int usrInit(int) { return 0; }

// Returns the group, valid until the next call: "admin" for whoever may administrate, the empty text for one who is
// unknown. Never null.
const char* usrGetGroupName(const char* name) {
    char administrator[256] = {};
    cfgRead(kAdministratorName.section, kAdministratorName.name, administrator);
    return administrator[0] != '\0' && strcmp(name, administrator) == 0 ? kAdministrators : "";
}
