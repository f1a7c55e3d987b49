#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerTesting/Journal.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandlerTesting {

/// A voice SDK in memory. Entries: `sdk.setHandsFreeEnabled(true)`, `sdk.applySetting(friendlyName, Den)`,
/// `sdk.getLocales()`, `sdk.setLocales(en-US|fr-FR)` and so on. Unlike a real one it hands nothing on: what it is told
/// of hands-free, always-on modes and friendly name is not read back from device information or storage.
class FakeSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    explicit FakeSdkBridge(Journal& recorder) : journal(recorder) {}

    /// What the SDK holds. Tests may read and change it at will.
    std::vector<std::string> locales{"en-US"};
    std::string timezone = "America/Vancouver";
    bool captionsEnabled = false;
    bool doNotDisturbEnabled = false;
    /// Knob: `applySetting` answers false.
    bool refusesSettings = false;

    void setHandsFreeEnabled(bool enabled) override {
        journal.add(std::string("sdk.setHandsFreeEnabled(") + (enabled ? "true" : "false") + ")");
    }

    bool applySetting(std::string settingDBId, std::string value) override {
        journal.add("sdk.applySetting(" + settingDBId + ", " + value + ")");
        return !refusesSettings;
    }

    void setTimezone(std::string newTimezone) override {
        journal.add("sdk.setTimezone(" + newTimezone + ")");
        timezone = std::move(newTimezone);
    }

    std::string getTimezone() override {
        journal.add("sdk.getTimezone()");
        return timezone;
    }

    void setLocales(std::vector<std::string> newLocales) override {
        std::string joined;
        for (const auto& locale : newLocales) {
            joined += (joined.empty() ? "" : "|") + locale;
        }
        journal.add("sdk.setLocales(" + joined + ")");
        locales = std::move(newLocales);
    }

    std::vector<std::string> getLocales() override {
        journal.add("sdk.getLocales()");
        return locales;
    }

    bool isCaptionsEnabled() override {
        journal.add("sdk.isCaptionsEnabled()");
        return captionsEnabled;
    }

    bool isDoNotDisturbEnabled() override {
        journal.add("sdk.isDoNotDisturbEnabled()");
        return doNotDisturbEnabled;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
