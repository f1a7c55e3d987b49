#include <gtest/gtest.h>

#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "kit/support/LogRecording.h"
#include "simulation/SdkWithFaults.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

class SdkWithFaultsTest : public ::testing::Test {
protected:
    using Keys = std::vector<std::string>;

    /// What the handler may hand over, each time with another value.
    std::map<std::string, bool> setEverything() {
        const std::string value = std::to_string(++number);
        const bool enabled = number % 2 != 0;
        changes->take();
        sdk.setLocales({value});
        sdk.setTimezone(value);
        sdk.setHandsFreeEnabled(enabled);
        sdk.applySetting("handsFreeAlwaysOnEnabled", enabled ? "true" : "false");
        sdk.applySetting("pttAlwaysOnEnabled", enabled ? "true" : "false");
        sdk.applySetting("friendlyName", value);
        std::map<std::string, bool> taken;
        for (const auto& key : describe(Fault::SDK_REFUSES).settings) {
            taken[key] = false;
        }
        for (const auto& key : changes->take()) {
            taken.at(key) = true;
        }
        return taken;
    }

    SettingsHostTests::LogRecording log;
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    SettingsHandlerTesting::FakeStateStore state{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeValueObserver> changes =
        std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(state, changes);
    std::shared_ptr<SimulatedSdkBridge> real = std::make_shared<SimulatedSdkBridge>(state, storage, device, changes);
    std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    std::vector<long> slept;
    SdkWithFaults sdk{real, faults, [this](std::chrono::milliseconds time) { slept.push_back(time.count()); }};
    int number = 0;
};

TEST_F(SdkWithFaultsTest, RefusesTheSettingAloneForWhichItIsOn) {
    for (const auto& refused : describe(Fault::SDK_REFUSES).settings) {
        faults->switchOn(Fault::SDK_REFUSES, refused);
        for (const auto& [key, taken] : setEverything()) {
            EXPECT_EQ(taken, key != refused) << key << " while it refuses " << refused;
        }
        faults->switchOff(Fault::SDK_REFUSES);
        setEverything();
    }
    for (const auto& [key, taken] : setEverything()) {
        EXPECT_TRUE(taken) << key;
    }
    EXPECT_TRUE(slept.empty());
}

TEST_F(SdkWithFaultsTest, SaysThatItRefusesWhereItCan) {
    faults->switchOn(Fault::SDK_REFUSES, "friendlyName");
    EXPECT_FALSE(sdk.applySetting("friendlyName", "Den"));
    EXPECT_TRUE(sdk.applySetting("pttAlwaysOnEnabled", "true"));
}

TEST_F(SdkWithFaultsTest, IsSlowAtEachCall) {
    faults->switchOn(Fault::SDK_SLOW, 40);
    faults->switchOn(Fault::SDK_REFUSES, "timezone");
    setEverything();
    EXPECT_EQ(slept, std::vector<long>(6, 40));
    slept.clear();
    EXPECT_EQ(sdk.getTimezone(), "America/Vancouver");
    EXPECT_EQ(sdk.getLocales(), Keys{"1"});
    EXPECT_FALSE(sdk.isCaptionsEnabled());
    EXPECT_FALSE(sdk.isDoNotDisturbEnabled());
    EXPECT_EQ(slept, std::vector<long>(4, 40));
    faults->switchOff(Fault::SDK_SLOW);
    sdk.getTimezone();
    EXPECT_EQ(slept.size(), 4U);
}

TEST_F(SdkWithFaultsTest, ChangesEachSettingByItselfAndReportsIt) {
    for (const auto& key : describe(Fault::SDK_CHANGES).settings) {
        for (int times = 0; times < 3; ++times) {
            EXPECT_TRUE(real->changeByItself(key)) << key;
            EXPECT_EQ(changes->take(), Keys{key});
        }
    }
    EXPECT_FALSE(real->changeByItself("deviceName"));
    state.refusesWrites = true;
    EXPECT_FALSE(real->changeByItself("timezone"));
    EXPECT_EQ(changes->take(), Keys{});
}

}  // namespace SettingsHost
