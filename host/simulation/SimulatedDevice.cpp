#include "simulation/SimulatedDevice.h"

#include <utility>

namespace SettingsHost {

namespace {

struct ModeNames {
    SimulatedDevice::Mode mode;
    const char* deviceInfoKey;
    SettingsHandler::SettingsNamesType setting;
};

constexpr ModeNames modeNames[] = {
    {SimulatedDevice::Mode::HANDS_FREE, "currentHandsFreeStatus", SettingsHandler::HANDS_FREE_ENABLED},
    {SimulatedDevice::Mode::ALWAYS_ON_VOICE, "currentAlwaysOnVoiceMode", SettingsHandler::HANDS_FREE_ALWAYS_ON_ENABLED},
    {SimulatedDevice::Mode::ALWAYS_ON_PTT, "currentAlwaysOnPTTMode", SettingsHandler::PTT_ALWAYS_ON_ENABLED},
};

constexpr const char* on = "on";
constexpr const char* off = "off";

}  // namespace

SimulatedDevice::SimulatedDevice(SettingsHandlerKit::StateStore& store,
                                 std::shared_ptr<SettingsHandlerKit::ValueObserver> observerOfValues)
    : state(store), valueObserver(std::move(observerOfValues)) {
    readState();
}

void SimulatedDevice::readState() {
    for (const auto& names : modeNames) {
        modes[names.deviceInfoKey] = state.load(names.deviceInfoKey) == on ? on : off;
    }
}

std::map<std::string, std::string> SimulatedDevice::getDeviceInfo() {
    return modes;
}

bool SimulatedDevice::setMode(Mode mode, bool enabled) {
    for (const auto& names : modeNames) {
        std::string& current = modes[names.deviceInfoKey];
        const std::string wanted = enabled ? on : off;
        if (names.mode != mode || current == wanted) {
            continue;
        }
        if (!state.save(names.deviceInfoKey, wanted)) {
            return false;
        }
        current = wanted;
        valueObserver->valueChanged(SettingsHandler::settingNameFromType(names.setting));
    }
    return true;
}

bool SimulatedDevice::toggle(SettingsHandler::SettingsNamesType setting) {
    for (const auto& names : modeNames) {
        if (names.setting == setting) {
            return setMode(names.mode, modes.at(names.deviceInfoKey) != on);
        }
    }
    return false;
}

std::optional<bool> SimulatedDevice::isOn(SettingsHandler::SettingsNamesType setting) const {
    const auto key = stateKeyOf(setting);
    return key ? std::optional<bool>(modes.at(*key) == on) : std::nullopt;
}

std::optional<std::string> SimulatedDevice::stateKeyOf(SettingsHandler::SettingsNamesType setting) {
    for (const auto& names : modeNames) {
        if (names.setting == setting) {
            return names.deviceInfoKey;
        }
    }
    return std::nullopt;
}

void SimulatedDevice::subscribe(
    std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface> infoObserver,
    std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface> handsfreeObserver) {
    deviceInfoObserver = std::move(infoObserver);
    handsfreeStateObserver = std::move(handsfreeObserver);
}

void SimulatedDevice::changeLocale(const std::string& locale) {
    if (const auto observer = deviceInfoObserver.lock()) {
        observer->notifyLocaleChange(locale);
    }
}

void SimulatedDevice::changeLocales(const std::vector<std::string>& locales) {
    if (const auto observer = deviceInfoObserver.lock()) {
        observer->notifyLocaleChange(locales);
    }
}

void SimulatedDevice::changeTimezone(const std::string& timezone) {
    if (const auto observer = deviceInfoObserver.lock()) {
        observer->notifyTimezoneChange(timezone);
    }
}

void SimulatedDevice::changeSystemSetting(const std::string& name, const std::string& value) {
    if (const auto observer = deviceInfoObserver.lock()) {
        observer->notifySystemSettingChanged(name, value);
    }
}

bool SimulatedDevice::switchHandsfree(bool enabled) {
    if (!setMode(Mode::HANDS_FREE, enabled)) {
        return false;
    }
    if (const auto observer = handsfreeStateObserver.lock()) {
        observer->notifyHandsfreeStateChanged(enabled);
    }
    return true;
}

}  // namespace SettingsHost
