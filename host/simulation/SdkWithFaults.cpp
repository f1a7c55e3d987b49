#include "simulation/SdkWithFaults.h"

#include <utility>

#include "SettingsHandler/SettingsNames.h"

namespace SettingsHost {

SdkWithFaults::SdkWithFaults(std::shared_ptr<teskVessa::SDKBridgeInterface> otherBridge,
                             std::shared_ptr<const Faults> faultsOfHost,
                             std::function<void(std::chrono::milliseconds)> blockingSleep)
    : bridge(std::move(otherBridge)), faults(std::move(faultsOfHost)), sleep(std::move(blockingSleep)) {}

void SdkWithFaults::setHandsFreeEnabled(bool enabled) {
    if (!refuses(settingNameFromType(SettingsHandler::HANDS_FREE_ENABLED))) {
        called().setHandsFreeEnabled(enabled);
    }
}

bool SdkWithFaults::applySetting(std::string settingDBId, std::string value) {
    return !refuses(settingDBId) && called().applySetting(std::move(settingDBId), std::move(value));
}

void SdkWithFaults::setTimezone(std::string timezone) {
    if (!refuses(settingNameFromType(SettingsHandler::TIMEZONE))) {
        called().setTimezone(std::move(timezone));
    }
}

std::string SdkWithFaults::getTimezone() {
    return called().getTimezone();
}

void SdkWithFaults::setLocales(std::vector<std::string> locales) {
    if (!refuses(settingNameFromType(SettingsHandler::ORLIA_LOCALE))) {
        called().setLocales(std::move(locales));
    }
}

std::vector<std::string> SdkWithFaults::getLocales() {
    return called().getLocales();
}

bool SdkWithFaults::isCaptionsEnabled() {
    return called().isCaptionsEnabled();
}

bool SdkWithFaults::isDoNotDisturbEnabled() {
    return called().isDoNotDisturbEnabled();
}

/// A refusal is as slow as any call.
bool SdkWithFaults::refuses(const std::string& settingDBId) {
    if (!faults->concerns(Fault::SDK_REFUSES, settingDBId)) {
        return false;
    }
    called();
    return true;
}

teskVessa::SDKBridgeInterface& SdkWithFaults::called() {
    if (faults->isOn(Fault::SDK_SLOW)) {
        sleep(faults->timeOf(Fault::SDK_SLOW));
    }
    return *bridge;
}

}  // namespace SettingsHost
