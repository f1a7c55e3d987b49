#include <gtest/gtest.h>

#include "kit/support/LogRecording.h"
#include "simulation/FaultCommands.h"
#include "simulation/Faults.h"
#include "support/Json.h"

namespace SettingsHost {

using Result = Faults::Result;

class FaultsTest : public ::testing::Test {
protected:
    std::string execute(const std::string& frame) { return switchFault(faults, TestSupport::parsed(frame)); }

    SettingsHostTests::LogRecording log;
    Faults faults;
};

TEST_F(FaultsTest, AreAllOffAtFirst) {
    EXPECT_EQ(faults.namesOn(), std::vector<std::string>{});
    for (const auto& fault : allFaults()) {
        EXPECT_FALSE(faults.isOn(fault.fault)) << fault.name;
        EXPECT_EQ(findFault(fault.name), &describe(fault.fault));
    }
    EXPECT_EQ(faults.timeOf(Fault::STORAGE_SLOW).count(), 0);
    EXPECT_FALSE(faults.concerns(Fault::SDK_REFUSES, "timezone"));
}

TEST_F(FaultsTest, AreSwitchedAndLoggedOnlyWhenSomethingChanges) {
    int notified = 0;
    faults.onChange(Fault::STORAGE_SLOW, [&] { ++notified; });
    EXPECT_EQ(faults.switchOn(Fault::STORAGE_FULL), Result::CHANGED);
    EXPECT_EQ(faults.switchOn(Fault::STORAGE_FULL), Result::UNCHANGED);
    EXPECT_EQ(faults.switchOn(Fault::STORAGE_SLOW), Result::CHANGED);
    EXPECT_EQ(faults.timeOf(Fault::STORAGE_SLOW).count(), 500) << "the default";
    EXPECT_EQ(faults.switchOn(Fault::STORAGE_SLOW, 20), Result::CHANGED);
    EXPECT_EQ(faults.switchOn(Fault::STORAGE_SLOW, 20), Result::UNCHANGED);
    EXPECT_EQ(faults.switchOn(Fault::SDK_REFUSES, "timezone"), Result::CHANGED);
    EXPECT_TRUE(faults.concerns(Fault::SDK_REFUSES, "timezone"));
    EXPECT_FALSE(faults.concerns(Fault::SDK_REFUSES, "orliaLocale"));
    EXPECT_EQ(faults.namesOn(), (std::vector<std::string>{"storage-full", "storage-slow", "sdk-refuses"}));
    EXPECT_EQ(faults.switchOff(Fault::STORAGE_SLOW), Result::CHANGED);
    EXPECT_EQ(faults.switchOff(Fault::STORAGE_SLOW), Result::UNCHANGED);
    EXPECT_EQ(faults.timeOf(Fault::STORAGE_SLOW).count(), 0);
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{
                  "2 settings-host:fault on: storage-full", "2 settings-host:fault on: storage-slow 500",
                  "2 settings-host:fault on: storage-slow 20", "2 settings-host:fault on: sdk-refuses timezone",
                  "2 settings-host:fault off: storage-slow"}));
    EXPECT_EQ(notified, 3) << "on, another value, off";
}

TEST_F(FaultsTest, ThatHappenOnceAreNeverOn) {
    std::vector<std::string> changed;
    bool succeeds = true;
    faults.define(Fault::SDK_CHANGES, [&](const std::string& key) {
        changed.push_back(key);
        return succeeds;
    });
    EXPECT_EQ(execute(R"({"name":"sdk-changes","value":"timezone","enabled":true})"), R"({"ok":true})");
    EXPECT_EQ(execute(R"({"name":"sdk-changes","value":"timezone","enabled":true})"), R"({"ok":true})");
    EXPECT_EQ(execute(R"({"name":"sdk-changes","enabled":false})"), R"({"ok":true,"changed":false})");
    succeeds = false;
    EXPECT_EQ(execute(R"({"name":"sdk-changes","enabled":true})"),
              R"({"error":{"code":"not-written","message":"the simulated device could not save it"}})");
    EXPECT_EQ(changed, (std::vector<std::string>{"timezone", "timezone", "orliaLocale"}));
    EXPECT_TRUE(faults.namesOn().empty());
}

TEST_F(FaultsTest, RefuseWhatTheyDoNotTake) {
    const std::string unknown = R"("name" must be one of the faults; the command "faults" lists them)";
    const std::string time = "the value of storage-slow must be a number of milliseconds from 1 to 60000";
    const std::string key =
        "the value of sdk-refuses must be one of orliaLocale, handsFreeEnabled, "
        "handsFreeAlwaysOnEnabled, pttAlwaysOnEnabled, friendlyName, timezone";
    const std::vector<std::pair<std::string, std::string>> refused{
        {R"({"enabled":true})", unknown},
        {R"({"name":"storage","enabled":true})", unknown},
        {R"({"name":"storage-full"})", R"("enabled" must be true or false)"},
        {R"({"name":"storage-full","enabled":1})", R"("enabled" must be true or false)"},
        {R"({"name":"storage-full","enabled":true,"value":1})", "storage-full takes no value"},
        {R"({"name":"storage-slow","enabled":true,"value":0})", time},
        {R"({"name":"storage-slow","enabled":true,"value":60001})", time},
        {R"({"name":"storage-slow","enabled":true,"value":"20"})", time},
        {R"({"name":"storage-slow","enabled":true,"value":1.5})", time},
        {R"({"name":"storage-full","enabled":true,"value":null})", "storage-full takes no value"},
        {R"({"name":"sdk-refuses","enabled":true,"value":"captionsEnabled"})", key},
        {R"({"name":"sdk-refuses","enabled":true,"value":5})", key},
    };
    for (const auto& [frame, message] : refused) {
        const auto reply = TestSupport::parsed(execute(frame));
        ASSERT_TRUE(reply.HasMember("error")) << frame;
        EXPECT_EQ(reply["error"]["code"], "bad-argument") << frame;
        EXPECT_EQ(reply["error"]["message"].GetString(), message) << frame;
    }
    EXPECT_TRUE(faults.namesOn().empty());
    EXPECT_TRUE(log.take().empty());
}

TEST_F(FaultsTest, AreListedWithTheirValues) {
    execute(R"({"name":"clock-jump","enabled":true,"value":-5})");
    const auto reply = TestSupport::parsed(faultsFrame(faults));
    ASSERT_EQ(reply["faults"].Size(), allFaults().size());
    for (const auto& shown : reply["faults"].GetArray()) {
        const bool isOn = shown["name"] == "clock-jump";
        EXPECT_EQ(shown["on"].GetBool(), isOn);
        EXPECT_EQ(shown.HasMember("value"), isOn);
        EXPECT_TRUE(!isOn || shown["value"].GetInt() == -5);
    }
}

}  // namespace SettingsHost
