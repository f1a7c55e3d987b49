#include <csignal>

#include "Fixture.h"
#include "support/NotificationSocket.h"

using namespace SettingsDbusTests;

namespace {

class DbusOptions : public Fixture {
protected:
    Finished run(const Words& arguments) const {
        return TestSupport::run(Words{SETTINGS_DBUS_PROGRAM} + arguments, environment());
    }
};

}  // namespace

TEST_F(DbusOptions, PrintHelpAndVersion) {
    const auto help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("--session"), std::string::npos);
    const auto version = run({"--version"});
    EXPECT_EQ(version.output.find("settings-dbus " SETTINGS_HANDLER_VERSION " ("), 0U) << version.output;
}

TEST_F(DbusOptions, ThatAreWrongEndTheProgramWithStatus2) {
    const auto result = run({"--nothing"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "settings-dbus: The following argument was not expected: --nothing\n");
}

TEST_F(DbusOptions, NoBusOrNoNameEndsTheProgramWithStatus1) {
    const auto without = run({});
    EXPECT_EQ(without.status, 1);
    EXPECT_NE(without.errors.find("\nsettings-dbus: cannot connect to the bus: No such file or directory\n"),
              std::string::npos);
    startAll();
    const auto second = run({});
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.errors.find("cannot acquire the name org.settingshandler.Settings1 on the bus: File exists\n"),
              std::string::npos);
}

TEST_F(DbusOptions, SelectTheSessionBusAndTheSocketOfTheHost) {
    startBus();
    startHost();
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM, "--session", "--socket", socketPath()},
                   std::map<std::string, std::string>{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + busPath()},
                                                      {"XDG_RUNTIME_DIR", ""}});
    waitForLog("connected to " + socketPath());
    waitForLog("serving");
    EXPECT_EQ(get("Timezone"), "s \"America/Vancouver\"");
}

TEST_F(DbusOptions, TheServiceManagerAndTheDoctorAreToldTheState) {
    TestSupport::NotificationSocket manager(folder / "notify");
    startBus();
    startHost();
    auto variables = environment();
    variables["NOTIFY_SOCKET"] = folder / "notify";
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, variables);
    EXPECT_EQ(manager.receive(), "READY=1\nSTATUS=serving on the bus");
    for (std::optional<std::string> state; (state = manager.receive()) != "STATUS=connected to host and bus";) {
        ASSERT_TRUE(state);
    }
    EXPECT_NE(settingsctl({"doctor"}).find("settings-dbus: connected to host and bus"), std::string::npos)
        << settingsctl({"doctor"});
    host.reset();
    EXPECT_EQ(manager.receive(), "STATUS=waiting for the host");
    bus.reset();
    EXPECT_EQ(manager.receive(), "STATUS=waiting for the bus");
    bridge->sendSignal(SIGTERM);
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(manager.receive(), "STOPPING=1");
}
