#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simulation/Faults.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHost {

/// The voice SDK as the handler sees it: slow, or refusing a setting, while those faults are on. Otherwise each call
/// is the other bridge's. One thread only.
class SdkWithFaults : public teskVessa::SDKBridgeInterface {
public:
    /// `sleep` blocks, as a slow SDK does.
    SdkWithFaults(std::shared_ptr<teskVessa::SDKBridgeInterface> bridge, std::shared_ptr<const Faults> faults,
                  std::function<void(std::chrono::milliseconds)> sleep);

    void setHandsFreeEnabled(bool enabled) override;
    bool applySetting(std::string settingDBId, std::string value) override;
    void setTimezone(std::string timezone) override;
    std::string getTimezone() override;
    void setLocales(std::vector<std::string> locales) override;
    std::vector<std::string> getLocales() override;
    bool isCaptionsEnabled() override;
    bool isDoNotDisturbEnabled() override;

private:
    bool refuses(const std::string& settingDBId);
    SDKBridgeInterface& called();

    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge;
    std::shared_ptr<const Faults> faults;
    std::function<void(std::chrono::milliseconds)> sleep;
};

}  // namespace SettingsHost
