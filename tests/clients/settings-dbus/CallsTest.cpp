#include <algorithm>
#include <chrono>
#include <future>

#include "Fixture.h"

using namespace SettingsDbusTests;

namespace {

class DbusCalls : public Fixture {
protected:
    /// The name and the text of the error of a call.
    std::string errorOf(const Words& arguments, const std::string& object = mainObject) const {
        Words words{"call", "--system", "--dest", busName, "--object-path", object, "--method"};
        const auto result = TestSupport::run(Words{"gdbus"} + words + arguments, environment());
        const std::string begin = "Error: GDBus.Error:";
        return result.errors.rfind(begin, 0) == 0
                   ? result.errors.substr(begin.size(), result.errors.find('\n') - begin.size())
                   : "no error: " + result.output + result.errors;
    }
    static std::string method(const std::string& name) { return std::string(busName) + "." + name; }
};

/// Runs the bridge at a host that the test plays.
class DbusErrors : public DbusCalls {
protected:
    void SetUp() override {
        std::filesystem::create_directory(folder / "settings-host");
        startAllWith(fake.emplace(socketPath()));
    }
    /// Calls while the host answers the change with `members`.
    std::string errorFor(const std::string& members, const Words& arguments) {
        ChildProcess caller(
            Words{"gdbus", "call", "--system", "--dest", busName, "--object-path", mainObject, "--method"} + arguments,
            environment());
        fake->answer(fake->nextChange(), members);
        const auto line = caller.errors().readLine().value_or("");
        return line.substr(std::min(line.size(), std::string("Error: GDBus.Error:").size()));
    }

    std::optional<FakeHost> fake;
};

}  // namespace

TEST_F(DbusCalls, GetTheValuesOfSomeSettingsOrOfAll) {
    startAll();
    EXPECT_EQ(call({"Get", "as", "2", "timezone", "captionsFontSize"}),
              R"(a{ss} 2 "captionsFontSize" "FONT_MEDIUM" "timezone" "America/Vancouver")");
    EXPECT_EQ(call({"Get", "as", "0"}, personalObject),
              R"(a{ss} 3 "companionDevice" "[\"\",\"\"]" "deviceName" "TV" "friendlyName" "TV")");
    EXPECT_EQ(call({"Get", "as", "1", "deviceName"}),
              "Call failed: /org/settingshandler/Settings1 has no setting 'deviceName'");
}

TEST_F(DbusCalls, SetSeveralSettingsAsOneBatch) {
    startAll();
    EXPECT_EQ(call({"SetMany", "a{ss}", "4", "captionsFontSize", "FONT_LARGE", "captionsEnabled", "true", "timezone",
                    "America/Vancouver", "orliaLocale", "x"}),
              R"(a{ss} 4 "captionsEnabled" "read-only" "captionsFontSize" "changed" "orliaLocale" "wrong-form" )"
              R"("timezone" "unchanged")");
    // One unknown key, and nothing is done.
    EXPECT_EQ(call({"SetMany", "a{ss}", "2", "captionsFontSize", "FONT_SMALL", "deviceName", "x"}),
              "Call failed: /org/settingshandler/Settings1 has no setting 'deviceName'");
    EXPECT_EQ(get("CaptionsFontSize"), "s \"FONT_LARGE\"");
}

TEST_F(DbusCalls, UndoTheLastChangeOfASetting) {
    startAll();
    EXPECT_EQ(call({"Undo", "s", "timezone"}),
              "Call failed: cannot undo 'timezone': the host has no record of a change");
    call({"Set", "ss", "timezone", "Asia/Tokyo"});
    EXPECT_EQ(call({"Undo", "s", "timezone"}), "");
    EXPECT_EQ(get("Timezone"), "s \"America/Vancouver\"");
}

TEST_F(DbusCalls, LogOutAndOpenTheSettings) {
    startAll();
    call({"Set", "ss", "deviceName", "Den"}, personalObject);
    EXPECT_EQ(get("DeviceName", personalObject), "s \"Den\"");
    EXPECT_EQ(call({"LogOut"}), "");
    EXPECT_EQ(get("DeviceName", personalObject), "s \"TV\"");
    EXPECT_EQ(call({"OpenSettings"}), "");
}

TEST_F(DbusCalls, CarryTheNameAndTheProgramOfTheCaller) {
    startAll();
    startMonitor();
    set({"Timezone", "s", "Asia/Tokyo"});
    const std::string changed = signals("Changed", 1).front();
    EXPECT_EQ(changed.find("('timezone', 'America/Vancouver', 'Asia/Tokyo', uint64 1, 'socket', ':1."), 0U) << changed;
    EXPECT_NE(changed.find(" busctl')"), std::string::npos) << changed;
}

TEST_F(DbusCalls, ThatAreWrongAreAnsweredWithTheErrorsOfTheBus) {
    startAll();
    EXPECT_EQ(set({"Timezone", "b", "true"}),
              "Failed to set property Timezone on interface org.settingshandler.Settings1: Timezone has values of the "
              "type 's'");
    EXPECT_EQ(errorOf({method("Set"), "nothing", "x"}),
              "org.freedesktop.DBus.Error.InvalidArgs: /org/settingshandler/Settings1 has no setting 'nothing'");
    EXPECT_EQ(errorOf({method("Set"), "Timezone", "x"}),
              "org.freedesktop.DBus.Error.InvalidArgs: /org/settingshandler/Settings1 has no setting 'Timezone'");
    EXPECT_EQ(
        errorOf({"org.freedesktop.DBus.Properties.Set", busName, "DeviceName", "<'x'>"}),
        "org.freedesktop.DBus.Error.UnknownProperty: /org/settingshandler/Settings1 has no property 'DeviceName'");
    EXPECT_EQ(errorOf({method("Set"), "timezone", std::string(65536, 'x')}),
              "org.freedesktop.DBus.Error.InvalidArgs: keys and values have more than 65536 bytes");
    EXPECT_EQ(errorOf({method("Nothing")}).find("org.freedesktop.DBus.Error.UnknownMethod: "), 0U);
}

TEST_F(DbusErrors, AreNamedForTheHostsReasonAndCarryItsSentence) {
    const Words change{method("Set"), "timezone", "Asia/Tokyo"};
    const std::map<std::string, std::string> errors{
        {"read-only", "ReadOnly"}, {"stale", "Stale"}, {"wrong-form", "WrongForm"}, {"not-stored", "NotStored"}};
    for (const auto& [reason, name] : errors) {
        EXPECT_EQ(errorFor(R"("outcome":"refused","reason":")" + reason + R"(","message":"Sorry: 100%s.")", change),
                  "org.settingshandler.Error." + name + ": Sorry: 100%s.");
    }
    EXPECT_EQ(errorFor(R"("outcome":"refused","reason":"not-stored","message":"no room")", {method("LogOut")}),
              "org.settingshandler.Error.NotStored: no room");
    // A reason of a newer host.
    EXPECT_EQ(errorFor(R"("outcome":"refused","reason":"new","message":"No.")", change),
              "org.freedesktop.DBus.Error.Failed: No.");
}

TEST_F(DbusErrors, SayThatTheHostIsNotThere) {
    ChildProcess caller({"busctl", "--system", "call", busName, mainObject, busName, "Set", "ss", "timezone", "x"},
                        environment());
    fake->nextChange();
    fake->close();
    EXPECT_EQ(caller.errors().readLine(), "Call failed: the host at " + socketPath() + " closed the connection");
    fake.reset();
    EXPECT_EQ(errorOf({method("Set"), "timezone", "x"}).find("org.settingshandler.Error.Unavailable: "), 0U);
    // What is known can still be read.
    EXPECT_EQ(get("Timezone"), "s \"\"");
}

TEST_F(DbusCalls, FindTheValuesAsSoonAsTheNameIsThere) {
    startBus();
    std::filesystem::create_directory(folder / "settings-host");
    FakeHost fake(socketPath());
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
    const std::string hello = fake.acceptHello();
    EXPECT_NE(get("Timezone").find("not provided by any"), std::string::npos) << get("Timezone");
    fake.greet(hello);
    waitForLog("serving");
    EXPECT_EQ(get("Timezone"), "s \"\"");
}

TEST_F(DbusCalls, AreAnsweredWithWhatABusyHostHadRefused) {
    startBus();
    std::filesystem::create_directory(folder / "settings-host");
    FakeHost fake(socketPath());
    fake.refusals = 1000;
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
    fake.greet(fake.acceptHello(), 2);
    waitForLog("cannot read the settings, will try again: the host refused the request: too much waits (busy)");
    waitForLog("serving");
    auto error = std::async(std::launch::async, [this] { return errorOf({method("Get"), "@as []"}); });
    do {
        fake.answerReads(1);
    } while (error.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
    EXPECT_EQ(error.get(), "org.settingshandler.Error.Unavailable: the settings were not read yet");
    fake.refusals = 0;
    fake.values = R"({"timezone":"Asia/Tokyo"})";
    fake.answerReads(2);
    EXPECT_EQ(get("Timezone"), "s \"Asia/Tokyo\"");
    startMonitor();
    // Then a value that changed at its owner.
    fake.refusals = 1;
    fake.values = R"({"timezone":"Europe/Paris"})";
    fake.sendLine(R"({"notice":{"reread":["timezone"]}})");
    fake.answerReads(3);
    EXPECT_EQ(signals("Changed", 1).front(), "('timezone', 'Asia/Tokyo', 'Europe/Paris', uint64 0, '', '')");
}

TEST_F(DbusCalls, AreUnavailableBeforeAHostWasReached) {
    startBus();
    bridge.emplace(Words{SETTINGS_DBUS_PROGRAM}, environment());
    waitForLog("serving");
    const std::string begin = "org.settingshandler.Error.Unavailable: cannot reach";
    for (const Words& arguments : {Words{method("Set"), "timezone", "x"}, Words{method("Get"), "@as []"},
                                   Words{"org.freedesktop.DBus.Properties.GetAll", busName}}) {
        EXPECT_EQ(errorOf(arguments).substr(0, begin.size()), begin);
    }
    startMonitor();
    startHost();
    // Whoever asked too early is told.
    const auto told = signals("PropertiesChanged", 15);
    EXPECT_EQ(
        std::count_if(told.begin(), told.end(), [](const auto& line) { return line.find("Timezone") != line.npos; }),
        1);
}
