// A generic Linux machine has no flash slot for a firmware image and no key for an archive: all are refused.
#include "common/complain.h"
#include "platform.h"

static int refuseImage(const char* what) {
    complain("%s refused: this machine has no place for it", what);
    return -1;
}

int VerifyFWCode(const void*, int) { return refuseImage("firmware image"); }

int UpgradeFWCode(const void*, int) { return refuseImage("writing of a firmware image"); }

int cfgAesDecode(void*, int) { return refuseImage("enciphered configuration archive"); }

int unpackCFG(const void*, int) { return refuseImage("configuration archive"); }
