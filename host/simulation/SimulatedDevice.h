#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerKit/ValueObserver.h"

namespace SettingsHost {

/// A device with a hands-free switch and two always-on modes that survive a restart, and a layer that notifies
/// observers of its changes. Reads are answered from memory. One thread only; the state store outlives it.
class SimulatedDevice : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    enum class Mode { HANDS_FREE, ALWAYS_ON_VOICE, ALWAYS_ON_PTT };

    /// `valueObserver` is notified of each mode that really changed.
    SimulatedDevice(SettingsHandlerKit::StateStore& store,
                    std::shared_ptr<SettingsHandlerKit::ValueObserver> valueObserver);

    /// Reads the state from the store, also when it was rolled back. Notifies nobody.
    void readState();

    std::map<std::string, std::string> getDeviceInfo() override;

    /// Switches a mode. Returns: false when the new state could not be saved; the old one then stays.
    bool setMode(Mode mode, bool enabled);
    /// The same for the mode of this setting, to what it is not. Returns false also for a setting that is no mode.
    bool toggle(SettingsHandler::SettingsNamesType setting);
    /// Is the mode of this setting on? Nothing for a setting that is no mode.
    std::optional<bool> isOn(SettingsHandler::SettingsNamesType setting) const;
    /// Where the store has the mode of this setting, as "on" or "off".
    static std::optional<std::string> stateKeyOf(SettingsHandler::SettingsNamesType setting);

    /// From now on the observers are notified of what happens at the device. They are not kept alive.
    void subscribe(std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface> infoObserver,
                   std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface> handsfreeObserver);

    /// What a person does at the device; each notifies the observers.
    void changeLocale(const std::string& locale);
    void changeLocales(const std::vector<std::string>& locales);
    void changeTimezone(const std::string& timezone);
    void changeSystemSetting(const std::string& name, const std::string& value);
    /// Returns: false when the switch could not be saved; no observer is notified then.
    bool switchHandsfree(bool enabled);

private:
    SettingsHandlerKit::StateStore& state;
    std::shared_ptr<SettingsHandlerKit::ValueObserver> valueObserver;
    std::map<std::string, std::string> modes;
    std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface> deviceInfoObserver;
    std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface> handsfreeStateObserver;
};

}  // namespace SettingsHost
