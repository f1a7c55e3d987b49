#pragma once

#include <future>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandlerTesting/contracts/Hooks.h"

namespace SettingsHandlerTesting {

/// Checks what the handler requires of a source of device information. Run it on your own with three lines:
///
///     using namespace SettingsHandlerTesting;
///     struct MyInfoMaker { MyInfo own; DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return own; }
///     }; INSTANTIATE_TYPED_TEST_SUITE_P(MyInfo, DeviceInfoContract, MyInfoMaker);
///
/// The maker is default-constructed for each check. Its hooks, each for one check:
///
/// - `void switchMode(const std::string& mode, bool on)`: switches a mode on or off at the device; `mode` is the key
///   of its entry.
/// - `static constexpr bool anyThread = true;`: it may be called from any thread.
///
/// Not checked: the source must not call the handler, which holds its mutex during some of the reads.
template <typename Maker>
class DeviceInfoContract : public ::testing::Test {
    /// @cond
protected:
    using Entries = std::map<std::string, std::string>;

    /// The entries that the handler reads.
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
// A program may include this header without an instantiation.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DeviceInfoContract);

/// Only the exact value "on" means on. Any other value and a missing entry mean off, without a log line, so a misspelt
/// key or value would not be noticed.
TYPED_TEST_P(DeviceInfoContract, SpellsTheThreeModesAndTheirWordsExactly) {
    const auto info = this->modes();
    for (const std::string key : {"currentHandsFreeStatus", "currentAlwaysOnVoiceMode", "currentAlwaysOnPTTMode"}) {
        const auto entry = info.find(key);
        ASSERT_NE(entry, info.end()) << "the handler reads the entry '" << key << "'";
        EXPECT_TRUE(entry->second == "on" || entry->second == "off")
            << "'" << key << "' is '" << entry->second << "'; the words are 'on' and 'off', in small letters";
    }
}

/// Each setting is read by a separate call: settings that are read one after the other must be consistent.
TYPED_TEST_P(DeviceInfoContract, AnswersTheSameWhileNothingIsSwitched) {
    const auto first = this->modes();
    EXPECT_EQ(this->modes(), first) << "a reading changed what is read";
}

/// The handler reads the modes each time.
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

/// The handler reads on the thread that calls it.
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
