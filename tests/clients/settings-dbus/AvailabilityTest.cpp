#include <algorithm>
#include <csignal>

#include <sys/wait.h>

#include "Fixture.h"
#include "support/LineClient.h"
#include "support/RegularExpression.h"

using namespace SettingsDbusTests;

namespace {

class DbusAvailability : public Fixture {
protected:
    void SetUp() override {
        startAll();
        startMonitor();
    }
    /// Stops the bridge until SIGCONT, so that it misses what happens.
    void pauseBridge() {
        bridge->sendSignal(SIGSTOP);
        int status = 0;
        ::waitpid(bridge->pid(), &status, WUNTRACED);
    }
    /// `(key, to, sequence)` of a signal.
    static std::string brief(const std::string& changed) {
        const auto parts = TestSupport::matchOf(changed, R"(\('(\w+)', '[^']*', '([^']*)', uint64 ([0-9]+), .*\))");
        return parts.empty() ? changed : parts[1] + "=" + parts[2] + " " + parts[3];
    }
    Words changes(std::size_t count) {
        Words found = signals("Changed", count);
        std::transform(found.begin(), found.end(), found.begin(), brief);
        return found;
    }
};

}  // namespace

TEST_F(DbusAvailability, EveryChangeIsReportedInOrderWithoutAGap) {
    constexpr int count = 1000;
    TestSupport::LineClient client(socketPath());
    std::string requests;
    for (int number = 1; number <= count; ++number) {
        requests += R"({"type":24,"messageId":"m","timestamp":)" + std::to_string(1700000000000 + number) +
                    R"(,"payload":{"settingDBId":"timezone","to":"zone )" + std::to_string(number) + "\"}}\n";
    }
    client.send(requests);
    for (int number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number);
        // The host does not read from a client that does not read.
        client.receiveLine();
        const auto line = monitor->output().readLine();
        ASSERT_TRUE(line) << number;
        const std::string values = line->substr(line->find(' ') + 1);
        ASSERT_EQ(values,
                  "org.freedesktop.DBus.Properties.PropertiesChanged ('org.settingshandler.Settings1', "
                  "{'Timezone': <'zone " +
                      text + "'>}, @as [])");
        std::string change = "timezone=zone ";
        change += text;
        change += " ";
        change += text;
        ASSERT_EQ(changes(1).front(), change);
    }
    EXPECT_EQ(get("Timezone"), "s \"zone 1000\"");
}

TEST_F(DbusAvailability, TheHostIsKilledAndComesBack) {
    settingsctl({"set", "timezone", "Asia/Tokyo", "captionsFontSize", "FONT_LARGE"});
    EXPECT_EQ(changes(2), (Words{"timezone=Asia/Tokyo 1", "captionsFontSize=FONT_LARGE 2"}));
    host.reset();
    waitForLog("closed the connection");
    EXPECT_EQ(get("Timezone"), "s \"Asia/Tokyo\"");
    // Another run that the bridge does not see.
    const std::string elsewhere = folder / "elsewhere";
    std::filesystem::create_directory(elsewhere);
    startHost(elsewhere);
    settingsctl({"--socket", elsewhere + "/settings-host/settings.sock", "set", "timezone", "Europe/Paris"});
    host.reset();
    startHost();
    EXPECT_EQ(changes(1), (Words{"timezone=Europe/Paris 0"}));
    EXPECT_EQ(get("Timezone"), "s \"Europe/Paris\"");
    EXPECT_EQ(get("CaptionsFontSize"), "s \"FONT_LARGE\"");
    settingsctl({"set", "timezone", "Asia/Tokyo"});
    EXPECT_EQ(changes(1), (Words{"timezone=Asia/Tokyo 1"}));
}

TEST_F(DbusAvailability, TheBridgeIsKilledAndComesBack) {
    settingsctl({"set", "captionsStyles", "STYLE_YELLOW_ON_BLUE"});
    EXPECT_EQ(changes(1), (Words{"captionsStyles=STYLE_YELLOW_ON_BLUE 1"}));
    bridge->sendSignal(SIGKILL);
    bridge->wait();
    settingsctl({"set", "timezone", "Asia/Tokyo"});
    settingsctl({"set", "captionsFontSize", "FONT_LARGE"});
    settingsctl({"set", "timezone", "Europe/Paris"});
    startBridge();
    // The newest change of each setting, in their order.
    EXPECT_EQ(changes(3), (Words{"captionsStyles=STYLE_YELLOW_ON_BLUE 1", "captionsFontSize=FONT_LARGE 3",
                                 "timezone=Europe/Paris 4"}));
    EXPECT_EQ(get("Timezone"), "s \"Europe/Paris\"");
}

TEST_F(DbusAvailability, TheNameIsTakenWhenTheBusComesBack) {
    bus.reset();
    waitForLog("the connection to the bus was lost");
    pauseBridge();
    startBus();
    std::optional<ChildProcess> other(std::in_place, Words{SETTINGS_DBUS_PROGRAM, "--log-level", "1"}, environment());
    while (other->errors().readLine().value().find("serving") == std::string::npos) {
    }
    bridge->sendSignal(SIGCONT);
    waitForLog(
        "cannot reconnect to the bus: cannot acquire the name org.settingshandler.Settings1 on the bus: File "
        "exists");
    other.reset();
    waitForLog("reconnected to the bus");
    EXPECT_EQ(get("Timezone"), "s \"America/Vancouver\"");
}

TEST_F(DbusAvailability, TheBusIsKilledAndComesBack) {
    bus.reset();
    waitForLog("the connection to the bus was lost");
    settingsctl({"set", "timezone", "Asia/Tokyo"});
    settingsctl({"set", "timezone", "Europe/Paris"});
    pauseBridge();
    startBus();
    startMonitor();
    bridge->sendSignal(SIGCONT);
    EXPECT_EQ(changes(1), (Words{"timezone=Europe/Paris 2"}));
    EXPECT_EQ(get("Timezone"), "s \"Europe/Paris\"");
    set({"Timezone", "s", "Asia/Tokyo"});
    EXPECT_EQ(changes(1), (Words{"timezone=Asia/Tokyo 3"}));
}
