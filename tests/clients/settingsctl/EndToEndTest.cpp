#include <map>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "RunningHost.h"
#include "Wire/Catalogue.h"
#include "clients/support/Peer.h"
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

TEST_F(SettingsCtlAndHost, ReportTooManyClientsAndRecover) {
    const std::string noRoom = "settingsctl: the host has reached its limit of clients; try again later\n";
    std::vector<std::unique_ptr<WireTests::HostClient>> clients;
    for (int number = 0; number < 128; ++number) {
        clients.push_back(std::make_unique<WireTests::HostClient>(host.socketPath()));
        clients.push_back(std::make_unique<WireTests::HostClient>(host.devicePath()));
    }
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"get", "deviceName"}, {"set", "deviceName", "Den"}, {"watch"}, {"device", "show"}}) {
        expectRun(arguments, 3, "", noRoom);
    }
    clients.front()->sendLine("x");
    EXPECT_TRUE(clients.front()->receiveLine()) << "connected clients are still served";
    clients.clear();
    const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    while (host.run({"get", "deviceName"}).status != 0 && std::chrono::steady_clock::now() < until) {
    }
    expectRun({"get", "deviceName"}, 0, "deviceName=TV\n");
}

TEST_F(SettingsCtlAndHost, PrintTheDefaultsOfTheCatalogueFromAFreshDatabase) {
    // Settings without a default begin with the values of the simulation, or without a value.
    std::map<std::string, std::string> values{{"captionsEnabled", "false"},
                                              {"doNotDisturbEnabled", "false"},
                                              {"orliaLocale", "[\"en-US\"]"},
                                              {"timezone", "America/Vancouver"}};
    for (const auto& setting : Wire::catalogue()) {
        if (setting.defaultValue) {
            values[setting.key] = *setting.defaultValue;
        }
    }
    EXPECT_EQ(values["deviceName"], "TV");
    std::string lines;
    for (const auto& [key, value] : values) {
        lines.append(key).append("=").append(value).append("\n");
    }
    expectRun({"get"}, 0, lines);
}

TEST_F(SettingsCtlAndHost, ListAKeyBeforeItHasAValue) {
    const std::string listed = host.run({"list"}).output;
    expectRun({"get", "tovanEntitlementStatus"}, 1, "", "settingsctl: 'tovanEntitlementStatus' has no value\n");
    expectRun({"set", "tovanEntitlementStatus", "entitled"}, 0, "tovanEntitlementStatus: '' -> 'entitled'\n");
    EXPECT_NE(listed.find("tovanEntitlementStatus\n"), std::string::npos) << listed;
    std::string reported;
    std::istringstream lines(host.run({"get"}).output);
    for (std::string line; std::getline(lines, line);) {
        reported += line.substr(0, line.find('=')) + "\n";
    }
    EXPECT_EQ(listed, reported) << "the host's catalogue differs";
}

TEST_F(SettingsCtlAndHost, KeepValuesWhenTheHostIsKilled) {
    expectRun({"set", "deviceName", "Living room"}, 0, "deviceName: 'TV' -> 'Living room'\n");
    expectRun({"set", "friendlyName", "Den"}, 0, "friendlyName: 'TV' -> 'Den'\n");
    expectRun({"set", "timezone", "Europe/Paris"}, 0, "timezone: 'America/Vancouver' -> 'Europe/Paris'\n");
    expectRun({"set", "orliaLocale", R"(["fr-FR","en-US"])"}, 0,
              "orliaLocale: '[\"en-US\"]' -> '[\"fr-FR\",\"en-US\"]'\n");
    expectRun({"set", "handsFreeEnabled", "true"}, 0, "handsFreeEnabled: 'false' -> 'true'\n");
    expectRun({"set", "--any-key", "ownKey", "own value"}, 0, "ownKey: '' -> 'own value'\n");
    host.killAndRestart();
    expectRun(
        {"get", "--any-key", "deviceName", "friendlyName", "timezone", "orliaLocale", "handsFreeEnabled", "ownKey"}, 0,
        "deviceName=Living room\nfriendlyName=Den\nhandsFreeEnabled=true\n"
        "orliaLocale=[\"fr-FR\",\"en-US\"]\nownKey=own value\ntimezone=Europe/Paris\n");
    expectRun({"set", "deviceName", "Living room"}, 0, "deviceName: unchanged\n");
    expectRun({"set", "--any-key", "ownKey", "own value"}, 0, "ownKey: unchanged\n");
}

TEST_F(SettingsCtlAndHost, KeepEveryByteOfAValue) {
    const std::string values[] = {"a\nb\r\t\x1b\x7f\xc2\x9b", "\"quotes' \\ %s",     "Küche 📺", "{}", "[a,b]",
                                  std::string(60000, 'v'),    std::string("--json"), " "};
    for (const auto& value : values) {
        const TestSupport::Finished end = host.run({"set", "--json", "--", "deviceName", value});
        EXPECT_EQ(end.status, 0) << value;
        EXPECT_EQ(host.run({"set", "--", "deviceName", value}).output, "deviceName: unchanged\n") << value;
    }
    expectRun({"set", "deviceName", std::string(70000, 'v')}, 1, "",
              "settingsctl: 'deviceName' was refused: the frame is larger than 64 KiB\n");
    expectRun({"get", "deviceName"}, 0, "deviceName= \n");
}

TEST_F(SettingsCtlAndHost, ReportWhyAValueIsRefused) {
    const std::string locale =
        "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
        "[\"en-US\"]\n";
    for (const std::string value : {"fr-FR", "[]", "{}", "\"fr-FR\"", "[1]", "5"}) {
        expectRun({"set", "orliaLocale", value}, 1, "", locale);
    }
    expectRun({"get", "--value", "orliaLocale"}, 0, "[\"en-US\"]\n");
    for (const std::string value : {"true", "false"}) {
        expectRun({"set", "captionsEnabled", value}, 1, "",
                  "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device "
                  "captions on|off'\n");
    }
}

TEST_F(SettingsCtlAndHost, OverruleANewerTimeStampIfForced) {
    WireTests::HostClient client(host.socketPath());
    client.sendLine(
        R"({"type":24,"timestamp":9000000000000000,"payload":{"settingDBId":"deviceName","to":"from the future"}})");
    ASSERT_TRUE(client.receiveLine());
    expectRun({"set", "deviceName", "Den"}, 1, "",
              "settingsctl: 'deviceName' was refused: the host has seen a request with a newer time stamp; "
              "use 'settingsctl set --force' to set it anyway\n");
    expectRun({"set", "--force", "deviceName", "Den", "friendlyName", "Den"}, 0,
              "deviceName: 'from the future' -> 'Den'\nfriendlyName: 'TV' -> 'Den'\n");
}

TEST_F(SettingsCtlAndHost, SetSeveralPairsAndReportEach) {
    expectRun({"set", "deviceName", "Den", "orliaLocale", "x", "deviceName", "Attic", "friendlyName", "TV"}, 1,
              "deviceName: 'TV' -> 'Den'\ndeviceName: 'Den' -> 'Attic'\nfriendlyName: unchanged\n",
              "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
              "[\"en-US\"]\n");
    expectRun({"get", "deviceName"}, 0, "deviceName=Attic\n");
}

TEST_F(SettingsCtlAndHost, WatchChangesByClientsAndTheDevice) {
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

TEST_F(SettingsCtlAndHost, WatchEventsAsJson) {
    auto watch = host.start({"watch", "--json"});
    expectWatching(watch);
    host.run({"set", "deviceName", "Den"});
    host.run({"device", "handsfree", "on"});
    const auto hasMembers = [](const std::string& line, const std::string& middle) {
        return line.rfind(R"({"type":25,"messageId":")", 0) == 0 && line.find(middle) != std::string::npos;
    };
    EXPECT_PRED2(
        hasMembers, watch.output().readLine().value_or(""),
        R"("sequence":1,"origin":"socket","client":"settingsctl","payload":{"settingDBId":"deviceName","from":"TV","to":"Den"}})");
    EXPECT_PRED2(
        hasMembers, watch.output().readLine().value_or(""),
        R"("sequence":2,"origin":"device","payload":{"settingDBId":"handsFreeEnabled","from":"false","to":"true"}})");
}

TEST_F(SettingsCtlAndHost, EndTheWatchWhenTheHostStopsIfAskedTo) {
    auto watch = host.start({"watch", "--no-reconnect"});
    expectWatching(watch);
    EXPECT_EQ(host.stop(), 0);
    EXPECT_EQ(watch.wait(), 3);
    EXPECT_EQ(watch.errors().readAll(), "settingsctl: the host at " + host.socketPath() + " closed the connection\n");
    for (const std::string verb : {"get", "watch"}) {
        expectRun({"--socket", host.socketPath(), verb}, 3, "",
                  "settingsctl: cannot reach the host at " + host.socketPath() +
                      ": No such file or directory (is settings-host running?)\n");
    }
}

TEST_F(SettingsCtlAndHost, WatchOverARestartOfTheHost) {
    auto watch = host.start({"watch"});
    expectWatching(watch);
    host.run({"set", "deviceName", "Den"});
    host.killAndRestart();
    EXPECT_EQ(watch.output().readLine(), "deviceName: 'TV' -> 'Den'");
    EXPECT_EQ(watch.errors().readLine(),
              "settingsctl: the host at " + host.socketPath() + " closed the connection; reconnecting");
    EXPECT_EQ(watch.output().readLine(), "reread: all settings");
    expectWatching(watch);
    host.run({"set", "deviceName", "Attic"});
    EXPECT_EQ(watch.output().readLine(), "deviceName: 'Den' -> 'Attic'");
}

TEST_F(SettingsCtlAndHost, WatchWithoutAGapWhileTheConnectionIsLost) {
    // A relay between the program and the host, which the test interrupts.
    const ClientTests::ListeningSocket relay(host.runtimeFolder() + "/relay.sock");
    auto watch = host.start({"--socket", host.runtimeFolder() + "/relay.sock", "watch"});
    const auto relayHello = [&](ClientTests::Peer& program, std::size_t frames) {
        auto connection = std::make_unique<WireTests::HostClient>(host.socketPath());
        connection->sendLine(program.receiveLine());
        for (std::size_t frame = 0; frame < frames; ++frame) {
            program.sendLine(connection->receiveLine().value_or("nothing"));
        }
        return connection;
    };
    auto first = relay.accept();
    const auto before = relayHello(first, 1);
    EXPECT_EQ(watch.errors().readLine(), "settingsctl: watching " + host.runtimeFolder() + "/relay.sock");
    first.close();
    host.run({"set", "deviceName", "Den"});
    host.run({"device", "captions", "on"});
    host.run({"set", "deviceName", "Attic"});
    auto second = relay.accept();
    const auto after = relayHello(second, 3);
    for (const std::string line :
         {"deviceName: 'TV' -> 'Den'", "deviceName: 'Den' -> 'Attic'", "reread: captionsEnabled"}) {
        EXPECT_EQ(watch.output().readLine(), line);
    }
}

TEST_F(SettingsCtlAndHost, ClearTheUsersValuesOnLogOut) {
    host.run({"set", "deviceName", "Den"});
    host.run({"set", "friendlyName", "Den"});
    host.run({"set", "timezone", "Europe/Paris"});
    host.run({"set", "handsFreeEnabled", "true"});
    expectRun({"logout"}, 0, "");
    expectRun({"get", "deviceName", "friendlyName", "handsFreeEnabled", "timezone"}, 0,
              "deviceName=TV\nfriendlyName=TV\nhandsFreeEnabled=false\ntimezone=Europe/Paris\n");
}

TEST_F(SettingsCtlAndHost, PrintTheSelectionAndOpenTheSettings) {
    expectRun({"selected"}, 0, "true\n");
    expectRun({"selected", "--json"}, 0, "{\"isOrliaSelectedAsVA\":true}\n");
    expectRun({"open-settings"}, 0, "");
    const std::string shown = host.run({"device", "show"}).output;
    EXPECT_NE(shown.find("\nlastLaunchedApp="), std::string::npos) << shown;
}

TEST_F(SettingsCtlAndHost, ControlTheDevice) {
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

TEST_F(SettingsCtlAndHost, ReportWhyTheDeviceChangedNothing) {
    for (const std::string value : {"true", "false"}) {
        expectRun({"device", "setting", "captionsEnabled", value}, 1, "",
                  "settingsctl: the host refused the request: nothing changed: 'captionsEnabled' is set only with the "
                  "command \"captions\" (read-only)\n");
    }
    expectRun({"device", "setting", "doNotDisturbEnabled", "true"}, 1, "",
              "settingsctl: the host refused the request: nothing changed: 'doNotDisturbEnabled' is set only with the "
              "command \"doNotDisturb\" (read-only)\n");
    expectRun({"get", "captionsEnabled", "doNotDisturbEnabled"}, 0,
              "captionsEnabled=false\ndoNotDisturbEnabled=false\n");
    expectRun(
        {"device", "setting", "orliaLocale", "fr-FR"}, 1, "",
        "settingsctl: the host refused the request: nothing changed: the value must be a JSON array with at least one "
        "locale (wrong-form)\n");
    expectRun({"device", "setting", "--any-key", std::string(300, 'k'), "v"}, 1, "",
              "settingsctl: the host refused the request: nothing changed: the storage refused the value; see the "
              "host's log (not-stored)\n");
    for (const std::string key : {"deviceName", "friendlyName", "ownKey", "tovanEntitlementStatus", "timezone"}) {
        expectRun({"device", "setting", "--any-key", key, "Den"}, 0, "");
        expectRun({"device", "setting", "--any-key", key, "Den"}, 0, key + ": unchanged\n");
    }
    expectRun({"device", "setting", "orliaLocale", "[\"en-US\"]"}, 0, "orliaLocale: unchanged\n");
    expectRun({"device", "setting", "orliaLocale", "[ \"en-US\"]"}, 0, "");
    expectRun({"device", "setting", "handsFreeEnabled", "x"}, 0, "");
    expectRun({"device", "setting", "handsFreeEnabled", "x"}, 0, "handsFreeEnabled: unchanged\n");
}

TEST_F(SettingsCtlAndHost, ReportValuesThatTheDeviceRejects) {
    expectRun({"device", "setting", "orliaLocale", "{}"}, 1, "",
              "settingsctl: the host refused the request: the value must be a JSON array of at most 32 levels "
              "(not-passed-on)\n");
    expectRun({"device", "locale", ""}, 1, "",
              "settingsctl: the host refused the request: \"value\" must be a locale, for example \"fr-FR\" "
              "(bad-argument)\n");
    expectRun({"selected"}, 0, "true\n");
}
