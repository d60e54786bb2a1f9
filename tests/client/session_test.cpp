// A session with a camera that answers from a script.
#include "client/session/session.h"

#include <gmock/gmock.h>

#include <deque>

#include "camera_state.h"
#include "client/error.h"
#include "client/text.h"
#include "fake_link.h"

using namespace client;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr Mac kSessionMac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};

// Answers each command from what it holds, and applies what it is sent, a few milliseconds later.
class ScriptedCamera {
public:
    explicit ScriptedCamera(FakeLink& link) : link_(link) {
        link.answer = [this](const FakeLink::Sent& sent) { answer(sent); };
        putText(wifi, 24, "Workshop");
        put(wifi, 22, {1, 6});
        put(wifi, 60, {0x30, 0x04});
        putText(wifi, 192, "correct horse battery");
        putText(clock, 22, "20260131235958");
        put(clock, 38, {51});
    }

    Bytes discovery = discoveryReply();
    Bytes services = replyTo(0x00A6, 547), wifi = replyTo(0x00A8, 274), clock = replyTo(0x00AC, 122);
    std::string password = "c2VjcmV0";
    std::map<int, Bytes> refusals;  // status and result code, by opcode
    std::chrono::milliseconds silentUntil{0};
    bool moves = true;
    std::optional<Bytes> lease;  // the address that it is given anew
    std::vector<int> opcodes;    // that were asked

    Ipv4 address() const { return {{discovery[290], discovery[291], discovery[292], discovery[293]}}; }

private:
    static std::string textAt(const Bytes& request, size_t offset) {
        return reinterpret_cast<const char*>(request.data()) + offset;
    }

    void answer(const FakeLink::Sent& sent) {
        const bool reaches = sent.to.starts_with("all") || sent.to == addressText(address());
        if (!reaches || sent.at < silentUntil) return;
        const int opcode = sent.bytes[4] | sent.bytes[5] << 8;
        opcodes.push_back(opcode);
        Bytes reply = replyFor(opcode, sent.bytes);
        reply[2] = sent.bytes[2];
        reply[3] = sent.bytes[3];
        put(reply, 12, Bytes(discovery.begin() + 290, discovery.begin() + 294));
        const Ipv4 sender = address();
        link_.arrive(10ms, reply, sender);
        if (reply[16] == 0) apply(opcode, sent.bytes);
    }

    Bytes replyFor(int opcode, const Bytes& request) {
        const bool isOpen = opcode == 0x00A1 || opcode == 0x00A5 || opcode == 0x0200;
        const bool isLogin = isOpen || textAt(request, 86) == password;
        Bytes reply = emptyReply(opcode);
        if (!isLogin) return replyTo(static_cast<uint16_t>(opcode), reply.size(), 3);
        if (refusals.contains(opcode)) put(reply, 16, {refusals[opcode][0]}), put(reply, 22, {refusals[opcode][1]});
        return reply;
    }

    Bytes emptyReply(int opcode) const {
        switch (opcode) {
            case 0x00A1:
                return discovery;
            case 0x00A6:
                return services;
            case 0x00A8:
                return wifi;
            case 0x00AC:
                return clock;
            case 0x00A3: {
                Bytes reply = replyTo(0x00A3, 26);
                reply[22] = 1;
                return reply;
            }
            case 0x00A5: {
                Bytes reply = replyTo(0x00A5, 262);
                put(reply, 22, {0xA8, 0x00});
                return reply;
            }
            case 0x00AE:
                return replyTo(0x00AE, 746);
            case 0x0200:
                return replyTo(0x0200, 150);
        }
        Bytes reply = replyTo(static_cast<uint16_t>(opcode), 38);
        if (opcode == 0x00A2) put(reply, 26, {2, 0, 0, 0, 0x10, 0x27});
        if (opcode == 0x00B1) put(reply, 26, {2, 0, 0, 0, 0x20, 0x4E});
        return reply;
    }

    void apply(int opcode, const Bytes& request) {
        const auto part = [&](size_t offset, size_t length) {
            const auto start = request.begin() + static_cast<std::ptrdiff_t>(offset);
            return Bytes(start, start + static_cast<std::ptrdiff_t>(length));
        };
        if (opcode == 0x00A2 && moves) {
            put(discovery, 226, part(150, 64));
            put(discovery, 290, part(214, 4));
            put(discovery, 294, {request[219], request[218]});
            put(discovery, 298, part(222, 16));
            put(discovery, 314, part(238, 1));
            if (lease) put(discovery, 290, *lease);
        }
        if (opcode == 0x00A9) put(wifi, 22, part(150, 252));
        if (opcode == 0x00A4) password = textAt(request, 214);
        if (opcode == 0x00AD) put(clock, 38, part(166, 4));
        if (opcode == 0x00A7) services[151] = request[279];
    }

    FakeLink& link_;
};

class SessionTest : public testing::Test {
protected:
    Session session(const std::string& password = "secret") {
        const Target target{kSessionMac, {{192, 0, 2, 10}}, nearInterface()};
        return Session(link_, Conversation(link_, Family::Primary, target, {2s, 3}, [](const std::string&) {}),
                       {"admin", Secret(password)});
    }

    // Reads what the assignments need, applies them and reads again; the keys that differ then.
    std::vector<std::string> set(Session& session, const Values& values) {
        std::vector<Group> groups;
        const auto all = assignments(values);
        for (const Assignment& one : all) groups.push_back(one.setting->group);
        const CameraState state = session.read(groups);
        const CameraState wanted = withAssignments(state, all);
        camera_.opcodes.clear();
        session.apply(state, wanted, [this](const Progress& progress) { progress_.push_back(progress.step); });
        return session.verify(wanted, all);
    }

    // The error that setting this ends with.
    Error errorOf(const Values& values, const std::string& password = "secret") try {
        Session one = session(password);
        set(one, values);
        return Error(ErrorKind::Local, "none");
    } catch (const Error& error) {
        return error;
    }

    FakeLink link_;
    ScriptedCamera camera_{link_};
    std::vector<Progress::Step> progress_;
};

TEST_F(SessionTest, ReadsTheGroupsThatAreAskedFor) {
    Session one = session();
    const Group groups[] = {Group::Wifi, Group::Clock, Group::Services};
    const CameraState state = one.read(groups);
    EXPECT_EQ(state.camera.name, "Front door");
    EXPECT_EQ(state.wifi->ssid, "Workshop");
    EXPECT_EQ(state.clock->timezone, 51);
    EXPECT_TRUE(state.services.has_value());
    EXPECT_THAT(camera_.opcodes, ElementsAre(0xA1, 0xA8, 0xAC, 0xA6));
    EXPECT_FALSE(one.read({}).wifi.has_value());
}

TEST_F(SessionTest, AppliesGroupAfterGroupTheAddressLast) {
    Session one = session();
    EXPECT_THAT(
        set(one,
            {{"ipv4.address", "192.0.2.77/24"}, {"wifi.ssid", "Other"}, {"upnp", "on"}, {"time.zone", "Asia/Tokyo"}}),
        IsEmpty());
    std::vector<int> changes;
    for (const int opcode : camera_.opcodes) {
        if (opcode == 0xA7 || opcode == 0xAD || opcode == 0xA9 || opcode == 0xA2) changes.push_back(opcode);
    }
    EXPECT_THAT(changes, ElementsAre(0xA7, 0xAD, 0xA9, 0xA2));
}

TEST_F(SessionTest, WhatDoesNotTakeTheCameraAwayIsNotWaitedFor) {
    Session one = session();
    set(one, {{"upnp", "on"}});
    EXPECT_THAT(progress_, ElementsAre(Progress::Step::Sent));
}

TEST_F(SessionTest, NothingIsSentWhenNothingChanges) {
    Session one = session();
    set(one, {{"name", "Front door"}, {"ipv4.method", "dhcp"}});
    EXPECT_THAT(camera_.opcodes, ElementsAre(0xA1));  // the second look
    EXPECT_THAT(progress_, IsEmpty());
}

TEST_F(SessionTest, NothingIsSentWhenAnyGroupWillNotDo) {
    put(camera_.clock, 38, {0});
    EXPECT_EQ(errorOf({{"upnp", "on"}, {"time.ntp", "ntp.example.com"}}).kind(), ErrorKind::BadValue);
    EXPECT_THAT(camera_.opcodes, IsEmpty());
}

TEST_F(SessionTest, LogsInWithTheNewPasswordOnceItIsChanged) {
    Session one = session();
    EXPECT_THAT(set(one, {{"password", "new"}, {"wifi.ssid", "Other"}}), IsEmpty());
    EXPECT_EQ(camera_.password, "bmV3");
    EXPECT_EQ(one.checkLogin(), UserClass::Administrator);
}

TEST_F(SessionTest, FollowsTheCameraToItsNewAddress) {
    Session one = session();
    EXPECT_THAT(set(one, {{"ipv4.address", "192.0.2.77/24"}, {"name", "Gate"}}), IsEmpty());
    EXPECT_EQ(addressText(one.target().address), "192.0.2.77");
    EXPECT_EQ(link_.sent.back().to, "192.0.2.77");
    EXPECT_THAT(progress_, ElementsAre(Progress::Step::Sent, Progress::Step::Away, Progress::Step::Back));
}

TEST_F(SessionTest, FollowsTheCameraToTheAddressThatItIsLent) {
    camera_.lease = Bytes{192, 0, 2, 99};
    Session one = session();
    EXPECT_THAT(set(one, {{"name", "Gate"}}), IsEmpty());
    EXPECT_EQ(addressText(one.target().address), "192.0.2.99");
    const auto change = std::ranges::find_if(link_.sent, [](const auto& sent) { return sent.bytes[4] == 0xA2; });
    ASSERT_NE(change, link_.sent.end());
    EXPECT_TRUE(std::none_of(change + 1, link_.sent.end(), [](const auto& sent) { return sent.to == "192.0.2.10"; }));
}

TEST_F(SessionTest, ACameraThatAnswersFromItsOldAddressIsNotBack) {
    camera_.moves = false;
    const Error error = errorOf({{"ipv4.address", "192.0.2.77/24"}});
    EXPECT_EQ(error.kind(), ErrorKind::Unverified);
    EXPECT_THAT(error.what(), HasSubstr("has not been seen with it within 30 s"));
}

TEST_F(SessionTest, ACameraThatGoesFarAwayHasTheTimeOfOneMoreReport) {
    camera_.moves = false;
    EXPECT_THAT(errorOf({{"ipv4.address", "10.9.0.2/24"}, {"ipv4.gateway", "none"}}).what(),
                HasSubstr("has not been seen with it within 61 s"));
}

TEST_F(SessionTest, ACameraThatStaysAwayIsUnverified) {
    link_.answer = [this, answer = link_.answer](const FakeLink::Sent& sent) {
        answer(sent);
        if (sent.bytes[4] == 0xA9) camera_.silentUntil = 24h;
    };
    const Error error = errorOf({{"wifi.ssid", "Other"}});
    EXPECT_EQ(error.kind(), ErrorKind::Unverified);
    EXPECT_THAT(error.what(), HasSubstr("within 15 s"));
    EXPECT_THAT(progress_, ElementsAre(Progress::Step::Sent, Progress::Step::Away));
}

TEST_F(SessionTest, WaitsOutANetworkThatIsGoneForAWhile) {
    Session one = session();
    link_.broadcastError = [this](const std::string&) { return link_.elapsed() < 5s ? ENETDOWN : 0; };
    link_.sendError = ENETDOWN;
    EXPECT_TRUE(one.awaitReturn(10s));
    EXPECT_GE(link_.elapsed(), 5s);
    link_.broadcastError = [](const std::string&) { return ENETDOWN; };
    EXPECT_FALSE(one.awaitReturn(10s));
}

TEST_F(SessionTest, WhatTheCameraDoesNotShowIsTold) {
    link_.answer = [this, answer = link_.answer](const FakeLink::Sent& sent) {
        answer(sent);
        put(camera_.wifi, 23, {6});
    };
    Session one = session();
    EXPECT_THAT(set(one, {{"wifi.ssid", "Other"}, {"wifi.channel", "11"}}), ElementsAre("wifi.channel"));
}

TEST_F(SessionTest, WrongCredentialsAreTold) {
    EXPECT_EQ(errorOf({{"wifi.ssid", "Other"}}, "wrong").kind(), ErrorKind::Credentials);
    EXPECT_EQ(errorOf({{"name", "Gate"}}, "wrong").kind(), ErrorKind::Credentials);
    Session one = session("wrong");
    EXPECT_THROW(one.checkLogin(), Error);
    EXPECT_NO_THROW(one.identify());
}

TEST_F(SessionTest, ARefusalIsInWordsAndEndsTheChange) {
    camera_.refusals[0xA9] = {2, 202};
    const Error error = errorOf({{"wifi.channel", "14"}, {"name", "Gate"}});
    EXPECT_EQ(error.kind(), ErrorKind::Refused);
    EXPECT_THAT(error.what(), HasSubstr("channel is not allowed"));
    EXPECT_THAT(error.what(), HasSubstr("code 202"));
    EXPECT_THAT(camera_.opcodes, ElementsAre(0xA9));
}

TEST_F(SessionTest, ACameraThatDoesNotAnswerIsNotFound) {
    camera_.silentUntil = 24h;
    const Error error = errorOf({{"name", "Gate"}});
    EXPECT_EQ(error.kind(), ErrorKind::NotFound);
    EXPECT_THAT(error.what(), HasSubstr("02:00:5e:10:00:af"));
}

TEST_F(SessionTest, ACameraThatCannotAnswerIsMovedAllTheSame) {
    put(camera_.discovery, 290, {192, 168, 0, 20});
    const auto answer = link_.answer;
    link_.answer = [this, answer](const FakeLink::Sent& sent) {
        const bool isLost = camera_.address().bytes[1] == 168;  // it answers to a gateway of its own
        camera_.silentUntil = isLost && sent.bytes[4] != 0xA2 ? 24h : 0h;
        answer(sent);
    };
    CameraState state;
    state.camera.name = "Front door";
    state.camera.httpPort = 80;
    state.camera.address = {{192, 168, 0, 20}};
    const CameraState wanted = withAssignments(state, assignments({{"ipv4.address", "192.0.2.77/24"}}));
    Session one = session();
    one.applyUnheard(state, wanted, [this](const Progress& progress) { progress_.push_back(progress.step); });
    EXPECT_EQ(addressText(one.target().address), "192.0.2.77");
    EXPECT_EQ(progress_.back(), Progress::Step::Back);
    EXPECT_EQ(addressText(camera_.address()), "192.0.2.77");
}

// From its new address its answers go elsewhere; only a report comes, with that name.
class OnlyHeard : public SessionTest {
protected:
    std::vector<std::string> moveAway(const std::string& reported) {
        link_.answer = [=, this, answer = link_.answer](const FakeLink::Sent& sent) {
            answer(sent);
            if (sent.bytes[4] != 0xA2) return;
            camera_.silentUntil = 24h;
            Bytes report = presenceReport();
            put(report, 220, Bytes(64));
            putText(report, 220, reported);
            put(report, 284, {10, 1, 2, 3, 255, 255, 255, 0});
            link_.arrive(29s, report);
        };
        Session one = session();
        const auto different = set(one, {{"name", "Gate"}, {"ipv4.address", "10.1.2.3/24"}, {"ipv4.gateway", "none"}});
        EXPECT_TRUE(one.isOnlyHeard());
        return different;
    }
};

TEST_F(OnlyHeard, TheReportIsTheProof) { EXPECT_THAT(moveAway("Gate"), IsEmpty()); }

TEST_F(OnlyHeard, WhatTheReportDoesNotShowIsTold) { EXPECT_THAT(moveAway("Yard"), ElementsAre("name")); }

TEST_F(SessionTest, AReportOfACameraNearbyIsNoAnswer) {
    link_.answer = [this, answer = link_.answer](const FakeLink::Sent& sent) {
        answer(sent);
        if (sent.bytes[4] == 0xA2) link_.arrive(1ms, presenceReport());
    };
    Session one = session();
    EXPECT_THAT(set(one, {{"http-port", "81"}}), IsEmpty());
    EXPECT_FALSE(one.isOnlyHeard());
}

TEST_F(SessionTest, ATimeThatTheCameraDoesNotTakeIsTold) {
    Session one = session();  // its clock shows 23:59:58
    EXPECT_THAT(set(one, {{"time.now", "2026-01-31T23:59:01"}}), IsEmpty());
    EXPECT_THAT(set(one, {{"time.now", "2026-01-31T23:57:59"}}), ElementsAre("time.now"));
    EXPECT_THAT(set(one, {{"time.now", "2026-02-01T10:20:30"}}), ElementsAre("time.now"));
}

TEST_F(SessionTest, ThePasswordThatTheCameraHasIsNoChange) {
    Session one = session();
    EXPECT_THAT(set(one, {{"password", "secret"}}), IsEmpty());
    EXPECT_THAT(camera_.opcodes, ElementsAre(0xA1, 0xA3));  // the second look
}

TEST_F(SessionTest, AskedForOneThing) {
    Session one = session();
    EXPECT_EQ(one.request(0x0103), 0ms);
    EXPECT_EQ(one.request(0x00B1), 20s);
    EXPECT_THAT(one.supported(), ElementsAre(0x00A8));
    EXPECT_THAT(one.fetchSurvey().sites, IsEmpty());
    one.askAlert();
    EXPECT_THAT(camera_.opcodes, ElementsAre(0x0103, 0x00B1, 0xA5, 0xAE, 0x0200));
}
