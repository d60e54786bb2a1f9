// A policy, and everything that is wrong with one.
#include "client/fleet/policy_file.h"

#include <gmock/gmock.h>

#include "policy_text.h"

using namespace client;
using testing::ElementsAre;
using testing::IsEmpty;

static const std::string kOneCamera = "[[camera]]\nmac = \"02:00:5e:10:00:01\"\n";

TEST(PolicyFile, ListsItsCamerasHereAndInATable) {
    const CameraFile file = readPolicy(
        "table = 'lists/site.csv'\n[[camera]]\nmac = '02-00-5E-10-00-02'\nproduct = 'VC-1'\nname = 'Gate'\nhttp-port = "
        "8080\n"
        "upnp = false\npassword.env = 'NEW'\n[camera.wifi]\nssid = ''\n",
        {{"lists/site.csv", "mac,product,address,name\n02:00:5e:10:00:01,VC-2,192.0.2.1,Yard\n"}});
    EXPECT_THAT(wordsOf(file.faults), IsEmpty());
    ASSERT_EQ(file.cameras.size(), 2u);
    EXPECT_EQ(file.cameras[0].place.file, 1u);
    EXPECT_EQ(file.cameras[0].places[0].file, 1u);
    EXPECT_EQ(file.cameras[0].product, "VC-2");
    EXPECT_EQ(macText(file.cameras[1].mac), "02:00:5e:10:00:02");
    EXPECT_EQ(file.cameras[1].product, "VC-1");
    EXPECT_EQ(wordsOf(file.cameras[1]), "name=Gate http-port=8080 upnp=off password=MARKED env:NEW wifi.ssid=");
    EXPECT_THAT(file.information, ElementsAre("product", "address"));
    EXPECT_EQ(tableNamedIn("table = 'lists/site.csv'"), "lists/site.csv");
    EXPECT_EQ(tableNamedIn("table = "), std::nullopt);
}

TEST(PolicyFile, AProductThatGroupsGoByIsNoMereInformation) {
    const CameraFile file = readPolicy("table = 'a.csv'\n[[group]]\nproduct = '*'\nset.upnp = true\n",
                                       {{"a.csv", "mac,product,model\n02:00:5e:10:00:01,VC-2,x\n"}});
    EXPECT_THAT(file.information, ElementsAre("model"));
}

TEST(PolicyFile, SecretsAreReferencesAndNothingElse) {
    const CameraFile file =
        readPolicy("[defaults]\npassword = { file = 'a b' }\nwifi.key.env = 'K'\nddns.password = { prompt = true }\n" +
                   kOneCamera);
    ASSERT_THAT(wordsOf(file.faults), IsEmpty());
    std::vector<std::string> secrets;
    for (const Assignment& one : file.policy.defaults.assignments)
        secrets.push_back(std::get<Secret>(one.value).reveal());
    EXPECT_THAT(secrets, ElementsAre("MARKED file:a b", "MARKED env:K", "MARKED prompt"));
    for (const char* value : {"'MARKED'", "'file:MARKED'", "'prompt'", "1234", "true", "['MARKED']", "{}",
                              "{ text = 'MARKED' }", "{ file = '' }", "{ file = 5 }", "{ prompt = false }",
                              "{ prompt = 'on' }", "{ file = 'MARKED', env = 'MARKED' }"}) {
        EXPECT_THAT(
            policyFaults("[defaults]\npassword = " + std::string(value) + "\n" + kOneCamera),
            ElementsAre("2:12 password is a secret and must not stand in the file: write { file = \"PATH\" }, { "
                        "env = \"NAME\" } or { prompt = true }"))
            << value;
    }
    EXPECT_THAT(policyFaults("[defaults]\npassword.env = 'MISSING'\n" + kOneCamera),
                ElementsAre("2:1 password is not there"));
}

TEST(PolicyFile, FaultsOfItsShape) {
    EXPECT_THAT(policyFaults(""), ElementsAre("1:0 no camera is listed: name a table, or list each in a [[camera]]"));
    EXPECT_THAT(policyFaults("camera = []"),
                ElementsAre("1:0 no camera is listed: name a table, or list each in a [[camera]]"));
    EXPECT_THAT(policyFaults("a = "), ElementsAre(testing::StartsWith("1:")));
    EXPECT_THAT(
        policyFaults("table = 5\nupnp = true\nnonsense_at_all = 1\ndefaults = 'x'\ngroup = [1]\n[camera]\nmac = 1\n"),
        ElementsAre(
            "1:9 table takes the path of a table (CSV) in quotes",
            "2:1 upnp has no place here: a policy has table, [defaults], [[group]] and [[camera]]; settings for all "
            "cameras stand in [defaults]",
            "3:1 nonsense_at_all has no place here: a policy has table, [defaults], [[group]] and [[camera]]",
            "4:12 defaults is a table of settings: [defaults]", "5:10 group stands in double brackets: [[group]]",
            "6:1 camera stands in double brackets: [[camera]]"));
    EXPECT_THAT(policyFaults("table = 'none.csv'\n"),
                ElementsAre("1:9 table: cannot read none.csv: No such file or directory"));
}

TEST(PolicyFile, FaultsOfGroups) {
    EXPECT_THAT(
        policyFaults("[[group]]\nset.upnp = true\n[[group]]\nname = '*'\n[[group]]\nmac = 5\nbrand = 'x'\nset = 1\n" +
                     kOneCamera),
        ElementsAre("1:1 this group has no product, name or mac; what is for all cameras stands in [defaults]",
                    "3:1 this group has no settings: they stand in [group.set]",
                    "5:1 this group has no product, name or mac; what is for all cameras stands in [defaults]",
                    "6:7 mac takes a pattern in quotes",
                    "7:1 brand has no place here: a group has product, name, mac and [group.set]",
                    "8:7 set is a table of settings: [group.set]"));
    EXPECT_THAT(policyFaults("[[group]]\nname = 'Yard*'\nset.upnp = true\n[[group]]\nmac = '*'\nset.name = 'Yard'\n" +
                             kOneCamera),
                ElementsAre("6:12 name is given here, and a group goes by name: a camera could be in another group "
                            "afterwards; name each in its own row"));
}

TEST(PolicyFile, FaultsOfSettingsAreTheSameEverywhere) {
    const std::string settings =
        "nmae = 'x'\ntime.zone = 'Nowhere'\ntime.zome = 'x'\nddns = 'x'\nwifi-x.y = 1\nupnp = 2\nname = "
        "true\nhttp-port = 1.5\n"
        "time.now = 'now'\nwifi.enabled = true\n\"wifi.ssid\" = 'x'\n";
    for (const std::string& head :
         {std::string("[defaults]\n\n\n"), std::string("[[group]]\nmac = '*'\n[group.set]\n")}) {
        EXPECT_THAT(
            policyFaults(head + settings + kOneCamera),
            ElementsAre("4:1 there is no setting nmae; did you mean name?",
                        "5:13 time.zone is no time zone that cameras know; 'qvpctl help time-zones' lists them",
                        "6:6 there is no setting time.zome; did you mean time.zone?",
                        "7:1 there is no setting ddns; did you mean ddns.user?", "8:1 there is no setting wifi-x",
                        "9:8 upnp must be 'on' or 'off'", "10:8 name takes a text in quotes: text of at most 63 bytes",
                        "11:13 http-port takes a text in quotes: 1 to 65535, but not 8088",
                        "12:12 time.now is another a moment later; use time.ntp, or 'qvpctl set' with time.now=now",
                        "13:16 wifi.enabled can only be read"));
    }
    EXPECT_THAT(policyFaults("[defaults]\n\"time.ntp\" = 'off'\ntime.ntp = 'x'\n" + kOneCamera),
                ElementsAre("3:12 time.ntp stands twice"));
}

TEST(PolicyFile, FaultsOfCameras) {
    EXPECT_THAT(
        policyFaults(
            "[[camera]]\nname = 'x'\n[[camera]]\nmac = 'x'\nproduct = 5\n[[camera]]\nmac = '02:00:5e:10:00:03'\n"
            "ipv4.address = '192.0.2.1-9/24'\nnmae = 1\n[[camera]]\nmac = '02:00:5e:10:00:04'\nipv4.address = "
            "'192.0.2.1/24'\nipv4.gateway = '10.0.0.1'\n"),
        ElementsAre(
            "1:0 mac is missing: which camera is it?", "4:7 mac must be of the form \"02:00:5e:10:00:01\"",
            "5:11 product takes a text in quotes",
            "8:16 ipv4.address is a range: those stand in [defaults] and in [group.set]",
            "9:1 there is no setting nmae; did you mean name?",
            "13:16 ipv4.gateway 10.0.0.1 is not in the network of ipv4.address 192.0.2.1; name another, or none"));
}

TEST(PolicyFile, FaultsOfTheTableAreOfThatFile) {
    EXPECT_THAT(
        policyFaults("table = 'a.csv'\n[defaults]\nnmae = 1\n[[camera]]\nmac = '02:00:5e:10:00:01'\nipv4.address = "
                     "'192.0.2.1/24'\n",
                     {{"a.csv", "mac,password,ipv4.address\n02:00:5e:10:00:01,MARKED,192.0.2.1/24\n"}}),
        ElementsAre("3:1 there is no setting nmae; did you mean name?",
                    "4:0 mac 02:00:5e:10:00:01 stands in line 2 of a.csv already",
                    "6:16 ipv4.address 192.0.2.1 is given to line 2 of a.csv already",
                    "table 2:2 password is a secret and must not stand in the file: write file:PATH, env:NAME, or "
                    "prompt"));
}

TEST(PolicyFile, FaultsOfRanges) {
    EXPECT_THAT(
        policyFaults("[defaults]\nipv4.address = '192.0.2.20-29/24'\nipv4.gateway = '10.0.0.1'\n" + kOneCamera),
        ElementsAre(
            "3:16 ipv4.gateway 10.0.0.1 is not in the network of ipv4.address 192.0.2.20; name another, or none"));
    EXPECT_THAT(
        policyFaults("[defaults]\nipv4.address = '192.0.2.20-29'\n[[group]]\nmac = '*'\nset.ipv4.address = 'x'\n" +
                     kOneCamera),
        ElementsAre("2:16 ipv4.address needs the length of its network's prefix, such as 192.0.2.20-29/24",
                    "5:20 ipv4.address needs the length of its network's prefix, such as x/24"));
    EXPECT_THAT(policyFaults("[defaults]\nipv4.address = '192.0.2.20-29/24'\n[[group]]\nmac = '*'\nset.ipv4.address = "
                             "'192.0.2.29-40/24'\n" +
                             kOneCamera),
                ElementsAre("5:20 ipv4.address 192.0.2.29-40/24 shares addresses with line 2"));
    EXPECT_THAT(policyFaults("[defaults]\nipv4.address = '192.0.2.20-21/24'\n" + kOneCamera +
                             "ipv4.address = '192.0.2.21/24'\n[[camera]]\nmac = '02:00:5e:10:00:02'\n[[camera]]\nmac = "
                             "'02:00:5e:10:00:03'\n"),
                ElementsAre("2:16 ipv4.address 192.0.2.20-21/24 has room for 1 of 2 cameras"));
}

TEST(PolicyFile, WhatASharedValueDoesToOneCameraNamesTheCamera) {
    EXPECT_THAT(
        policyFaults("[defaults]\nipv4.gateway = '192.0.2.254'\nwifi.key.env = 'K'\n" + kOneCamera +
                     "ipv4.address = '10.0.0.1/24'\n[[camera]]\nmac = '02:00:5e:10:00:02'\nwifi.security = 'wep'\n"),
        ElementsAre(
            "2:16 ipv4.gateway 192.0.2.254 is not in the network of ipv4.address 10.0.0.1; name another, or none "
            "(camera 02:00:5e:10:00:01)",
            testing::MatchesRegex("3:6 wifi.key .*camera 02:00:5e:10:00:02.")));
}

TEST(PolicyFile, ARowAndThePolicyMustGoTogether) {
    const std::string defaults = "table = 'a.csv'\n[defaults]\nwifi.security = 'none'\n";
    EXPECT_THAT(policyFaults(defaults, {{"a.csv", "mac,wifi.key\n02:00:5e:10:00:01,env:KEY\n"}}),
                ElementsAre("table 2:2 wifi.key wifi.security is none, which has no key"));
    EXPECT_THAT(policyFaults(defaults, {{"a.csv", "mac,wifi.key,http-port\n02:00:5e:10:00:01,env:KEY,x\n"}}),
                ElementsAre("table 2:3 http-port must be a number from 1 to 65535"));
}
