#include "fuzz/reply_rules.h"

#include <algorithm>
#include <cstring>

#include "fuzz/camera.h"

namespace fuzz {
namespace {

struct Zeros {
    size_t from, count;
};

// A command's reply: its length in the two families (0: not served), what is always zero in it, the last bytes of its
// texts among that.
struct Rule {
    uint16_t opcode;
    size_t primary, landap;
    bool isOpen;  // asks for no password
    std::vector<Zeros> zeros;
};

const std::vector<Rule>& rules() {
    static const std::vector<Rule> rules{
        {0x00A1, 505, 334, true, {{217, 3}, {296, 2}, {334, 32}, {398, 107}}},
        {0x00A2, 38, 38, false, {{34, 4}}},
        {0x00A3, 26, 26, false, {{23, 3}}},
        {0x00A4, 38, 38, false, {{22, 16}}},
        {0x00A5, 262, 262, true, {}},
        {0x00A6, 547, 547, false, {{22, 1}, {86, 1}, {150, 1}, {217, 1}, {281, 1}, {345, 1}, {546, 1}}},
        {0x00A7, 38, 38, false, {{34, 4}}},
        {0x00A8, 274, 274, false, {{59, 1}, {63, 1}, {95, 1}, {127, 1}, {159, 1}, {191, 1}, {259, 1}, {270, 4}}},
        {0x00A9, 38, 38, false, {{34, 4}}},
        {0x00AB, 38, 38, false, {{22, 16}}},
        {0x00AC, 122, 122, false, {{36, 2}, {105, 17}}},
        {0x00AD, 38, 38, false, {{26, 12}}},
        {0x00AE, 746, 746, false, {{742, 2}}},
        {0x00AF, 130, 130, false, {{58, 1}, {127, 1}}},
        {0x00B0, 38, 38, false, {{34, 4}}},
        {0x00B1, 38, 38, false, {{34, 4}}},
        {0x00C0, 38, 38, false, {{22, 16}}},
        {0x0103, 38, 0, false, {{22, 16}}},
        {0x0200, 150, 0, true, {{22, 128}}},
    };
    return rules;
}

uint16_t wordAt(std::span<const uint8_t> bytes, size_t at) {
    return static_cast<uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

bool areZero(std::span<const uint8_t> bytes) {
    return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
}

void checkHeader(std::span<const uint8_t> request, std::span<const uint8_t> reply) {
    require(reply[0] == 0xEE && reply[1] == 0xFE, "a reply says that it is one");
    for (const size_t at : {2, 4, 18}) {
        require(wordAt(reply, at) == wordAt(request, at), "a reply repeats sequence, opcode and protocol");
    }
    require(std::memcmp(reply.data() + 6, kMac, sizeof kMac) == 0, "a reply tells the device's MAC");
    require(wordAt(reply, 20) == reply.size() - 22, "a reply tells its length");
    require(request[0] == 0xFD && request[1] == 0xFD, "only requests are answered");
}

std::string decoded(std::span<const uint8_t> field) {
    const std::string text(field.begin(), std::ranges::find(field, uint8_t{0}));
    char out[256] = {};
    Base64dec(text.c_str(), out);
    return out;
}

bool hasCredentials(std::span<const uint8_t> request, const Login& login) {
    return decoded(request.subspan(22, 64)) == login.name && decoded(request.subspan(86, 64)) == login.password;
}

void checkStatus(const Rule& rule, std::span<const uint8_t> request, std::span<const uint8_t> reply) {
    const uint16_t status = wordAt(reply, 16);
    require(status == 0 || status == 2 || status == 3, "a status is done, refused or not logged in");
    if (status != 0) require(camera().writes == 0, "what is refused changes nothing");
    if (status == 3) require(areZero(reply.subspan(22)), "who is not logged in is told nothing");
    if (status == 2) require(rule.primary == 38, "only a change is refused");
    const bool isMeant = std::memcmp(request.data() + 6, kMac, sizeof kMac) == 0;
    require(isMeant || rule.isOpen, "what is protected is this device's alone");
}

void checkSites(std::span<const uint8_t> reply) {
    for (size_t slot = 0; slot < 20; slot++) require(reply[22 + 36 * slot + 32] == 0, "the name of a network ends");
    require(reply[744] == reply[745] && (reply[744] == 0 || reply[744] == 0xFF), "the mark of more is a mark");
}

bool mayWrite(uint16_t opcode) {
    constexpr uint16_t kChanges[] = {0x00A2, 0x00A4, 0x00A7, 0x00A9, 0x00AD, 0x00B0};
    return std::ranges::find(kChanges, opcode) != std::end(kChanges);
}

}  // namespace

void checkReply(std::span<const uint8_t> request, std::span<const uint8_t> reply, const Login& login) {
    const uint16_t protocol = wordAt(request, 18);
    const auto rule = std::ranges::find(rules(), wordAt(request, 4), &Rule::opcode);
    require(rule != rules().end(), "only known commands are answered");
    require(protocol == 1 || protocol == 2, "only known families are answered");
    require(reply.size() == (protocol == 2 ? rule->primary : rule->landap), "a reply has the length of its command's");
    checkHeader(request, reply);
    checkStatus(*rule, request, reply);
    const bool isRight = hasCredentials(request, login);
    if (!rule->isOpen) require(isRight == (wordAt(reply, 16) != 3), "the right password opens, no other");
    for (const Zeros& zeros : rule->zeros) {
        if (zeros.from + zeros.count > reply.size()) continue;
        require(areZero(reply.subspan(zeros.from, zeros.count)), "texts end, and what is reserved is zero");
    }
    if (rule->opcode == 0x00AE) checkSites(reply);
    if (!mayWrite(rule->opcode)) require(camera().writes == 0, "who asks changes nothing");
}

}  // namespace fuzz
