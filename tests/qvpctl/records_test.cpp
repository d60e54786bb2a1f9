#include "qvpctl/records.h"

#include <gtest/gtest.h>

static client::Found found() {
    client::Found one{};
    one.camera.mac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};
    one.camera.address = {{192, 0, 2, 10}};
    one.camera.name = "Front door";
    one.camera.brand = "Brand";
    one.camera.product = "Product";
    one.camera.model = "Model";
    one.camera.firmware = "1.05";
    one.camera.hardware = "Rev B";
    one.camera.httpPort = 8080;
    one.camera.netmask = {{255, 255, 255, 0}};
    one.camera.gateway = {{192, 0, 2, 1}};
    one.camera.dns = {{{192, 0, 2, 53}}, {{198, 51, 100, 53}}};
    one.camera.dhcp = true;
    one.camera.localTime = "2026-01-31T23:59:58";
    one.camera.timezone = 300;
    one.camera.daylightSaving = true;
    one.interface.name = "eth0";
    one.answered = true;
    one.isNear = true;
    return one;
}

TEST(Records, HoldEveryFieldOfACamera) {
    EXPECT_EQ(recordOf(found()).dump(),
              R"({"mac":"02:00:5e:10:00:af","address":"192.0.2.10","name":"Front door","brand":"Brand",)"
              R"("product":"Product","model":"Model","firmware":"1.05","hardware":"Rev B","httpPort":8080,)"
              R"("netmask":"255.255.255.0","gateway":"192.0.2.1","dns":["192.0.2.53","198.51.100.53"],"dhcp":true,)"
              R"("localTime":"2026-01-31T23:59:58","timezone":300,"daylightSaving":true,)"
              R"("url":"http://192.0.2.10:8080/","interface":"eth0","answered":true,"problems":[]})");
}

TEST(Records, WhatAReportDoesNotTellIsNull) {
    client::Found heard = found();
    heard.answered = false;
    heard.isNear = false;
    EXPECT_EQ(recordOf(heard).dump(),
              R"({"mac":"02:00:5e:10:00:af","address":"192.0.2.10","name":"Front door","brand":null,)"
              R"("product":"Product","model":null,"firmware":"1.05","hardware":"Rev B","httpPort":null,)"
              R"("netmask":"255.255.255.0","gateway":null,"dns":null,"dhcp":null,"localTime":null,"timezone":null,)"
              R"("daylightSaving":null,"url":null,"interface":"eth0","answered":false,"problems":["other-subnet"]})");
}

TEST(Records, WhatIsNotSetIsEmptyOrNull) {
    client::Found one = found();
    one.camera.dns.clear();
    one.camera.localTime.reset();
    one.camera.httpPort = 0;
    const Record record = recordOf(one);
    EXPECT_EQ(record["dns"].dump(), "[]");
    EXPECT_TRUE(record["localTime"].is_null());
    EXPECT_TRUE(record["url"].is_null());
    EXPECT_EQ(record["httpPort"], 0);
}

TEST(Records, ProblemsEachHaveAWord) {
    client::Found one = found();
    one.isNear = false;
    one.sharesAddress = true;
    one.sharesMac = true;
    one.isElsewhere = true;
    EXPECT_EQ(recordOf(one)["problems"].dump(),
              R"(["other-subnet","duplicate-address","duplicate-mac","sender-differs"])");
}

TEST(Records, OfAPresenceReportHoldLocalTimeWithItsOffset) {
    setenv("TZ", "XXX-5:30", 1);
    tzset();
    client::Presence presence{};
    presence.sequence = 7;
    presence.mac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};
    presence.address = {{192, 0, 2, 10}};
    presence.netmask = {{255, 255, 255, 0}};
    presence.name = "Front door";
    presence.product = "Product";
    presence.firmware = "1.05";
    presence.hardware = "Rev B";
    EXPECT_EQ(recordOf(presence, "eth0", 1767225600).dump(),
              R"({"time":"2026-01-01T05:30:00+05:30","mac":"02:00:5e:10:00:af","address":"192.0.2.10",)"
              R"("netmask":"255.255.255.0","name":"Front door","product":"Product","firmware":"1.05",)"
              R"("hardware":"Rev B","sequence":7,"interface":"eth0"})");
}

TEST(Records, OfASite) {
    EXPECT_EQ(recordOf(client::Site{"Workshop", 81, false, client::WifiSecurity{4, 3}, 6}).dump(),
              R"({"ssid":"Workshop","signal":81,"channel":6,"security":"wpa2-aes","adHoc":false})");
    EXPECT_EQ(recordOf(client::Site{"", 0, true, std::nullopt, 0}).dump(),
              R"({"ssid":"","signal":0,"channel":0,"security":null,"adHoc":true})");
}

TEST(Records, OfASettingNeverHoldASecret) {
    client::CameraState state;
    state.camera.name = "Gate";
    state.wifi.emplace();
    state.wifi->preSharedKey = client::Secret("MARKED");
    EXPECT_EQ(recordOf(*client::findSetting("name"), state).dump(), R"({"key":"name","value":"Gate","secret":false})");
    EXPECT_EQ(recordOf(*client::findSetting("wifi.key"), state).dump(),
              R"({"key":"wifi.key","value":null,"secret":true})");
}
