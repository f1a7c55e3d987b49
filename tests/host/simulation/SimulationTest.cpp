#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "kit/support/LogRecording.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

class Simulation : public ::testing::Test {
protected:
    Simulation() { restart(); }

    /// New objects on the same state, as after a restart of the host.
    void restart() {
        device = std::make_shared<SimulatedDevice>(state, changes);
        sdk = std::make_shared<SimulatedSdkBridge>(state, storage, device, changes);
    }

    using Keys = std::vector<std::string>;

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    SettingsHandlerTesting::FakeStateStore state{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeValueObserver> changes =
        std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdk;
};

TEST_F(Simulation, StartsWithTheFirstValues) {
    EXPECT_EQ(sdk->getLocales(), Keys{"en-US"});
    EXPECT_EQ(sdk->getTimezone(), "America/Vancouver");
    EXPECT_FALSE(sdk->isCaptionsEnabled());
    EXPECT_FALSE(sdk->isDoNotDisturbEnabled());
    EXPECT_EQ(device->getDeviceInfo(), (std::map<std::string, std::string>{{"currentHandsFreeStatus", "off"},
                                                                           {"currentAlwaysOnVoiceMode", "off"},
                                                                           {"currentAlwaysOnPTTMode", "off"}}));
}

TEST_F(Simulation, KeepsAndReportsWhatIsSet) {
    for (const bool afterRestart : {false, true}) {
        if (afterRestart) {
            restart();
        } else {
            sdk->setLocales({"fr-FR", "x\"y"});
            sdk->setTimezone("Europe/Paris");
            EXPECT_TRUE(sdk->setCaptionsEnabled(true));
            EXPECT_TRUE(sdk->setDoNotDisturbEnabled(true));
            sdk->setHandsFreeEnabled(true);
            EXPECT_TRUE(sdk->applySetting("handsFreeAlwaysOnEnabled", "true"));
            EXPECT_TRUE(sdk->applySetting("pttAlwaysOnEnabled", "true"));
            EXPECT_EQ(changes->take(), (Keys{"orliaLocale", "timezone", "captionsEnabled", "doNotDisturbEnabled",
                                             "handsFreeEnabled", "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}));
        }
        EXPECT_EQ(sdk->getLocales(), (Keys{"fr-FR", "x\"y"}));
        EXPECT_EQ(sdk->getTimezone(), "Europe/Paris");
        EXPECT_TRUE(sdk->isCaptionsEnabled());
        EXPECT_TRUE(sdk->isDoNotDisturbEnabled());
        for (const auto& [key, word] : device->getDeviceInfo()) {
            EXPECT_EQ(word, "on") << key;
        }
    }
}

TEST_F(Simulation, TheSameValueAgainChangesAndReportsNothing) {
    sdk->setLocales({"en-US"});
    sdk->setTimezone("America/Vancouver");
    sdk->setCaptionsEnabled(false);
    sdk->setHandsFreeEnabled(false);
    sdk->applySetting("pttAlwaysOnEnabled", "false");
    EXPECT_EQ(changes->take(), Keys{});
    EXPECT_TRUE(state.values.empty());
}

TEST_F(Simulation, OnlyTheExactWordTrueSwitchesAModeOn) {
    for (const auto* word : {"TRUE", "on", "1", ""}) {
        sdk->applySetting("pttAlwaysOnEnabled", "true");
        sdk->applySetting("pttAlwaysOnEnabled", word);
        EXPECT_EQ(device->getDeviceInfo().at("currentAlwaysOnPTTMode"), "off") << word;
    }
}

TEST_F(Simulation, TheFriendlyNameReachesTheStorage) {
    EXPECT_TRUE(sdk->applySetting("friendlyName", "Den"));
    EXPECT_EQ(storage.values.at("friendlyName"), "Den");
    EXPECT_EQ(changes->take(), Keys{"friendlyName"});
    EXPECT_TRUE(sdk->applySetting("friendlyName", "Den"));
    EXPECT_EQ(changes->take(), Keys{});
    storage.refusesWrites = true;
    EXPECT_FALSE(sdk->applySetting("friendlyName", "Attic"));
    EXPECT_EQ(changes->take(), Keys{});
}

TEST_F(Simulation, RefusesOtherSettings) {
    for (const auto* key : {"deviceName", "handsFreeEnabled", "unknown", ""}) {
        EXPECT_FALSE(sdk->applySetting(key, "true")) << key;
    }
    EXPECT_TRUE(state.values.empty());
}

TEST_F(Simulation, WhatCannotBeSavedKeepsItsOldValue) {
    state.refusesWrites = true;
    sdk->setLocales({"fr-FR"});
    sdk->setTimezone("Europe/Paris");
    EXPECT_FALSE(sdk->setCaptionsEnabled(true));
    EXPECT_FALSE(sdk->setDoNotDisturbEnabled(true));
    sdk->setHandsFreeEnabled(true);
    EXPECT_FALSE(sdk->applySetting("handsFreeAlwaysOnEnabled", "true"));
    EXPECT_FALSE(device->switchHandsfree(true));
    EXPECT_EQ(sdk->getLocales(), Keys{"en-US"});
    EXPECT_EQ(sdk->getTimezone(), "America/Vancouver");
    EXPECT_FALSE(sdk->isCaptionsEnabled());
    EXPECT_EQ(device->getDeviceInfo().at("currentHandsFreeStatus"), "off");
    EXPECT_EQ(changes->take(), Keys{});
}

TEST_F(Simulation, ADamagedStateGivesNoLocalesAndNoCrash) {
    state.values = {{"orliaLocale", "{nonsense"}, {"captionsEnabled", "maybe"}, {"currentHandsFreeStatus", "ON"}};
    restart();
    EXPECT_EQ(sdk->getLocales(), Keys{});
    EXPECT_FALSE(sdk->isCaptionsEnabled());
    EXPECT_EQ(device->getDeviceInfo().at("currentHandsFreeStatus"), "off");
}

class RecordingObserver : public DeviceAbstractionLayer::DeviceInfoObserverInterface,
                          public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    std::vector<std::string> notified;
    void notifyLocaleChange(std::string locale) override { notified.push_back("locale " + locale); }
    void notifyLocaleChange(std::vector<std::string> locales) override {
        notified.push_back("locales " + std::to_string(locales.size()));
    }
    void notifyTimezoneChange(std::string timezone) override { notified.push_back("timezone " + timezone); }
    void notifyNetworkConnectionChanged(std::string) override {}
    void notifyMicrophoneAvailabilityChanged(std::string) override {}
    void notifyAudioGuidanceChanged(bool) override {}
    void notifyDeviceModeChanged(std::string) override {}
    void notifySystemSettingChanged(std::string name, std::string value) override {
        notified.push_back("setting " + name + " " + value);
    }
    void notifyHandsfreeStateChanged(bool enabled) override {
        notified.emplace_back(enabled ? "handsfree on" : "handsfree off");
    }
};

TEST_F(Simulation, TheDeviceNotifiesItsObserversWhileTheyLive) {
    const auto use = [&] {
        device->changeLocale("fr-FR");
        device->changeLocales({"a", "b"});
        device->changeTimezone("zone");
        device->changeSystemSetting("k", "v");
        device->switchHandsfree(true);
    };
    use();
    auto observer = std::make_shared<RecordingObserver>();
    device->subscribe(observer, observer);
    use();
    EXPECT_EQ(observer->notified, (Keys{"locale fr-FR", "locales 2", "timezone zone", "setting k v", "handsfree on"}));
    observer.reset();
    use();
}

TEST_F(Simulation, AnUnsavedSwitchNotifiesNoObserver) {
    const auto observer = std::make_shared<RecordingObserver>();
    device->subscribe(observer, observer);
    state.refusesWrites = true;
    EXPECT_FALSE(device->switchHandsfree(true));
    EXPECT_EQ(observer->notified, Keys{});
}

TEST(SimulatedAppLaunchTest, LogsAndRemembers) {
    SettingsHostTests::LogRecording log;
    SimulatedAppLaunch launcher;
    EXPECT_EQ(launcher.lastLaunched(), "");
    EXPECT_TRUE(launcher.launchApp("settings", ""));
    EXPECT_EQ(launcher.lastLaunched(), "settings");
    EXPECT_EQ(log.take(), std::vector<std::string>{"1 settings-host:launching the application 'settings' with ''"});
}

}  // namespace SettingsHost
