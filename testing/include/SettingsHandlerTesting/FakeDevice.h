#pragma once

#include <map>
#include <string>

#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// Device information in memory. Entry: `device.getDeviceInfo()`.
class FakeDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    explicit FakeDeviceInfo(Journal& recorder) : journal(recorder) {}

    /// What is known about the device; empty at first, so every mode reads as off.
    std::map<std::string, std::string> info;

    std::map<std::string, std::string> getDeviceInfo() override {
        journal.add("device.getDeviceInfo()");
        return info;
    }

private:
    Journal& journal;
};

/// A launcher that launches nothing. Entry: `app.launchApp(name, argument)`.
class FakeAppLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    explicit FakeAppLaunch(Journal& recorder) : journal(recorder) {}

    bool launchApp(std::string appName, std::string argument) override {
        journal.add("app.launchApp(" + appName + ", " + argument + ")");
        return false;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
