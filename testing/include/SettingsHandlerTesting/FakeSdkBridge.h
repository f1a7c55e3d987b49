#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerTesting/Journal.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandlerTesting {

/// A voice SDK in memory.
///
/// Entries: `sdk.setHandsFreeEnabled(true)`, `sdk.applySetting(friendlyName, Den)`, `sdk.getLocales()`,
/// `sdk.setLocales(en-US|fr-FR)` and so on.
///
/// Options: the values below; what it refuses; `handsOn`; exceptions and delays through `Journal::at`, which take
/// effect before a write changes anything.
///
/// Threads: any for the operations. Use the public members only while no other thread uses the bridge.
///
/// Differences from a real one: it accepts any text as a locale or time zone. Hands-free, always-on modes and friendly
/// name reach device information and storage only through `handsOn`, which `TestHandler` sets.
class FakeSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeSdkBridge(Journal& recorder) : journal(recorder) {}

    /// The values of the SDK. Tests may read and change them.
    /// @{
    std::vector<std::string> locales{"en-US"};
    std::string timezone = "America/Vancouver";
    bool captionsEnabled = false;
    bool doNotDisturbEnabled = false;
    /// @}
    /// The last accepted values, by key; "handsFreeEnabled" is "true" or "false".
    std::map<std::string, std::string> applied;

    /// Options: `applySetting` returns false and changes nothing, always or for these keys.
    /// @{
    bool refusesSettings = false;
    std::set<std::string> refusedSettings;
    /// @}
    /// Options: the old value stays, which the interface cannot report.
    /// @{
    bool refusesTimezone = false;
    bool refusesLocales = false;
    bool refusesHandsFree = false;
    /// @}

    /// Called with key and value of each accepted setting; hands-free has the key "handsFreeEnabled".
    std::function<void(const std::string& settingDBId, const std::string& value)> handsOn;

    void setHandsFreeEnabled(bool enabled) override {
        const std::string value = enabled ? "true" : "false";
        journal.add("sdk.setHandsFreeEnabled(" + value + ")");
        if (!refusesHandsFree) {
            take("handsFreeEnabled", value);
        }
    }

    bool applySetting(std::string settingDBId, std::string value) override {
        journal.add("sdk.applySetting(" + settingDBId + ", " + value + ")");
        if (refusesSettings || refusedSettings.count(settingDBId) > 0) {
            return false;
        }
        take(settingDBId, value);
        return true;
    }

    void setTimezone(std::string newTimezone) override {
        journal.add("sdk.setTimezone(" + newTimezone + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        if (!refusesTimezone) {
            timezone = std::move(newTimezone);
        }
    }

    std::string getTimezone() override {
        journal.add("sdk.getTimezone()");
        const std::lock_guard<std::mutex> lock(mutex);
        return timezone;
    }

    void setLocales(std::vector<std::string> newLocales) override {
        std::string joined;
        for (const auto& locale : newLocales) {
            joined += (joined.empty() ? "" : "|") + locale;
        }
        journal.add("sdk.setLocales(" + joined + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        if (!refusesLocales) {
            locales = std::move(newLocales);
        }
    }

    std::vector<std::string> getLocales() override {
        journal.add("sdk.getLocales()");
        const std::lock_guard<std::mutex> lock(mutex);
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
    void take(const std::string& settingDBId, const std::string& value) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            applied[settingDBId] = value;
        }
        if (handsOn) {
            handsOn(settingDBId, value);
        }
    }

    Journal& journal;
    std::mutex mutex;
};

}  // namespace SettingsHandlerTesting
