#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"

/// The device's information about itself, and its observers.
class Device : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    std::map<std::string, std::string> getDeviceInfo() override {
        const std::lock_guard<std::mutex> lock(mutex);
        return modes;
    }

    /// The voice SDK switched a mode. Notifies no observer: the caller may be the handler, which holds its mutex.
    void setMode(const std::string& mode, bool on) {
        const std::lock_guard<std::mutex> lock(mutex);
        modes[mode] = on ? "on" : "off";
    }

    /// Weak, because the handler shares the device: two that share each other are never destroyed.
    template <typename Handler>
    void subscribe(const std::shared_ptr<Handler>& handler) {
        deviceObserver = handler;
        handsfreeObserver = handler;
    }

    /// Somebody changed the device's locale.
    void changeLocale(const std::string& locale) {
        if (const auto observer = deviceObserver.lock()) {
            observer->notifyLocaleChange(locale);
        }
    }
    /// Somebody used the hands-free switch.
    void switchHandsfree(bool on) {
        setMode("currentHandsFreeStatus", on);
        if (const auto observer = handsfreeObserver.lock()) {
            observer->notifyHandsfreeStateChanged(on);
        }
    }

private:
    std::mutex mutex;
    std::map<std::string, std::string> modes;
    std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface> deviceObserver;
    std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface> handsfreeObserver;
};
