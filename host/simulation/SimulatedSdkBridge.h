#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "simulation/SimulatedDevice.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHost {

/// A voice SDK without a voice: it owns locales, time zone, captions and do-not-disturb over a restart. It hands the
/// switch and the always-on modes to the device and the friendly name to the storage, where the handler reads them.
///
/// A value that cannot be saved stays as it was, with a log line at level 3. Reads are answered from memory. One
/// thread only; state store and storage outlive it.
class SimulatedSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    /// `valueObserver` is notified of each value that really changed.
    SimulatedSdkBridge(SettingsHandlerKit::StateStore& store, SDKWrapper::StorageManagerInterface& storageManager,
                       std::shared_ptr<SimulatedDevice> simulatedDevice,
                       std::shared_ptr<SettingsHandlerKit::ValueObserver> valueObserver);

    /// Reads the state from the store, also when it was rolled back. Notifies nobody.
    void readState();

    void setHandsFreeEnabled(bool enabled) override;
    /// Refuses all keys but the three that the handler hands over.
    bool applySetting(std::string settingDBId, std::string value) override;
    void setTimezone(std::string timezone) override;
    std::string getTimezone() override;
    void setLocales(std::vector<std::string> locales) override;
    std::vector<std::string> getLocales() override;
    bool isCaptionsEnabled() override;
    bool isDoNotDisturbEnabled() override;

    /// What a person switches at the device. Returns: false when it could not be saved.
    bool setCaptionsEnabled(bool enabled);
    bool setDoNotDisturbEnabled(bool enabled);

    /// Gives a setting that it sets another value, without being asked. Returns: false when it could not be saved.
    bool changeByItself(const std::string& settingDBId);

private:
    bool applyFriendlyName(const std::string& name);
    bool save(const std::string& settingDBId, std::string& current, const std::string& value);

    SettingsHandlerKit::StateStore& state;
    SDKWrapper::StorageManagerInterface& storage;
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SettingsHandlerKit::ValueObserver> valueObserver;
    std::string localesText;
    std::string currentTimezone;
    std::string captionsEnabled;
    std::string doNotDisturbEnabled;
};

}  // namespace SettingsHost
