#pragma once

#include <map>
#include <memory>
#include <string>

#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandler/SettingsHandlerInterface.h"
#include "SettingsHandlerKit/StateStore.h"

/// The television itself: three modes that survive a restart, and a hands-free button.
class Device : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    explicit Device(SettingsHandlerKit::StateStore& theState) : state(theState) { readState(); }

    void readState() {
        for (const char* mode : {"currentHandsFreeStatus", "currentAlwaysOnVoiceMode", "currentAlwaysOnPTTMode"}) {
            modes[mode] = state.load(mode).value_or("off");
        }
    }

    std::map<std::string, std::string> getDeviceInfo() override { return modes; }

    /// The voice SDK switches a mode. Notifies no observer: the caller may be the handler.
    bool setMode(const std::string& mode, bool on) {
        if (!state.save(mode, on ? "on" : "off")) {
            return false;
        }
        modes[mode] = on ? "on" : "off";
        return true;
    }

    /// Weak, because the handler shares the device.
    void subscribe(const std::shared_ptr<SettingsHandler::SettingsHandlerInterface>& handler) { observer = handler; }

    /// Somebody pressed the hands-free button.
    void toggleHandsFree() {
        const bool on = modes["currentHandsFreeStatus"] == "off";
        const auto handler = observer.lock();
        if (setMode("currentHandsFreeStatus", on) && handler) {
            handler->notifyHandsfreeStateChanged(on);
        }
    }

private:
    SettingsHandlerKit::StateStore& state;
    std::map<std::string, std::string> modes;
    std::weak_ptr<SettingsHandler::SettingsHandlerInterface> observer;
};
