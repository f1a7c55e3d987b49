#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// Keys of the modes that the handler reads from the device information.
/// @{
constexpr const char* handsFreeMode = "currentHandsFreeStatus";
constexpr const char* alwaysOnVoiceMode = "currentAlwaysOnVoiceMode";
constexpr const char* alwaysOnPttMode = "currentAlwaysOnPTTMode";
/// @}

/// Device information in memory. Entry: `device.getDeviceInfo()`.
///
/// Options: `info`, `switchMode`; exceptions and delays through `Journal::at`.
///
/// Threads: any for `getDeviceInfo` and `switchMode`. Use `info` only while no other thread uses the object.
///
/// Differences from a real one: it has no entries at first, accepts any entry, and does not notify observers of a
/// change; `FakeDeviceLayer` does.
class FakeDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeDeviceInfo(Journal& recorder) : journal(recorder) {}

    /// The entries of the device information; none at first, so that every mode is off.
    std::map<std::string, std::string> info;

    /// Switches a mode on or off, as at the device. `mode`: one of the three keys.
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

/// A launcher that launches nothing. Entry: `app.launchApp(name, argument)`. Option: `launches`.
///
/// Threads: any. Differences from a real one: it returns at once and accepts every name.
class FakeAppLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeAppLaunch(Journal& recorder) : journal(recorder) {}

    /// Option: what `launchApp` returns.
    bool launches = false;

    bool launchApp(std::string appName, std::string argument) override {
        journal.add("app.launchApp(" + appName + ", " + argument + ")");
        return launches;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
