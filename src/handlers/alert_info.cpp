// Alert information: an answer with nothing in it.
#include "protocol/alert_info.h"

#include "handlers/commands.h"

static void tellNothing(const uint8_t*, uint8_t*) {}

const Command kAlertInfo{"alert_info", Addressing::MacOnly, Protection::Open, sizeof(AlertInfoReply), tellNothing};
