#pragma once

#include <future>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandlerTesting/contracts/Hooks.h"

namespace SettingsHandlerTesting {

/// What the handler relies on in every source of device information. Run it over your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyInfoMaker { MyInfo own; DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return own; }
///     }; INSTANTIATE_TYPED_TEST_SUITE_P(MyInfo, DeviceInfoContract, MyInfoMaker);
///
/// The maker is default-constructed for each check. Its hooks, each for a check of its own:
///
/// - `void switchMode(const std::string& mode, bool on)`: switches the mode that the entry `mode` stands for, at the
///   device.
/// - `static constexpr bool anyThread = true;`: it may be called from every thread.
///
/// It cannot show that the source never calls back into the handler, which holds its mutex during some of the reads.
template <typename Maker>
class DeviceInfoContract : public ::testing::Test {
    /// @cond
protected:
    using Entries = std::map<std::string, std::string>;

    /// The entries that the handler reads, of all there are.
    Entries modes() {
        Entries read;
        for (const auto& [key, word] : maker.deviceInfo().getDeviceInfo()) {
            if (key == "currentHandsFreeStatus" || key == "currentAlwaysOnVoiceMode" ||
                key == "currentAlwaysOnPTTMode") {
                read.emplace(key, word);
            }
        }
        return read;
    }

    Maker maker;
    /// @endcond
};

/// The hook `switchMode` of a maker.
template <typename Maker>
using SwitchModeHook = decltype(std::declval<Maker&>().switchMode(std::string(), true));

TYPED_TEST_SUITE_P(DeviceInfoContract);
// Whoever includes this may have nothing to check with it yet.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DeviceInfoContract);

/// Only the exact word "on" means on. Everything else, a missing entry too, is taken for off without a log line, so a
/// misspelt key or word is never noticed.
TYPED_TEST_P(DeviceInfoContract, SpellsTheThreeModesAndTheirWordsExactly) {
    const auto info = this->modes();
    for (const std::string key : {"currentHandsFreeStatus", "currentAlwaysOnVoiceMode", "currentAlwaysOnPTTMode"}) {
        const auto entry = info.find(key);
        ASSERT_NE(entry, info.end()) << "the handler reads the entry '" << key << "'";
        EXPECT_TRUE(entry->second == "on" || entry->second == "off")
            << "'" << key << "' is '" << entry->second << "'; the words are 'on' and 'off', in small letters";
    }
}

/// Each setting is read by a call of its own: settings read one after the other must fit together.
TYPED_TEST_P(DeviceInfoContract, AnswersTheSameWhileNothingIsSwitched) {
    const auto first = this->modes();
    EXPECT_EQ(this->modes(), first) << "a reading changed what is read";
}

/// The handler reads the modes afresh each time and keeps no copy of its own to correct.
TYPED_TEST_P(DeviceInfoContract, ReportsEachModeAsItIsNow) {
    if constexpr (!offers<SwitchModeHook, TypeParam>) {
        GTEST_SKIP() << "needs `void switchMode(const std::string& mode, bool on)` in the maker";
    } else {
        for (const std::string mode :
             {"currentHandsFreeStatus", "currentAlwaysOnVoiceMode", "currentAlwaysOnPTTMode"}) {
            for (const bool on : {true, false, true}) {
                auto expected = this->modes();
                expected[mode] = on ? "on" : "off";
                this->maker.switchMode(mode, on);
                EXPECT_EQ(this->modes(), expected) << "after switching '" << mode << "' " << (on ? "on" : "off");
            }
        }
    }
}

/// Reads come on the thread of the request, or on that of the one who asks for all settings.
TYPED_TEST_P(DeviceInfoContract, MayBeReadFromAnyThread) {
    if constexpr (!offers<AnyThreadHook, TypeParam>) {
        GTEST_SKIP() << "needs `static constexpr bool anyThread = true;` in the maker";
    } else {
        const auto expected = this->modes();
        auto other = std::async(std::launch::async, [this] { return this->modes(); });
        for (int round = 0; round < 20; ++round) {
            EXPECT_EQ(this->modes(), expected);
        }
        EXPECT_NO_THROW(EXPECT_EQ(other.get(), expected));
    }
}

REGISTER_TYPED_TEST_SUITE_P(DeviceInfoContract, SpellsTheThreeModesAndTheirWordsExactly,
                            AnswersTheSameWhileNothingIsSwitched, ReportsEachModeAsItIsNow, MayBeReadFromAnyThread);

}  // namespace SettingsHandlerTesting
