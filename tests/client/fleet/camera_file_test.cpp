// A file of cameras, and everything that is wrong with one.
#include "client/fleet/camera_file.h"

#include <gmock/gmock.h>

#include "client/error.h"
#include "client/fleet/camera_check.h"
#include "client/text.h"

using namespace client;
using testing::ElementsAre;
using testing::IsEmpty;

static Secret noSecret(const std::string& key, const std::string& reference) {
    throw Error(ErrorKind::Local, key + " has no secret at " + reference);
}

static std::vector<std::string> faultsIn(const std::string& text, const SecretReader& secrets = noSecret) {
    std::vector<std::string> faults;
    for (const Fault& fault : readCameraFile(text, secrets).faults) {
        faults.push_back(std::to_string(fault.place.line) + ":" + std::to_string(fault.place.column) + " " +
                         fault.text);
    }
    return faults;
}

static std::vector<std::string> assignmentsOf(const FileCamera& camera) {
    std::vector<std::string> texts;
    for (const Assignment& one : camera.assignments) {
        const auto* text = std::get_if<std::string>(&one.value);
        texts.push_back(std::string(one.setting->key) + "=" + (text != nullptr ? *text : "a secret"));
    }
    return texts;
}

TEST(CameraFile, ARowIsACameraAndAnEmptyCellLeavesItsSettingAlone) {
    const CameraFile file = readCameraFile(
        "name, mac ,ipv4.address\nGate,02:00:5e:10:00:01,192.0.2.7/24\n,02-00-5E-10-00-02,\nYard,02:00:5e:10:00:03\n",
        noSecret);
    EXPECT_THAT(file.faults, IsEmpty());
    ASSERT_EQ(file.cameras.size(), 3u);
    EXPECT_THAT(assignmentsOf(file.cameras[0]), ElementsAre("name=Gate", "ipv4.address=192.0.2.7/24"));
    EXPECT_THAT(assignmentsOf(file.cameras[1]), IsEmpty());
    EXPECT_EQ(macText(file.cameras[1].mac), "02:00:5e:10:00:02");
    EXPECT_THAT(assignmentsOf(file.cameras[2]), ElementsAre("name=Yard"));
    EXPECT_EQ(placeOf(file.cameras[0], "ipv4.address is taken").column, 3u);
    EXPECT_EQ(placeOf(file.cameras[0], "something else").column, 0u);
    EXPECT_EQ(placeOf(file.cameras[2], "name has 64 bytes").line, 4u);
}

TEST(CameraFile, WhatDiscoverPrintsIsForPeople) {
    const CameraFile file = readCameraFile("mac,address,name,product\n02:00:5e:10:00:01,192.0.2.7,Gate,VC\n", noSecret);
    EXPECT_THAT(file.information, ElementsAre("address", "product"));
    EXPECT_THAT(assignmentsOf(file.cameras[0]), ElementsAre("name=Gate"));
    EXPECT_EQ(file.cameras[0].address, "192.0.2.7");
}

TEST(CameraFile, SecretsAreReferences) {
    const auto known = [](const std::string& key, const std::string& reference) {
        return Secret(key + " of " + reference);
    };
    const CameraFile file = readCameraFile("mac,password\n02:00:5e:10:00:01,env:NEW\n", known);
    ASSERT_THAT(file.faults, IsEmpty());
    EXPECT_EQ(std::get<Secret>(file.cameras[0].assignments[0].value).reveal(), "password of env:NEW");
    EXPECT_THAT(faultsIn("mac,password\n02:00:5e:10:00:01,env:NEW\n"),
                ElementsAre("2:2 password has no secret at env:NEW"));
    for (const char* text : {"MARKED", "file:", "env:", "@MARKED"}) {
        EXPECT_THAT(
            faultsIn("mac,password\n02:00:5e:10:00:01," + std::string(text) + "\n", known),
            ElementsAre("2:2 password is a secret and must not stand in the file: write file:PATH, env:NAME, or "
                        "prompt"));
    }
}

TEST(CameraFile, FaultsOfTheHeading) {
    EXPECT_THAT(faultsIn(""), ElementsAre("1:0 the file is empty; its first line names the columns, such as mac,name"));
    EXPECT_THAT(faultsIn("mac,name\n"), ElementsAre("1:0 no camera stands below the heading"));
    EXPECT_THAT(faultsIn("name,nmae,name,wifi.enabled,time.now,nothing like it\nx\n"),
                ElementsAre("1:1 no column is named mac: cameras are known by that",
                            "1:2 there is no setting nmae; did you mean name?", "1:3 name stands in the heading twice",
                            "1:4 wifi.enabled can only be read",
                            "1:5 time.now is another a moment later; use time.ntp, or 'qvpctl set' with time.now=now",
                            "1:6 there is no setting nothing like it", "2:0 mac is missing: which camera is it?"));
}

TEST(CameraFile, FaultsOfTheRows) {
    EXPECT_THAT(
        faultsIn("mac,http-port,ipv4.address,ipv4.gateway,ipv4.method\n"
                 "02:00:5e:10:00:01,8088,192.0.2.1/24,,\n"
                 "02:00:5e:10:00:02,,192.0.2.2/24,10.0.0.1,\n"
                 "02:00:5e:10:00:03,,192.0.2.3/24,,dhcp\n"
                 "02:00:5e:10:00:04,,,,,more\n"
                 "02:00:5e:10:00:01,,192.0.2.2/25,,\n"),
        ElementsAre("2:2 http-port is a port that cameras keep for themselves; 8087 and 8089 are free",
                    "3:4 ipv4.gateway 10.0.0.1 is not in the network of ipv4.address 192.0.2.2; name another, or "
                    "none",
                    "4:3 ipv4.address and ipv4.method=dhcp exclude each other",
                    "5:6 this cell has no heading; a value with the separator in it stands in quotes",
                    "6:0 mac 02:00:5e:10:00:01 stands in line 2 already",
                    "6:3 ipv4.address 192.0.2.2 is given to line 3 already"));
}

TEST(CameraFile, AKeyIsJudgedBesideItsSecurity) {
    const auto shortKey = [](const std::string&, const std::string&) { return Secret("short"); };
    EXPECT_THAT(faultsIn("mac,wifi.key\n02:00:5e:10:00:01,env:K\n", shortKey), IsEmpty());
    EXPECT_THAT(faultsIn("mac,wifi.key,wifi.security\n02:00:5e:10:00:01,env:K,wep\n", shortKey), IsEmpty());
    EXPECT_EQ(faultsIn("mac,wifi.key,wifi.security\n02:00:5e:10:00:01,env:K,wpa2-aes\n", shortKey).size(), 1u);
}

TEST(CameraFile, CellsAreWhatTheToolWroteThemFrom) {
    EXPECT_EQ(plainCell("Gate"), "Gate");
    EXPECT_EQ(plainCell("'-1"), "-1");
    EXPECT_EQ(plainCell("'s Gate"), "'s Gate");
    EXPECT_EQ(plainCell("a\\\\b"), "a\\b");
    EXPECT_EQ(plainCell("\\x0a\\xE9"), "\n\xE9");
    EXPECT_EQ(plainCell("\\u{202e}\\u{1f4f7}\\u{e9}\\u{41}"),
              "\xE2\x80\xAE\xF0\x9F\x93\xB7\xC3\xA9"
              "A");
    EXPECT_EQ(plainCell("C:\\temp\\x\\u{\\u{}\\xg0"), "C:\\temp\\x\\u{\\u{}\\xg0");
}
