#pragma once

#include <chrono>
#include <string>

#include "SettingsHandler/SettingsHandler.h"
#include "Utils/Rapidjson.h"

/// A handler that no request can crash, and that no clock can lock out.
class CarefulHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::SettingsHandler;

    /// Refuses a time stamp from more than a day ahead: once recorded, it would make all later requests too old.
    bool isRequestValid(std::string& settingDBId, long timestamp) override {
        const auto tomorrow = std::chrono::system_clock::now() + std::chrono::hours(24);
        const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(tomorrow.time_since_epoch()).count();
        return timestamp <= limit && SettingsHandler::isRequestValid(settingDBId, timestamp);
    }

    /// Refuses locales that are JSON but not an array. The handler itself refuses what is not JSON.
    bool setSetting(const std::string& name, const std::string& value) override {
        if (name == "orliaLocale") {
            rapidjson::Document locales;
            locales.Parse<Utils::jsonParseFlags>(value.c_str());
            if (!locales.HasParseError() && !locales.IsArray()) {
                return false;
            }
        }
        return SettingsHandler::setSetting(name, value);
    }
};
