#include "client/commands/network_services.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(NetworkServices, RequestChangesOnlyWhatIsNamed) {
    const Login login{"admin", Secret("secret")};
    struct Row {
        NetworkServicesChange change;
        Bytes valuesAndMask;
    };
    const Row rows[] = {
        {{std::nullopt, std::nullopt}, {0, 0}}, {{true, std::nullopt}, {1, 1}},  {{false, std::nullopt}, {0, 1}},
        {{true, DynamicDns{}}, {1, 3}},         {{false, DynamicDns{}}, {0, 3}}, {{std::nullopt, DynamicDns{}}, {0, 2}},
    };
    for (const Row& row : rows) {
        Bytes expected = protectedBytes(675);
        put(expected, 279, row.valuesAndMask);
        EXPECT_EQ(encodeNetworkServices(login, row.change), expected);
    }
}

TEST(NetworkServices, RequestCarriesDynamicDns) {
    Bytes expected = protectedBytes(675);
    put(expected, 279, {1, 3, 0});
    putText(expected, 282, "user");
    putText(expected, 346, "password");
    putText(expected, 410, "door.example.com");
    const DynamicDns ddns{"user", Secret("password"), "door.example.com"};
    EXPECT_EQ(encodeNetworkServices({"admin", Secret("secret")}, {true, ddns}), expected);
}

TEST(NetworkServices, ReplyHoldsEveryField) {
    Bytes reply = replyTo(0x00A6, 547);
    putText(reply, 23, "dialler");
    put(reply, 151, {2, 2, 1});
    putText(reply, 154, "user");
    putText(reply, 218, "password");
    putText(reply, 282, "door.example.com");
    reply[346] = 1;
    putText(reply, 347, "members.example.com;other.example.com;");
    const NetworkServices services = decodeNetworkServices(reply);
    EXPECT_FALSE(services.upnp);
    EXPECT_TRUE(services.pppoe);
    EXPECT_EQ(services.pppoeUser, "dialler");
    EXPECT_EQ(services.ddnsUser, "user");
    EXPECT_EQ(services.ddnsPassword.reveal(), "password");
    EXPECT_EQ(services.ddnsHost, "door.example.com");
    EXPECT_EQ(services.provider, "members.example.com");
    reply[151] = 1;
    EXPECT_TRUE(decodeNetworkServices(reply).upnp);
    EXPECT_FALSE(decodeNetworkServices(reply).pppoe);
}

TEST(NetworkServices, ReplyWithoutNulsOrProviders) {
    Bytes reply = replyTo(0x00A6, 547);
    put(reply, 22, Bytes(525, 'x'));
    const NetworkServices services = decodeNetworkServices(reply);
    EXPECT_EQ(services.pppoeUser, std::string(64, 'x'));
    EXPECT_EQ(services.ddnsHost, std::string(64, 'x'));
    EXPECT_EQ(services.provider, std::string(200, 'x'));
    reply.resize(546);
    EXPECT_THROW(decodeNetworkServices(reply), std::length_error);
}
