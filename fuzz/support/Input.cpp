#include "support/Input.h"

namespace SettingsHandlerFuzz {

Surroundings surroundingsFrom(std::uint8_t bits) {
    Surroundings around;
    around.refusesWrites = (bits & 1U) != 0;
    around.refusesClearing = (bits & 2U) != 0;
    around.refusesSettings = (bits & 4U) != 0;
    around.captionsEnabled = (bits & 8U) != 0;
    if ((bits & 16U) != 0) {
        around.locales = {};
        around.timezone.clear();
    }
    if ((bits & 32U) != 0) {
        around.locales = {"fr-FR", "en-US"};
        around.timezone = "Europe/Paris";
        around.doNotDisturbEnabled = true;
    }
    if ((bits & 64U) != 0) {
        around.deviceInfo = {
            {"currentHandsFreeStatus", "on"}, {"currentAlwaysOnVoiceMode", "on"}, {"currentAlwaysOnPTTMode", "On"}};
    }
    if ((bits & 128U) != 0) {
        around.stored = {{"deviceName", "Den"}, {"friendlyName", ""},           {"tovanEntitlementStatus", "active"},
                         {"a", "stored"},       {"orliaLocale", "[\"de-DE\"]"}, {"timezone", "Europe/Berlin"}};
    }
    return around;
}

}  // namespace SettingsHandlerFuzz
