// Reboot, factory reset and commit: only asked for here, done after the reply.
#include "camera/pending_actions.h"
#include "handlers/commands.h"
#include "platform.h"
#include "protocol/setting_reply.h"

// 0 while a firmware upgrade runs, and with it goes an earlier request not yet carried out; the requester is not told.
static int32_t unlessUpgrading() {
    int state = 0;
    SIReadInt(kUpgradeStateSlot, &state);
    return state == kUpgradeRunning ? 0 : 1;
}

static void askReboot(const uint8_t*, uint8_t*) { g_nReboot = unlessUpgrading(); }
static void askFactoryReset(const uint8_t*, uint8_t*) { g_nFactoryReset = unlessUpgrading(); }
static void askCommit(const uint8_t*, uint8_t*) { g_nCommitSetting = 1; }

const Command kReboot{"reboot", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply), askReboot};
const Command kFactoryReset{"factory_reset", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply),
                            askFactoryReset};
const Command kCommitSetting{"commit_setting", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply),
                             askCommit};
