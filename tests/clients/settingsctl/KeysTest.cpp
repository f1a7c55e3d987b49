#include <gtest/gtest.h>

#include "FakeHost.h"
#include "Keys.h"
#include "Wire/Catalogue.h"

using SettingsCtl::nearestKey;

TEST(SettingsCtlNearestKey, IsAKeyItself) {
    for (const auto& setting : Wire::catalogue()) {
        EXPECT_EQ(nearestKey(setting.key), setting.key);
    }
}

TEST(SettingsCtlNearestKey, NeedsTheFewestLettersInsertedRemovedOrReplaced) {
    EXPECT_EQ(nearestKey("devicName"), "deviceName");
    EXPECT_EQ(nearestKey("deviceeName"), "deviceName");
    EXPECT_EQ(nearestKey("tymezone"), "timezone");
    EXPECT_EQ(nearestKey("captionsFont"), "captionsFontSize");
    EXPECT_EQ(nearestKey("pttAlwaysOn"), "pttAlwaysOnEnabled");
    EXPECT_EQ(nearestKey("pttAlwaysOnDiscover"), "pttAlwaysOnDiscovered");
}

TEST(SettingsCtlNearestKey, IgnoresTheCaseOfLetters) {
    EXPECT_EQ(nearestKey("FRIENDLY"), "friendlyName");
    EXPECT_EQ(nearestKey("PTT_ALWAYS_ON_ENABLED"), "pttAlwaysOnEnabled");
}

TEST(SettingsCtlNearestKey, IsThereForEveryText) {
    EXPECT_EQ(nearestKey(""), "timezone");
    EXPECT_NE(nearestKey(std::string(1000, 'x')), "");
}

TEST(SettingsCtlUnknownKeys, AreRefusedBeforeTheHostIsAsked) {
    using Words = std::vector<std::string>;
    for (const Words& arguments : {Words{"get", "timezone", "DeviceName"},
                                   {"reset", "DeviceName"},
                                   {"undo", "DeviceName"},
                                   {"history", "DeviceName"},
                                   {"explain", "DeviceName"},
                                   {"device", "setting", "DeviceName", "Den"}}) {
        Words command{SETTINGSCTL_PROGRAM, "--socket", "/nowhere/settings.sock"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const TestSupport::Finished end = TestSupport::run(command);
        EXPECT_EQ(end.errors,
                  "settingsctl: unknown key 'DeviceName'; did you mean 'deviceName'? --any-key accepts any key\n");
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.status, 2) << arguments.front();
        command.emplace_back("--any-key");
        EXPECT_EQ(TestSupport::run(command).status, arguments.front() == "reset" ? 1 : 3) << arguments.front();
    }
}
