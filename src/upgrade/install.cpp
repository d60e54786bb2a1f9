#include "upgrade/install.h"

#include <unistd.h>

#include "platform.h"
#include "system/shell.h"
#include "system/trace.h"

int decode_and_unpack_config(uint8_t* data, int32_t length) {
    if (data == nullptr || length < 1) return -1;
    if (cfgAesDecode(data, length) < 1) return -1;
    return unpackCFG(data, length) == 0 ? 0 : -1;
}

static bool isRefusal(int verdict) { return verdict == 1 || verdict == 2 || verdict == -1; }

int verify_and_upgrade_firmware(uint8_t* data, int32_t length) {
    if (data == nullptr || length < 1) return -1;
    if (isRefusal(VerifyFWCode(data, length))) return -1;
    trace("kill the daemons that may effect firmware upgrading\n");
    shellOnWorker("/etc/init.d/stop_daemon_when_fwup.sh 2>/dev/null 1>/dev/null");
    sleep(1);
    shellOnWorker("/usr/sbin/twinkling 2>/dev/null 1>/dev/null&");
    shellOnWorker("/usr/sbin/userconfig -backup /mnt/flash/config/restore.ini 2>/dev/null 1>/dev/null");
    trace("start firmware upgrading\n");
    return UpgradeFWCode(data, length) == 0 ? 0 : -1;
}
