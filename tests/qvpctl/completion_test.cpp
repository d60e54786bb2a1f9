#include "qvpctl/completion.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "client/settings/setting.h"
#include "qvpctl/known_cameras.h"
#include "support/temporary_folder.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

static const std::vector<CommandText> kCommandTexts = {
    {"discover",
     "",
     {{.names = {"--columns"},
       .type = "LIST",
       .help = "",
       .choices = {"mac", "name"},
       .isWord = false,
       .isNeeded = false,
       .isRepeated = false,
       .isCommon = false},
      {.names = {"-i", "--interface"},
       .type = "NAME",
       .help = "",
       .choices = {},
       .isWord = false,
       .isNeeded = false,
       .isRepeated = false,
       .isCommon = true},
      {.names = {"--json"},
       .type = "",
       .help = "",
       .choices = {},
       .isWord = false,
       .isNeeded = false,
       .isRepeated = false,
       .isCommon = true}}},
    {"set",
     "",
     {{.names = {"CAMERA"},
       .type = "",
       .help = "",
       .choices = {},
       .isWord = true,
       .isNeeded = true,
       .isRepeated = false,
       .isCommon = false},
      {.names = {"KEY=VALUE"},
       .type = "",
       .help = "",
       .choices = {},
       .isWord = true,
       .isNeeded = true,
       .isRepeated = true,
       .isCommon = false},
      {.names = {"--family"},
       .type = "NAME",
       .help = "",
       .choices = {"primary", "landap"},
       .isWord = false,
       .isNeeded = false,
       .isRepeated = false,
       .isCommon = true},
      {.names = {"--json"},
       .type = "",
       .help = "",
       .choices = {},
       .isWord = false,
       .isNeeded = false,
       .isRepeated = false,
       .isCommon = true}}},
};

class Completion : public testing::Test {
protected:
    void SetUp() override {
        setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1);
        client::Found gate{};
        gate.camera.name = "Front door";
        gate.camera.mac = {{2, 0, 0, 0, 0, 1}};
        client::Found hostile{};
        hostile.camera.name = "a\nb\x1b";
        hostile.camera.mac = {{2, 0, 0, 0, 0, 2}};
        rememberCameras({gate, hostile});
    }
    void TearDown() override { unsetenv("XDG_CACHE_HOME"); }

    static std::vector<std::string> of(const std::vector<std::string>& words) {
        return candidates(kCommandTexts, words);
    }

    static std::string answer(const std::vector<std::string>& arguments) {
        testing::internal::CaptureStdout();
        complete(kCommandTexts, arguments);
        std::cout.flush();
        return testing::internal::GetCapturedStdout();
    }

    TemporaryFolder folder_;
};

TEST_F(Completion, OfCommands) {
    EXPECT_THAT(of({""}), ElementsAre("discover", "set"));
    EXPECT_THAT(of({"s"}), ElementsAre("set"));
    EXPECT_THAT(of({"--v"}), ElementsAre("--version"));
    EXPECT_THAT(of({"nonsense", ""}), IsEmpty());
}

TEST_F(Completion, OfCamerasOfTheLastDiscovery) {
    EXPECT_THAT(of({"set", ""}), ElementsAre("Front door", "02:00:00:00:00:01", "02:00:00:00:00:02"));
    EXPECT_THAT(of({"set", "--json", "--family", "primary", "Fr"}), ElementsAre("Front door"));
    rememberCameras({});
    EXPECT_THAT(of({"set", ""}), IsEmpty());
}

TEST_F(Completion, OfSettingsAndTheirValues) {
    EXPECT_THAT(of({"set", "Gate", "http"}), ElementsAre("http-port="));
    EXPECT_THAT(of({"set", "Gate", "upnp=on", "ipv4.method="}), ElementsAre("ipv4.method=dhcp", "ipv4.method=static"));
    EXPECT_THAT(of({"set", "Gate", "wifi.key="}), ElementsAre("wifi.key=@", "wifi.key=env:", "wifi.key=-"));
    EXPECT_THAT(of({"set", "Gate", "time.zone=Europe/Be"}), Contains("time.zone=Europe/Berlin"));
    EXPECT_THAT(of({"set", "Gate", "nme=x"}), IsEmpty());
    EXPECT_THAT(of({"set", "Gate", ""}), Not(Contains("pppoe.user=")));
}

TEST_F(Completion, EverySettingThatCanBeSetIsOffered) {
    const auto keys = of({"set", "Gate", ""});
    for (const client::Setting& setting : client::allSettings()) {
        EXPECT_EQ(std::ranges::count(keys, setting.key + std::string("=")), setting.isReadOnly() ? 0 : 1)
            << setting.key;
    }
}

TEST_F(Completion, OfOptions) {
    EXPECT_THAT(of({"discover", "--"}), ElementsAre("--columns", "--interface", "--json"));
    EXPECT_THAT(of({"set", "Gate", "--family", ""}), ElementsAre("primary", "landap"));
    EXPECT_THAT(of({"discover", "--columns", ""}), ElementsAre("mac", "name"));
    EXPECT_THAT(of({"discover", "--columns", "mac,n"}), ElementsAre("mac,name"));
    EXPECT_THAT(of({"discover", "--columns", "mac,"}), ElementsAre("mac,name"));
    EXPECT_THAT(of({"discover", "--json", ""}), IsEmpty());
}

TEST_F(Completion, TakesALineApartAsAShellDoes) {
    EXPECT_THAT(takeApart("qvpctl set Front\\ door  'a b' \"c d\" ").words,
                ElementsAre("qvpctl", "set", "Front door", "a b", "c d", ""));
    EXPECT_EQ(takeApart("qvpctl 'a").openQuote, '\'');
    EXPECT_EQ(takeApart("qvpctl \"a").openQuote, '"');
    EXPECT_EQ(takeApart("qvpctl 'a'").openQuote, '\0');
    EXPECT_THAT(takeApart("qvpctl a\\").words, ElementsAre("qvpctl", "a\\"));
    EXPECT_THAT(takeApart("").words, ElementsAre(""));
}

TEST_F(Completion, BashGetsItsPartOfTheWordQuotedAsItWasBegun) {
    EXPECT_EQ(answer({"bash", "qvpctl set Fr", "Fr"}), "Front\\ door\n");
    EXPECT_EQ(answer({"bash", "qvpctl set 'Fr", "Fr"}), "Front door\n");
    EXPECT_EQ(answer({"bash", "qvpctl set Front\\ door upnp=", ""}), "on\noff\n");
    EXPECT_EQ(answer({"bash", "qvpctl set 02:00:00:00:00:0", "0"}), "01\n02\n");
    EXPECT_EQ(answer({"bash", "qvpctl", "qvpctl"}), "");
    EXPECT_EQ(answer({"words", "set", "Fr"}), "Front door\n");
    EXPECT_EQ(answer({"bash"}) + answer({}) + answer({"fish", "set"}), "");
}

TEST_F(Completion, ACacheThatCannotBeWrittenIsNone) {
    setenv("XDG_CACHE_HOME", "/dev/null", 1);
    rememberCameras({client::Found{}});
    EXPECT_THAT(knownCameras(), IsEmpty());
    setenv("XDG_CACHE_HOME", "relative", 1);
    setenv("HOME", folder_.path().c_str(), 1);
    rememberCameras({client::Found{}});
    EXPECT_TRUE(std::filesystem::exists(folder_ / ".cache/qvpctl/cameras"));
    EXPECT_THAT(knownCameras(), ElementsAre("00:00:00:00:00:00"));
}

TEST_F(Completion, NothingIsLeftBesideTheCache) {
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_ / "qvpctl")) files++;
    EXPECT_EQ(files, 1u);
}
