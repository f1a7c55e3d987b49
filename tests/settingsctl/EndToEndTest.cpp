#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "RunningHost.h"
#include "wire/HostClients.h"

using namespace SettingsCtlTests;

namespace {

/// The program and a real host.
class SettingsCtlAndHost : public testing::Test {
protected:
    void expectRun(const std::vector<std::string>& arguments, int status, const std::string& output,
                   const std::string& errors = "") {
        const TestSupport::Finished end = host.run(arguments);
        EXPECT_EQ(end.output, output);
        EXPECT_EQ(end.errors, errors);
        EXPECT_EQ(end.status, status) << testing::PrintToString(arguments);
    }

    /// Waits until a started `watch` is served.
    void expectWatching(TestSupport::ChildProcess& watch) {
        EXPECT_EQ(watch.errors().readLine(), "settingsctl: watching " + host.socketPath());
    }

    RunningHost host;
};

}  // namespace

TEST_F(SettingsCtlAndHost, TellWhenThereIsNoRoomAndWorkWhenThereIs) {
    const std::string noRoom = "settingsctl: the host serves as many clients as it can; try again when one has left\n";
    std::vector<std::unique_ptr<WireTests::HostClient>> evictions;
    for (int number = 0; number < 128; ++number) {
        evictions.push_back(std::make_unique<WireTests::HostClient>(host.socketPath()));
        evictions.push_back(std::make_unique<WireTests::HostClient>(host.devicePath()));
    }
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"get", "deviceName"}, {"set", "deviceName", "Den"}, {"watch"}, {"device", "show"}}) {
        expectRun(arguments, 3, "", noRoom);
    }
    evictions.front()->sendLine("x");
    EXPECT_TRUE(evictions.front()->receiveLine()) << "those inside are served";
    evictions.clear();
    const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    while (host.run({"get", "deviceName"}).status != 0 && std::chrono::steady_clock::now() < until) {
    }
    expectRun({"get", "deviceName"}, 0, "deviceName=TV\n");
}

TEST_F(SettingsCtlAndHost, ShowEverySettingOfAFreshDatabase) {
    expectRun({"get"}, 0,
              "captionsEnabled=false\n"
              "captionsFontSize=FONT_MEDIUM\n"
              "captionsStyles=STYLE_WHITE_ON_BLACK\n"
              "companionDevice=[\"\",\"\"]\n"
              "deviceName=TV\n"
              "doNotDisturbEnabled=false\n"
              "friendlyName=TV\n"
              "handsFreeAlwaysOnDiscovered=false\n"
              "handsFreeAlwaysOnEnabled=false\n"
              "handsFreeEnabled=false\n"
              "orliaLocale=[\"en-US\"]\n"
              "pttAlwaysOnDiscovered=false\n"
              "pttAlwaysOnEnabled=false\n"
              "timezone=America/Vancouver\n");
}

TEST_F(SettingsCtlAndHost, ListAKeyBeforeItHasAValue) {
    const std::string listed = host.run({"list", "--json"}).output;
    expectRun({"get", "tovanEntitlementStatus"}, 1, "", "settingsctl: 'tovanEntitlementStatus' has no value\n");
    expectRun({"set", "tovanEntitlementStatus", "entitled"}, 0, "tovanEntitlementStatus: '' -> 'entitled'\n");
    EXPECT_NE(listed.find("\"tovanEntitlementStatus\""), std::string::npos) << listed;
    std::string reported = "[";
    for (std::istringstream lines(host.run({"get"}).output); lines;) {
        std::string line;
        if (std::getline(lines, line)) {
            reported += (reported.size() == 1 ? "\"" : ",\"") + line.substr(0, line.find('=')) + "\"";
        }
    }
    EXPECT_EQ(listed, reported + "]\n") << "the host's catalogue is another one";
}

TEST_F(SettingsCtlAndHost, KeepWhatWasSetWhenTheHostIsKilled) {
    expectRun({"set", "deviceName", "Living room"}, 0, "deviceName: 'TV' -> 'Living room'\n");
    expectRun({"set", "friendlyName", "Den"}, 0, "friendlyName: 'TV' -> 'Den'\n");
    expectRun({"set", "timezone", "Europe/Paris"}, 0, "timezone: 'America/Vancouver' -> 'Europe/Paris'\n");
    expectRun({"set", "orliaLocale", R"(["fr-FR","en-US"])"}, 0,
              "orliaLocale: '[\"en-US\"]' -> '[\"fr-FR\",\"en-US\"]'\n");
    expectRun({"set", "handsFreeEnabled", "true"}, 0, "handsFreeEnabled: 'false' -> 'true'\n");
    expectRun({"set", "ownKey", "own value"}, 0, "ownKey: '' -> 'own value'\n");
    host.killAndRestart();
    expectRun({"get", "deviceName", "friendlyName", "timezone", "orliaLocale", "handsFreeEnabled", "ownKey"}, 0,
              "deviceName=Living room\nfriendlyName=Den\nhandsFreeEnabled=true\n"
              "orliaLocale=[\"fr-FR\",\"en-US\"]\nownKey=own value\ntimezone=Europe/Paris\n");
    expectRun({"set", "deviceName", "Living room"}, 0, "deviceName: unchanged\n");
    expectRun({"set", "ownKey", "own value"}, 0, "ownKey: unchanged\n");
}

TEST_F(SettingsCtlAndHost, CarryEveryValueWhole) {
    const std::string values[] = {"a\nb\r\t\x1b\x7f\xc2\x9b",
                                  "\"quotes' \\ %s",
                                  "K\xc3\xbc"
                                  "che \xf0\x9f\x93\xba",
                                  "{}",
                                  "[a,b]",
                                  std::string(60000, 'v'),
                                  std::string("--json"),
                                  " "};
    for (const auto& value : values) {
        const TestSupport::Finished end = host.run({"set", "--json", "--", "deviceName", value});
        EXPECT_EQ(end.status, 0) << value;
        EXPECT_EQ(host.run({"set", "--", "deviceName", value}).output, "deviceName: unchanged\n") << value;
    }
    expectRun({"set", "deviceName", std::string(70000, 'v')}, 1, "",
              "settingsctl: the host refused the request: the frame is larger than 64 KiB (too-large)\n");
    expectRun({"get", "deviceName"}, 0, "deviceName= \n");
}

TEST_F(SettingsCtlAndHost, SayWhyAValueIsRefused) {
    const std::string locale =
        "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
        "[\"en-US\"]\n";
    for (const std::string value : {"fr-FR", "[]", "{}", "\"fr-FR\"", "[1]", "5"}) {
        expectRun({"set", "orliaLocale", value}, 1, "", locale);
    }
    expectRun({"get", "--value", "orliaLocale"}, 0, "[\"en-US\"]\n");
    expectRun({"set", "captionsEnabled", "true"}, 1, "",
              "settingsctl: 'captionsEnabled' was refused: it is set on the device only, with 'settingsctl device "
              "captions on|off'\n");
    expectRun({"set", "captionsEnabled", "false"}, 0, "captionsEnabled: unchanged\n");
}

TEST_F(SettingsCtlAndHost, RefuseWhatIsOlderThanTheNewestRequest) {
    WireTests::HostClient client(host.socketPath());
    client.sendLine(
        R"({"type":24,"timestamp":9000000000000000,"payload":{"settingDBId":"deviceName","to":"from the future"}})");
    ASSERT_TRUE(client.receiveLine());
    expectRun({"set", "deviceName", "Den"}, 1, "",
              "settingsctl: 'deviceName' was refused: the host did not accept it, or had seen a newer request; its log "
              "says why\n");
}

TEST_F(SettingsCtlAndHost, WatchWhatClientsAndTheDeviceChange) {
    auto watch = host.start({"watch"});
    expectWatching(watch);
    host.run({"set", "deviceName", "Den"});
    host.run({"set", "deviceName", "Den"});
    host.run({"device", "setting", "deviceName", "Attic"});
    host.run({"device", "locale", "fr-FR"});
    host.run({"device", "captions", "on"});
    host.run({"device", "handsfree", "on"});
    host.run({"logout"});
    for (const std::string line :
         {"deviceName: 'TV' -> 'Den'", "deviceName: 'Den' -> 'Attic'", "reread: orliaLocale", "reread: captionsEnabled",
          "handsFreeEnabled: 'false' -> 'true'", "reread: deviceName, handsFreeEnabled"}) {
        EXPECT_EQ(watch.output().readLine(), line);
    }
}

TEST_F(SettingsCtlAndHost, WatchWholeEventsInJson) {
    auto watch = host.start({"watch", "--json"});
    expectWatching(watch);
    host.run({"set", "deviceName", "Den"});
    host.run({"device", "handsfree", "on"});
    const auto hasMembers = [](const std::string& line, const std::string& middle) {
        return line.rfind(R"({"type":25,"messageId":")", 0) == 0 && line.find(middle) != std::string::npos;
    };
    EXPECT_PRED2(hasMembers, watch.output().readLine().value_or(""),
                 R"("sequence":1,"origin":"socket","payload":{"settingDBId":"deviceName","from":"TV","to":"Den"}})");
    EXPECT_PRED2(
        hasMembers, watch.output().readLine().value_or(""),
        R"("sequence":2,"origin":"device","payload":{"settingDBId":"handsFreeEnabled","from":"false","to":"true"}})");
}

TEST_F(SettingsCtlAndHost, EndTheWatchWhenTheHostStops) {
    auto watch = host.start({"watch"});
    expectWatching(watch);
    EXPECT_EQ(host.stop(), 0);
    EXPECT_EQ(watch.wait(), 3);
    EXPECT_EQ(watch.errors().readAll(), "settingsctl: the host at " + host.socketPath() + " closed the connection\n");
    expectRun({"--socket", host.socketPath(), "get"}, 3, "",
              "settingsctl: cannot reach the host at " + host.socketPath() +
                  ": No such file or directory (is settings-host running?)\n");
}

TEST_F(SettingsCtlAndHost, ForgetTheUserOnLogOut) {
    host.run({"set", "deviceName", "Den"});
    host.run({"set", "friendlyName", "Den"});
    host.run({"set", "timezone", "Europe/Paris"});
    host.run({"set", "handsFreeEnabled", "true"});
    expectRun({"logout"}, 0, "");
    expectRun({"get", "deviceName", "friendlyName", "handsFreeEnabled", "timezone"}, 0,
              "deviceName=TV\nfriendlyName=TV\nhandsFreeEnabled=false\ntimezone=Europe/Paris\n");
}

TEST_F(SettingsCtlAndHost, AskForTheAssistantAndItsSettings) {
    expectRun({"selected"}, 0, "true\n");
    expectRun({"selected", "--json"}, 0, "{\"isOrliaSelectedAsVA\":true}\n");
    expectRun({"open-settings"}, 0, "");
    const std::string shown = host.run({"device", "show"}).output;
    EXPECT_NE(shown.find("\nlastLaunchedApp="), std::string::npos) << shown;
}

TEST_F(SettingsCtlAndHost, DriveTheDevice) {
    expectRun({"device", "show"}, 0,
              "captionsEnabled=false\ncurrentAlwaysOnPTTMode=off\ncurrentAlwaysOnVoiceMode=off\n"
              "currentHandsFreeStatus=off\ndoNotDisturbEnabled=false\nlocales=[\"en-US\"]\n"
              "timezone=America/Vancouver\n");
    expectRun({"device", "locales", "fr-FR", "en-US"}, 0, "");
    expectRun({"device", "timezone", "Europe/Paris"}, 0, "");
    expectRun({"device", "handsfree", "on"}, 0, "");
    expectRun({"device", "captions", "on"}, 0, "");
    expectRun({"device", "do-not-disturb", "on"}, 0, "");
    expectRun({"device", "setting", "pttAlwaysOnEnabled", "true"}, 0, "");
    expectRun({"device", "show", "--json"}, 0,
              R"({"captionsEnabled":"true","currentAlwaysOnPTTMode":"on","currentAlwaysOnVoiceMode":"off",)"
              R"("currentHandsFreeStatus":"on","doNotDisturbEnabled":"true","locales":"[\"fr-FR\",\"en-US\"]",)"
              R"("timezone":"Europe/Paris"})"
              "\n");
    expectRun({"get", "captionsEnabled", "doNotDisturbEnabled", "handsFreeEnabled", "orliaLocale", "pttAlwaysOnEnabled",
               "timezone"},
              0,
              "captionsEnabled=true\ndoNotDisturbEnabled=true\nhandsFreeEnabled=true\n"
              "orliaLocale=[\"fr-FR\",\"en-US\"]\npttAlwaysOnEnabled=true\ntimezone=Europe/Paris\n");
}

TEST_F(SettingsCtlAndHost, SayWhyNothingChangedAtTheDevice) {
    for (const std::string value : {"true", "false"}) {
        expectRun(
            {"device", "setting", "captionsEnabled", value}, 1, "",
            "settingsctl: the host refused the request: nothing changed: 'captionsEnabled' is set with the command "
            "\"captions\" only, whatever the device reports (read-only)\n");
    }
    expectRun(
        {"device", "setting", "doNotDisturbEnabled", "true"}, 1, "",
        "settingsctl: the host refused the request: nothing changed: 'doNotDisturbEnabled' is set with the command "
        "\"doNotDisturb\" only, whatever the device reports (read-only)\n");
    expectRun({"get", "captionsEnabled", "doNotDisturbEnabled"}, 0,
              "captionsEnabled=false\ndoNotDisturbEnabled=false\n");
    expectRun(
        {"device", "setting", "orliaLocale", "fr-FR"}, 1, "",
        "settingsctl: the host refused the request: nothing changed: the value is no JSON array with at least one "
        "locale (wrong-form)\n");
    expectRun({"device", "setting", std::string(300, 'k'), "v"}, 1, "",
              "settingsctl: the host refused the request: nothing changed: the storage did not take the value; the "
              "host's log says why (not-stored)\n");
    for (const std::string key : {"deviceName", "friendlyName", "ownKey", "tovanEntitlementStatus", "timezone"}) {
        expectRun({"device", "setting", key, "Den"}, 0, "");
        expectRun({"device", "setting", key, "Den"}, 0, key + ": unchanged\n");
    }
    expectRun({"device", "setting", "orliaLocale", "[\"en-US\"]"}, 0, "orliaLocale: unchanged\n");
    expectRun({"device", "setting", "orliaLocale", "[ \"en-US\"]"}, 0, "");
    expectRun({"device", "setting", "handsFreeEnabled", "x"}, 0, "");
    expectRun({"device", "setting", "handsFreeEnabled", "x"}, 0, "handsFreeEnabled: unchanged\n");
}

TEST_F(SettingsCtlAndHost, SayWhatTheDeviceDoesNotTake) {
    expectRun({"device", "setting", "orliaLocale", "{}"}, 1, "",
              "settingsctl: the host refused the request: the value is no array of locales within the nesting limit "
              "(not-passed-on)\n");
    expectRun({"device", "locale", ""}, 1, "",
              "settingsctl: the host refused the request: \"value\" must be a locale, for example \"fr-FR\" "
              "(bad-argument)\n");
    expectRun({"selected"}, 0, "true\n");
}
