// Which of the optional commands this camera serves.
#include "protocol/supported_functions.h"

#include "handlers/commands.h"
#include "protocol/opcodes.h"
#include "util/packet.h"

static constexpr uint16_t kPrimaryList[] = {
    opcode::kGetNetworkAdv, opcode::kSetNetworkAdv,  opcode::kGetWifi,
    opcode::kSetWifi,       opcode::kSiteSurvey,     opcode::kGetSimpleWifi,
    opcode::kSetSimpleWifi, opcode::kInitSiteSurvey, opcode::kCommitSetting,
};

static constexpr uint16_t kLandapList[] = {
    opcode::kGetNetworkAdv, opcode::kSetNetworkAdv, opcode::kGetWifi,        opcode::kSetWifi,
    opcode::kFactoryReset,  opcode::kGetDatetime,   opcode::kSetDatetime,    opcode::kSiteSurvey,
    opcode::kGetSimpleWifi, opcode::kSetSimpleWifi, opcode::kInitSiteSurvey, opcode::kCommitSetting,
};

template <size_t Count>
static void putList(uint8_t* reply, const uint16_t (&opcodes)[Count]) {
    SupportedFunctionsReply& out = view<SupportedFunctionsReply>(reply);
    static_assert(sizeof opcodes <= sizeof out.opcodes);
    for (size_t i = 0; i < Count; i++) out.opcodes[i] = le16(opcodes[i]);
}

static void listPrimary(const uint8_t*, uint8_t* reply) { putList(reply, kPrimaryList); }
static void listLandap(const uint8_t*, uint8_t* reply) { putList(reply, kLandapList); }

const Command kQuerySupportFun{"query_support_fun", Addressing::MacOrBroadcast, Protection::Open,
                               sizeof(SupportedFunctionsReply), listPrimary};
const Command kLandapQuerySupportFun{"query_support_fun", Addressing::MacOnly, Protection::ProtectedIfPayload,
                                     sizeof(SupportedFunctionsReply), listLandap};
