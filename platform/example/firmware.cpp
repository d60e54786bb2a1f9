// Images come from the upgrade worker's thread, whole and in memory. This board has no place for one and refuses all.
#include "platform.h"

// Returns 0 for an image that UpgradeFWCode may write; 1, 2 and -1 refuse it. Looks only: the image stays as it is.
int VerifyFWCode(const void*, int) { return -1; }

// Returns 0 once the image is in flash, anything else when it is not. The reboot behind it is not its affair.
int UpgradeFWCode(const void*, int) { return -1; }

// Deciphers in place, within `length` bytes. Returns a number above 0 when it could, 0 or less when not.
int cfgAesDecode(void*, int) { return -1; }

// Returns 0 once the deciphered archive is installed, anything else when the settings are as they were.
int unpackCFG(const void*, int) { return -1; }
