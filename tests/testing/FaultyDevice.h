#pragma once

#include <map>
#include <string>

#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Fault.h"
#include "OneThread.h"

namespace SettingsHandlerTests {

/// Device information that has only the current fault.
class FaultyDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    std::map<std::string, std::string> getDeviceInfo() override {
        if (Fault::is("works on one thread only (device)")) {
            thread.expectHere();
        }
        std::map<std::string, std::string> info{{"deviceSerialNumber", "1"}};
        for (const auto& [mode, on] : modes) {
            info[spelled(mode)] = on ? wordForOn() : wordForOff();
        }
        if (Fault::is("switches a mode when it is read")) {
            modes["currentHandsFreeStatus"] = !modes["currentHandsFreeStatus"];
        }
        return info;
    }

    void switchMode(const std::string& mode, bool on) {
        if (Fault::is("never changes a mode")) {
            return;
        }
        for (auto& [name, state] : modes) {
            if (name == mode || Fault::is("has one switch for all modes")) {
                state = on;
            }
        }
        if (Fault::is("never switches a mode off")) {
            modes[mode] = true;
        }
    }

private:
    static std::string spelled(const std::string& mode) {
        return Fault::is("misspells a mode") && mode == "currentAlwaysOnPTTMode" ? "currentAlwaysOnPttMode" : mode;
    }
    static std::string wordForOn() { return "on"; }
    static std::string wordForOff() {
        if (Fault::is("has another value for off")) {
            return "disabled";
        }
        return Fault::is("writes values in upper case") ? "OFF" : "off";
    }

    OneThread thread;
    std::map<std::string, bool> modes{
        {"currentHandsFreeStatus", false}, {"currentAlwaysOnVoiceMode", false}, {"currentAlwaysOnPTTMode", false}};
};

struct FaultyDeviceMaker {
    static constexpr bool anyThread = true;
    FaultyDeviceInfo own;
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return own; }
    void switchMode(const std::string& mode, bool on) { own.switchMode(mode, on); }
};

}  // namespace SettingsHandlerTests
