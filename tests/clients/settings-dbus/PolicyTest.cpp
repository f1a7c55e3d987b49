#include <unistd.h>

#include "Fixture.h"

using namespace SettingsDbusTests;

namespace {

/// The user who runs the test is not in the group. As root the test is `nobody`, too.
class DbusPolicy : public Fixture {
protected:
    void SetUp() override {
        startBus(otherGroup());
        startHost();
        startBridge();
    }
    static Words asOther() {
        return ::geteuid() == 0 ? Words{"setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"} : Words{};
    }
    std::string busctlAsOther(const Words& arguments) const {
        const auto result = TestSupport::run(asOther() + Words{"busctl", "--system"} + arguments, environment());
        return result.output + result.errors;
    }
};

constexpr const char* denied = "Access denied\n";

}  // namespace

TEST_F(DbusPolicy, EverybodyReadsWhatIsNotPersonal) {
    EXPECT_EQ(busctlAsOther({"get-property", busName, mainObject, busName, "CaptionsEnabled"}), "b false\n");
    EXPECT_EQ(busctlAsOther({"call", busName, mainObject, busName, "Get", "as", "1", "timezone"}),
              "a{ss} 1 \"timezone\" \"America/Vancouver\"\n");
    EXPECT_NE(busctlAsOther({"introspect", busName, mainObject}).find(".OrliaLocale "), std::string::npos);
}

TEST_F(DbusPolicy, OnlyTheGroupWrites) {
    EXPECT_EQ(busctlAsOther({"set-property", busName, mainObject, busName, "Timezone", "s", "x"}),
              std::string("Failed to set property Timezone on interface org.settingshandler.Settings1: ") + denied);
    const std::vector<Words> calls{{"Set", "ss", "timezone", "x"},
                                   {"SetMany", "a{ss}", "1", "timezone", "x"},
                                   {"Undo", "s", "timezone"},
                                   {"LogOut"},
                                   {"OpenSettings"}};
    for (const auto& arguments : calls) {
        EXPECT_EQ(busctlAsOther(Words{"call", busName, mainObject, busName} + arguments),
                  std::string("Call failed: ") + denied)
            << arguments.front();
    }
    EXPECT_EQ(get("Timezone"), "s \"America/Vancouver\"");
}

TEST_F(DbusPolicy, OnlyTheGroupReadsPersonalSettings) {
    EXPECT_EQ(busctlAsOther({"get-property", busName, personalObject, busName, "DeviceName"}),
              std::string("Failed to get property DeviceName on interface org.settingshandler.Settings1: ") + denied);
    EXPECT_EQ(busctlAsOther({"call", busName, personalObject, busName, "Get", "as", "0"}),
              std::string("Call failed: ") + denied);
    EXPECT_EQ(
        busctlAsOther({"call", busName, personalObject, "org.freedesktop.DBus.Properties", "GetAll", "s", busName}),
        std::string("Call failed: ") + denied);
}

TEST_F(DbusPolicy, OnlyTheGroupIsToldOfPersonalSettings) {
    startMonitor(::geteuid() == 0 ? "nobody" : "");
    settingsctl({"set", "deviceName", "Anna's room"});
    settingsctl({"set", "timezone", "Asia/Tokyo"});
    std::string told;
    while (told.find("Changed ('timezone'") == std::string::npos) {
        const auto line = monitor->output().readLine();
        ASSERT_TRUE(line);
        told += *line + "\n";
    }
    EXPECT_EQ(told.find("Anna"), std::string::npos) << told;
    EXPECT_EQ(told.find("Personal"), std::string::npos) << told;
}

TEST_F(DbusPolicy, OnlyTheBridgesUserHasTheName) {
    bus.reset();
    startBus(otherGroup(), "daemon");
    const auto refused = TestSupport::run({SETTINGS_DBUS_PROGRAM}, environment());
    EXPECT_NE(
        refused.errors.find("cannot acquire the name org.settingshandler.Settings1 on the bus: Permission denied\n"),
        std::string::npos);
    EXPECT_EQ(refused.status, 1);
}

TEST_F(DbusPolicy, TheGroupHasEverything) {
    if (::geteuid() != 0) {
        // All other tests are run by a member.
        return;
    }
    startMonitor("daemon");
    const auto result =
        TestSupport::run({"setpriv", "--reuid=daemon", "--regid=daemon", "--clear-groups", "busctl", "--system",
                          "set-property", busName, personalObject, busName, "DeviceName", "s", "Den"},
                         environment());
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(signals("Changed", 1).front().find("('deviceName', 'TV', 'Den', "), 0U);
}
