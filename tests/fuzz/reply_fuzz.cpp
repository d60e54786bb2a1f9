// What cameras say, to the client library: replies to whatever it asks, presence reports, and datagrams of any kind.
//
// An input is a sequence of datagrams: a byte how one is made, two bytes its length, least first, and so many bytes.
// One may be made an answer to the last request, or a presence report; one of no length lets the time pass.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <functional>

#include "client/error.h"
#include "client/outcome.h"
#include "client/session/heard.h"
#include "client/session/session.h"
#include "client/text.h"
#include "fuzz/fuzz.h"
#include "protocol/opcodes.h"

using namespace client;
using fuzz::require;

enum Way : uint8_t { kAsItIs, kAnswer, kAnswerInLength, kPresence };

static const Interface kInterface{"eth0", 3, {{{{192, 0, 2, 1}}, {{255, 255, 255, 0}}}}};
constexpr Mac kMac{{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30}};

// Each command's reply in the primary family.
static size_t lengthOf(uint16_t opcode) {
    constexpr std::pair<uint16_t, size_t> kLengths[] = {{0x00A1, 505}, {0x00A3, 26},  {0x00A5, 262},
                                                        {0x00A6, 547}, {0x00A8, 274}, {0x00AC, 122},
                                                        {0x00AE, 746}, {0x00AF, 130}, {0x0200, 150}};
    const auto* found = std::ranges::find(kLengths, opcode, &std::pair<uint16_t, size_t>::first);
    return found != std::end(kLengths) ? found->second : 38;
}

// Hands out the input's datagrams, each a moment after the one before.
class InputLink : public Link {
public:
    explicit InputLink(fuzz::Input& input) : input_(input) {}

    int send(Ipv4, std::span<const uint8_t> bytes) override { return note(bytes); }
    int broadcast(const Interface&, std::span<const uint8_t> bytes) override { return note(bytes); }
    SteadyClock::time_point now() const override { return now_; }

    std::optional<Incoming> receiveUntil(SteadyClock::time_point deadline) override {
        if (input_.isEmpty()) {
            now_ = deadline;
            return std::nullopt;
        }
        const auto way = static_cast<Way>(input_.byte() % 4);
        const size_t length = input_.byte();
        const std::string_view content = input_.text(length + input_.byte() % 4 * size_t{256});
        now_ = content.empty() ? deadline : std::min(deadline, now_ + std::chrono::milliseconds(1));
        if (content.empty() || now_ == deadline) return std::nullopt;
        return Incoming{made(way, {content.begin(), content.end()}), {{192, 0, 2, 10}}, 3};
    }

private:
    int note(std::span<const uint8_t> bytes) {
        require(bytes.size() >= 22 && bytes.size() <= 1024, "a request is a datagram that a camera takes");
        require(bytes[0] == 0xFD && bytes[1] == 0xFD, "a request says that it is one");
        std::ranges::copy(bytes.first(22), request_);
        return 0;
    }

    // `content` is what stands behind the header, but for a datagram as it is.
    std::vector<uint8_t> made(Way way, std::vector<uint8_t> content) const {
        if (way == kAsItIs) return content;
        std::vector<uint8_t> bytes(request_, request_ + 22);
        bytes.insert(bytes.end(), content.begin(), content.end());
        if (way == kAnswerInLength) bytes.resize(lengthOf(static_cast<uint16_t>(request_[4] | request_[5] << 8)));
        if (way == kPresence) bytes.resize(317);
        bytes[0] = way == kPresence ? 0xFF : 0xEE;
        bytes[1] = way == kPresence ? 0xFF : 0xFE;
        if (way == kPresence) bytes[4] = 0xA0;
        if (way == kPresence) bytes[18] = 2;
        std::ranges::copy(kMac.bytes, bytes.begin() + 6);
        bytes[16] = way != kPresence && content.size() % 16 == 15 ? content[0] % 4 : 0;
        bytes[17] = 0;
        bytes[20] = static_cast<uint8_t>(bytes.size() - 22);
        bytes[21] = static_cast<uint8_t>((bytes.size() - 22) >> 8);
        return bytes;
    }

    fuzz::Input& input_;
    uint8_t request_[22] = {};
    SteadyClock::time_point now_{};
};

static void checkText(const std::string& text, size_t most) {
    require(text.size() <= most && text.find('\0') == text.npos, "a text is as long as its field, and ends");
}

static void checkCamera(const Camera& camera) {
    for (const auto& text : {camera.name, camera.brand, camera.product}) checkText(text, 64);
    for (const auto& text : {camera.model, camera.firmware, camera.hardware}) checkText(text, 32);
    const auto isTime = [](const std::string& text) {
        constexpr std::string_view kForm = "0000-00-00T00:00:00";
        return std::ranges::equal(text, kForm, [](char letter, char form) {
            return form == '0' ? letter >= '0' && letter <= '9' : letter == form;
        });
    };
    if (camera.localTime) require(isTime(*camera.localTime), "a time is a time");
}

// What a setting of that group shows, and can be set to, it shows again.
static void checkSettings(Group group, const CameraState& state) {
    for (const Setting& setting : allSettings()) {
        if (setting.group != group || setting.get == nullptr || setting.set == nullptr) continue;
        CameraState wanted = state;
        const std::string text = setting.get(state);
        try {
            setting.set(wanted, text);
        } catch (const Error&) {
            continue;
        }
        require(setting.get(wanted) == text, "what a setting shows can be set");
    }
}

static void encodeAll(const CameraState& state) {
    for (const Group group : groupsInOrder()) {
        try {
            const GroupRequest request = encodeGroup(group, state, state, {"admin", Secret("secret")});
            require(request.bytes.size() >= 150 && request.bytes.size() <= 1024, "a request fits a datagram");
        } catch (const Error&) {
            continue;  // of what no camera would take
        }
    }
}

static void find(Link& link) {
    Finder finder(link, {{kInterface}}, [](const std::string&) {});
    finder.run([](const Found& found) { checkCamera(found.camera); });
    for (const Found& found : finder.all()) {
        if (!found.answered) checkSettings(Group::Basic, heardState(found));
    }
}

static void ask(const std::function<void()>& question) try { question(); } catch (const Error&) {
}

static void talk(Link& link) {
    Conversation conversation(link, Family::Primary, {kMac, {{192, 0, 2, 10}}, kInterface}, {},
                              [](const std::string&) {});
    Session session(link, conversation, {"admin", Secret("secret")});
    ask([&] {
        constexpr Group kGroups[] = {Group::Services, Group::Clock, Group::Wifi, Group::Password, Group::Basic};
        const CameraState state = session.read(kGroups);
        checkCamera(state.camera);
        for (const Group group : kGroups) checkSettings(group, state);
        encodeAll(state);
    });
    ask([&] {
        const Survey survey = session.fetchSurvey();
        require(survey.sites.size() <= 20, "a survey has twenty networks");
        for (const Site& site : survey.sites) checkText(site.ssid, 32);
    });
    ask([&] { require(session.supported().size() <= 120, "a camera names 120 commands"); });
    ask([&] { session.request(opcode::kReboot); });
    ask([&] { session.askAlert(); });
    ask([&] { session.awaitReturn(std::chrono::seconds(2)); });
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    fuzz::Input input(bytes, size);
    InputLink link(input);
    const bool isSearch = input.byte() % 2 == 0;
    isSearch ? find(link) : talk(link);
    return 0;
}
