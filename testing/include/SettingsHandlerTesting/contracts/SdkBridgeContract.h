#pragma once

#include <future>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerTesting/contracts/Hooks.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandlerTesting {

/// Checks what the handler requires of a bridge to a voice SDK. Run it on your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyBridgeMaker { MyBridge own; teskVessa::SDKBridgeInterface& bridge() { return own; } };
///     INSTANTIATE_TYPED_TEST_SUITE_P(MyBridge, SdkBridgeContract, MyBridgeMaker);
///
/// The maker is default-constructed for each check. The checks set the locales en-US, fr-FR and es-US and the time
/// zones Europe/Paris and America/Vancouver, which the bridge must accept. Its hooks, each for some of the checks:
///
/// - `void refuseWrites(bool refuse)`: whether the SDK refuses everything from now on.
/// - `void switchCaptions(bool on)` and `void switchDoNotDisturb(bool on)`: switches it at the SDK.
/// - `DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo()`: the device information that shows the hands-free
///   switch and the always-on modes after they were set through the bridge.
/// - `SDKWrapper::StorageManagerInterface& storage()`: the storage that holds the friendly name after it was set
///   through the bridge.
/// - `static constexpr bool anyThread = true;`: it may be called from any thread.
///
/// Not checked: the bridge must not call the handler, which holds its mutex during some of the calls.
template <typename Maker>
class SdkBridgeContract : public ::testing::Test {
    /// @cond
protected:
    teskVessa::SDKBridgeInterface& bridge() { return maker.bridge(); }

    /// All values that can be read through the bridge, as one text.
    std::string everything() {
        std::string text = bridge().getTimezone();
        for (const auto& locale : bridge().getLocales()) {
            text += " " + locale;
        }
        return text + (bridge().isCaptionsEnabled() ? " captions" : "") +
               (bridge().isDoNotDisturbEnabled() ? " do-not-disturb" : "");
    }

    Maker maker;
    /// @endcond
};

/// The hook `refuseWrites` of a maker.
template <typename Maker>
using RefuseWritesHook = decltype(std::declval<Maker&>().refuseWrites(true));
/// The hook `switchCaptions` of a maker.
template <typename Maker>
using SwitchCaptionsHook = decltype(std::declval<Maker&>().switchCaptions(true));
/// The hook `switchDoNotDisturb` of a maker.
template <typename Maker>
using SwitchDoNotDisturbHook = decltype(std::declval<Maker&>().switchDoNotDisturb(true));
/// The hook `deviceInfo` of a maker.
template <typename Maker>
using DeviceInfoHook = decltype(std::declval<Maker&>().deviceInfo());
/// The hook `storage` of a maker.
template <typename Maker>
using StorageHook = decltype(std::declval<Maker&>().storage());

TYPED_TEST_SUITE_P(SdkBridgeContract);
// A program may include this header without an instantiation.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SdkBridgeContract);

/// The time zone is read from the SDK only, and a new one is compared with the SDK's value.
TYPED_TEST_P(SdkBridgeContract, GivesTheTimezoneBack) {
    for (const std::string timezone : {"Europe/Paris", "America/Vancouver", "America/Vancouver"}) {
        this->bridge().setTimezone(timezone);
        EXPECT_EQ(this->bridge().getTimezone(), timezone);
    }
}

/// The first locale is the primary one, which is reported to observers and metrics; a list in another order is a
/// change.
TYPED_TEST_P(SdkBridgeContract, GivesTheLocalesBackInTheirOrder) {
    using Locales = std::vector<std::string>;
    for (const auto& locales : {Locales{"fr-FR", "en-US"}, Locales{"es-US", "fr-FR", "en-US"}, Locales{"en-US"}}) {
        this->bridge().setLocales(locales);
        EXPECT_EQ(this->bridge().getLocales(), locales) << "the list is replaced whole, the primary locale first";
    }
}

/// Each setting is read and reported separately.
TYPED_TEST_P(SdkBridgeContract, ChangesOnlyWhatItIsTold) {
    this->bridge().setTimezone("Europe/Paris");
    this->bridge().setLocales({"fr-FR"});
    const bool captions = this->bridge().isCaptionsEnabled();
    const bool doNotDisturb = this->bridge().isDoNotDisturbEnabled();
    this->bridge().setTimezone("America/Vancouver");
    EXPECT_EQ(this->bridge().getLocales(), std::vector<std::string>{"fr-FR"}) << "changed with the time zone";
    this->bridge().setLocales({"en-US"});
    EXPECT_EQ(this->bridge().getTimezone(), "America/Vancouver") << "changed with the locales";
    this->bridge().setHandsFreeEnabled(true);
    this->bridge().applySetting("friendlyName", "Den");
    EXPECT_EQ(this->bridge().getTimezone(), "America/Vancouver");
    EXPECT_EQ(this->bridge().getLocales(), std::vector<std::string>{"en-US"});
    EXPECT_EQ(this->bridge().isCaptionsEnabled(), captions);
    EXPECT_EQ(this->bridge().isDoNotDisturbEnabled(), doNotDisturb);
}

/// The handler reads at any time, so a read must change nothing.
TYPED_TEST_P(SdkBridgeContract, AnswersTheSameWhileNothingIsWritten) {
    const std::string first = this->everything();
    EXPECT_EQ(this->everything(), first);
}

/// The handler records a false as an error in the metrics, and reports the change all the same.
TYPED_TEST_P(SdkBridgeContract, TakesTheThreeSettingsThatItIsHanded) {
    for (const std::string key : {"handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        for (const std::string value : {"true", "false", "false"}) {
            EXPECT_TRUE(this->bridge().applySetting(key, value)) << key << " = " << value;
        }
    }
    for (const std::string name : {"Den", "Living room", "Living room", "K\xc3\xbc\"che"}) {
        EXPECT_TRUE(this->bridge().applySetting("friendlyName", name)) << name;
    }
}

/// A client may send any text. The handler compares the next one with the SDK's value: a bridge accepts the text
/// unchanged or keeps the old value.
TYPED_TEST_P(SdkBridgeContract, KeepsTheOldValueOfWhatItCannotTake) {
    this->bridge().setTimezone("Europe/Paris");
    for (const std::string timezone : {"", "Nowhere/At all", "Europe/Paris "}) {
        const std::string old = this->bridge().getTimezone();
        EXPECT_NO_THROW(this->bridge().setTimezone(timezone)) << "an exception leaves the handler's operation";
        const std::string now = this->bridge().getTimezone();
        EXPECT_TRUE(now == old || now == timezone)
            << "'" << timezone << "' was made '" << now << "', neither it nor the old value";
    }
    this->bridge().setLocales({"en-US", "fr-FR"});
    for (const auto& locales : {std::vector<std::string>{"no locale"}, std::vector<std::string>{"fr-FR", "", "x"}}) {
        const auto old = this->bridge().getLocales();
        EXPECT_NO_THROW(this->bridge().setLocales(locales)) << "an exception leaves the handler's operation";
        const auto now = this->bridge().getLocales();
        EXPECT_TRUE(now == old || now == locales) << ::testing::PrintToString(locales) << " was made "
                                                  << ::testing::PrintToString(now) << ", neither it nor the old list";
    }
}

/// The handler passes three settings; a derived handler may pass others.
TYPED_TEST_P(SdkBridgeContract, AnUnknownSettingDoesNoHarm) {
    const std::string before = this->everything();
    for (const std::string key : {"unknown", "", "timezone", "captionsEnabled"}) {
        EXPECT_NO_THROW(this->bridge().applySetting(key, "true")) << "an exception leaves the handler's operation";
        EXPECT_EQ(this->everything(), before) << "'" << key << "' is not one of the three settings";
    }
}

/// A refusal is known to the handler only by the result of `applySetting`; the old values stay.
TYPED_TEST_P(SdkBridgeContract, KeepsTheOldValuesWhenTheSdkRefuses) {
    if constexpr (!offers<RefuseWritesHook, TypeParam>) {
        GTEST_SKIP() << "needs `void refuseWrites(bool refuse)` in the maker";
    } else {
        this->bridge().setTimezone("Europe/Paris");
        this->bridge().setLocales({"fr-FR", "en-US"});
        const std::string before = this->everything();
        this->maker.refuseWrites(true);
        EXPECT_FALSE(this->bridge().applySetting("friendlyName", "Den")) << "a refusal must answer false";
        EXPECT_FALSE(this->bridge().applySetting("pttAlwaysOnEnabled", "true")) << "a refusal must answer false";
        EXPECT_NO_THROW(this->bridge().setTimezone("America/Vancouver"));
        EXPECT_NO_THROW(this->bridge().setLocales({"es-US"}));
        EXPECT_NO_THROW(this->bridge().setHandsFreeEnabled(true));
        EXPECT_EQ(this->everything(), before);
        this->maker.refuseWrites(false);
        this->bridge().setTimezone("America/Vancouver");
        EXPECT_EQ(this->bridge().getTimezone(), "America/Vancouver");
        EXPECT_TRUE(this->bridge().applySetting("friendlyName", "Den"));
    }
}

/// Captions and do-not-disturb are read from the SDK only.
TYPED_TEST_P(SdkBridgeContract, ReportsCaptionsAsTheyAreNow) {
    if constexpr (!offers<SwitchCaptionsHook, TypeParam>) {
        GTEST_SKIP() << "needs `void switchCaptions(bool on)` in the maker";
    } else {
        const bool doNotDisturb = this->bridge().isDoNotDisturbEnabled();
        for (const bool on : {true, false, true}) {
            this->maker.switchCaptions(on);
            EXPECT_EQ(this->bridge().isCaptionsEnabled(), on);
        }
        EXPECT_EQ(this->bridge().isDoNotDisturbEnabled(), doNotDisturb) << "changed with the captions";
    }
}

/// As with captions.
TYPED_TEST_P(SdkBridgeContract, ReportsDoNotDisturbAsItIsNow) {
    if constexpr (!offers<SwitchDoNotDisturbHook, TypeParam>) {
        GTEST_SKIP() << "needs `void switchDoNotDisturb(bool on)` in the maker";
    } else {
        const bool captions = this->bridge().isCaptionsEnabled();
        for (const bool on : {true, false, true}) {
            this->maker.switchDoNotDisturb(on);
            EXPECT_EQ(this->bridge().isDoNotDisturbEnabled(), on);
        }
        EXPECT_EQ(this->bridge().isCaptionsEnabled(), captions) << "changed with do-not-disturb";
    }
}

/// The handler passes these modes to the SDK and reads them from the device information, so the integration must
/// connect the two.
TYPED_TEST_P(SdkBridgeContract, ItsModesComeBackInTheDeviceInformation) {
    if constexpr (!offers<DeviceInfoHook, TypeParam>) {
        GTEST_SKIP() << "needs `OrliaDeviceInfoInterface& deviceInfo()` in the maker";
    } else {
        const auto word = [this](const std::string& key) { return this->maker.deviceInfo().getDeviceInfo()[key]; };
        const std::map<std::string, std::string> modes{{"handsFreeAlwaysOnEnabled", "currentAlwaysOnVoiceMode"},
                                                       {"pttAlwaysOnEnabled", "currentAlwaysOnPTTMode"}};
        for (const bool on : {true, false, true}) {
            const std::string expected = on ? "on" : "off";
            this->bridge().setHandsFreeEnabled(on);
            EXPECT_EQ(word("currentHandsFreeStatus"), expected);
            for (const auto& [setting, key] : modes) {
                this->bridge().applySetting(setting, on ? "true" : "false");
                EXPECT_EQ(word(key), expected) << "after " << setting << " was handed over";
            }
        }
    }
}

/// The handler passes the friendly name to the SDK and reads it from the storage, so the integration must connect the
/// two.
TYPED_TEST_P(SdkBridgeContract, ItsFriendlyNameComesBackInTheStorage) {
    if constexpr (!offers<StorageHook, TypeParam>) {
        GTEST_SKIP() << "needs `StorageManagerInterface& storage()` in the maker";
    } else {
        for (const std::string name : {"Den", "Living room", "K\xc3\xbc\"che"}) {
            this->bridge().applySetting("friendlyName", name);
            std::string value;
            this->maker.storage().getValue("friendlyName", value);
            EXPECT_EQ(value, name) << "under the key 'friendlyName'";
        }
    }
}

/// Requests and notifications may run on different threads, and the handler holds no lock for most of its calls.
TYPED_TEST_P(SdkBridgeContract, MayBeUsedFromAnyThread) {
    if constexpr (!offers<AnyThreadHook, TypeParam>) {
        GTEST_SKIP() << "needs `static constexpr bool anyThread = true;` in the maker";
    } else {
        this->bridge().setTimezone("America/Vancouver");
        this->bridge().setLocales({"en-US"});
        auto other = std::async(std::launch::async, [this] {
            for (int round = 0; round < 20; ++round) {
                this->bridge().setTimezone("Europe/Paris");
                this->bridge().setLocales({"fr-FR", "en-US"});
            }
        });
        for (int round = 0; round < 20; ++round) {
            EXPECT_NE(this->bridge().getTimezone(), "");
            EXPECT_FALSE(this->bridge().getLocales().empty());
        }
        EXPECT_NO_THROW(other.get());
        EXPECT_EQ(this->bridge().getTimezone(), "Europe/Paris");
        EXPECT_EQ(this->bridge().getLocales(), (std::vector<std::string>{"fr-FR", "en-US"}));
    }
}

REGISTER_TYPED_TEST_SUITE_P(SdkBridgeContract, GivesTheTimezoneBack, GivesTheLocalesBackInTheirOrder,
                            ChangesOnlyWhatItIsTold, AnswersTheSameWhileNothingIsWritten,
                            TakesTheThreeSettingsThatItIsHanded, KeepsTheOldValueOfWhatItCannotTake,
                            AnUnknownSettingDoesNoHarm, KeepsTheOldValuesWhenTheSdkRefuses, ReportsCaptionsAsTheyAreNow,
                            ReportsDoNotDisturbAsItIsNow, ItsModesComeBackInTheDeviceInformation,
                            ItsFriendlyNameComesBackInTheStorage, MayBeUsedFromAnyThread);

}  // namespace SettingsHandlerTesting
