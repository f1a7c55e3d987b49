#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// The modes that the handler reads from the device information, by the key of the entry.
/// @{
constexpr const char* handsFreeMode = "currentHandsFreeStatus";
constexpr const char* alwaysOnVoiceMode = "currentAlwaysOnVoiceMode";
constexpr const char* alwaysOnPttMode = "currentAlwaysOnPTTMode";
/// @}

/// Device information in memory. Entry: `device.getDeviceInfo()`.
///
/// Knobs: `info`, `switchMode`; exceptions and delays through `Journal::at`.
///
/// Threads: any for `getDeviceInfo` and `switchMode`. `info` is for the test alone, while no other thread uses the
/// object.
///
/// Unlike a real one it has no entries at first, holds whatever a test puts in, and tells nobody of a change:
/// `FakeDeviceLayer` does.
class FakeDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    /// Records into `recorder`, which outlives it.
    explicit FakeDeviceInfo(Journal& recorder) : journal(recorder) {}

    /// What is known about the device; empty at first, so every mode reads as off.
    std::map<std::string, std::string> info;

    /// Switches a mode, as a person does at the device. `mode`: one of the three keys.
    void switchMode(const std::string& mode, bool on) {
        const std::lock_guard<std::mutex> lock(mutex);
        info[mode] = on ? "on" : "off";
    }

    std::map<std::string, std::string> getDeviceInfo() override {
        journal.add("device.getDeviceInfo()");
        const std::lock_guard<std::mutex> lock(mutex);
        return info;
    }

private:
    Journal& journal;
    std::mutex mutex;
};

/// A launcher that launches nothing. Entry: `app.launchApp(name, argument)`. Knob: `launches`.
///
/// Threads: any. Unlike a real one it is done when it answers, and knows every name.
class FakeAppLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    /// Records into `recorder`, which outlives it.
    explicit FakeAppLaunch(Journal& recorder) : journal(recorder) {}

    /// Knob: what it answers.
    bool launches = false;

    bool launchApp(std::string appName, std::string argument) override {
        journal.add("app.launchApp(" + appName + ", " + argument + ")");
        return launches;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
