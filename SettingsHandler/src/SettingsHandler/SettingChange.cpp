#include "CommunicationHandler/MessageType.h"
#include "Constants.h"
#include "Json.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"

namespace SettingsHandler {

void SettingsHandler::settingChanged(const std::string& settingName, std::string& oldValue,
                                     const std::string& newValue) {
    {
        const std::lock_guard<std::mutex> lock(settingsCacheMutex);
        settingsCache[settingName] = newValue;
    }
    rapidjson::Document event(rapidjson::kObjectType);
    auto& allocator = event.GetAllocator();
    addStringMember(event, Constants::settingDBId, settingName, allocator);
    addStringMember(event, Constants::from, oldValue, allocator);
    addStringMember(event, Constants::to, newValue, allocator);
    communicationHandler->sendMessage(CommunicationHandler::SETTING_CHANGED, event);
    emitSettingMetric(settingName, newValue);
}

void SettingsHandler::emitSettingMetric(const std::string& settingName, const std::string& value) {
    const std::string metricName = settingName + Constants::metricSeparator + value;
    metricsDelegate->recordCounter(metricName, 0, 1, 1.0);
    metricsDelegate->recordEvent(Constants::metricGroup, Constants::metricSource,
                                 {{Constants::metricAttribute, metricName}});
}

std::string SettingsHandler::stringifyVector(const std::vector<std::string>& values) {
    rapidjson::Document document(rapidjson::kArrayType);
    auto& allocator = document.GetAllocator();
    for (const auto& value : values) {
        document.PushBack(rapidjson::Value(value, allocator), allocator);
    }
    return Utils::RapidjsonUtil::stringify(document);
}

}  // namespace SettingsHandler
