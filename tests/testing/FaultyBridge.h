#pragma once

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Fault.h"
#include "FaultyDevice.h"
#include "FaultyStorage.h"
#include "OneThread.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandlerTests {

/// A bridge to a voice SDK, with its device and its storage, that has only the current fault.
class FaultyBridge : public teskVessa::SDKBridgeInterface {
public:
    FaultyDeviceInfo device;
    FaultyStorage storage;
    bool captions = false;
    bool doNotDisturb = false;
    bool refuses = false;

    void setHandsFreeEnabled(bool enabled) override {
        if (!refuses && !Fault::is("does not report hands-free")) {
            device.switchMode("currentHandsFreeStatus", enabled);
        }
    }

    bool applySetting(std::string settingDBId, std::string value) override {
        if (refuses) {
            return Fault::is("returns true for a refusal");
        }
        if (settingDBId == "friendlyName") {
            return applyName(value);
        }
        if (settingDBId == "pttAlwaysOnEnabled" || settingDBId == "handsFreeAlwaysOnEnabled") {
            return applyMode(settingDBId, value == "true");
        }
        if (Fault::is("throws at an unknown setting")) {
            throw std::invalid_argument(settingDBId);
        }
        if (Fault::is("accepts every setting that it knows") && settingDBId == "timezone") {
            timezone = value;
        }
        return false;
    }

    void setTimezone(std::string newTimezone) override {
        if (refuses && Fault::is("throws when it refuses")) {
            throw std::runtime_error("refused");
        }
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        if ((refuses && !Fault::is("writes what was refused")) || Fault::is("forgets the time zone")) {
            return;
        }
        if (Fault::is("throws at a time zone that it does not know") && newTimezone.find('/') == std::string::npos) {
            throw std::invalid_argument(newTimezone);
        }
        if (Fault::is("normalises a time zone") && !newTimezone.empty() && newTimezone.back() == ' ') {
            newTimezone = "UTC";
        }
        if (Fault::is("follows the time zone with the locale")) {
            locales = {newTimezone == "Europe/Paris" ? "fr-FR" : "en-CA"};
        }
        timezone = std::move(newTimezone);
    }

    std::string getTimezone() override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        return Fault::is("reads another time zone each time") ? timezone + std::to_string(++readings) : timezone;
    }

    void setLocales(std::vector<std::string> newLocales) override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        if (refuses && !Fault::is("writes what was refused")) {
            return;
        }
        if (Fault::is("reverses the locales")) {
            std::reverse(newLocales.begin(), newLocales.end());
        }
        if (Fault::is("keeps the primary locale alone")) {
            newLocales.resize(1);
        }
        if (Fault::is("drops the locales that it does not know")) {
            newLocales.erase(std::remove_if(newLocales.begin(), newLocales.end(),
                                            [](const std::string& locale) { return locale.size() != 5; }),
                             newLocales.end());
        }
        if (Fault::is("adds locales")) {
            locales.insert(locales.end(), newLocales.begin(), newLocales.end());
        } else {
            locales = std::move(newLocales);
        }
        if (Fault::is("follows the locale with the time zone")) {
            timezone = "Europe/Paris";
        }
    }

    std::vector<std::string> getLocales() override {
        expectThread();
        const std::lock_guard<std::mutex> lock(mutex);
        return locales;
    }

    bool isCaptionsEnabled() override { return captions; }
    bool isDoNotDisturbEnabled() override { return doNotDisturb; }

    void switchCaptions(bool on) {
        captions = on && !Fault::is("never switches captions on");
        if (Fault::is("switches do-not-disturb with captions")) {
            doNotDisturb = on;
        }
    }
    void switchDoNotDisturb(bool on) {
        doNotDisturb = on || Fault::is("never switches do-not-disturb off");
        if (Fault::is("switches captions with do-not-disturb")) {
            captions = on;
        }
    }

private:
    void expectThread() const {
        if (Fault::is("works on one thread only (bridge)")) {
            thread.expectHere();
        }
    }

    bool applyName(const std::string& name) {
        std::string old;
        storage.getValue("friendlyName", old);
        storage.setValue(Fault::is("stores the name under another key") ? "name" : "friendlyName", name);
        return !Fault::is("refuses an unchanged name") || old != name;
    }

    bool applyMode(const std::string& setting, bool on) {
        const bool isPtt = (setting == "pttAlwaysOnEnabled") != Fault::is("confuses the modes");
        device.switchMode(isPtt ? "currentAlwaysOnPTTMode" : "currentAlwaysOnVoiceMode", on);
        return !Fault::is("refuses to switch a mode off") || on;
    }

    OneThread thread;
    std::mutex mutex;
    std::string timezone = "America/Vancouver";
    std::vector<std::string> locales{"en-US"};
    int readings = 0;
};

struct FaultyBridgeMaker {
    static constexpr bool anyThread = true;
    FaultyBridge own;
    teskVessa::SDKBridgeInterface& bridge() { return own; }
    void refuseWrites(bool refuse) { own.refuses = refuse; }
    void switchCaptions(bool on) { own.switchCaptions(on); }
    void switchDoNotDisturb(bool on) { own.switchDoNotDisturb(on); }
    DeviceAbstractionLayer::OrliaDeviceInfoInterface& deviceInfo() { return own.device; }
    SDKWrapper::StorageManagerInterface& storage() { return own.storage; }
};

}  // namespace SettingsHandlerTests
