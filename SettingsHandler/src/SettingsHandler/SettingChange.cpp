#include <unordered_map>
#include <utility>

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
    std::string metricName;
    metricName.reserve(settingName.size() + Constants::metricSeparator.size() + value.size());
    metricName.append(settingName).append(Constants::metricSeparator).append(value);
    metricsDelegate->recordCounter(metricName, 0, 1, 1.0);
    std::unordered_map<std::string, std::string> attributes;
    attributes.emplace(Constants::metricAttribute, std::move(metricName));
    metricsDelegate->recordEvent(Constants::metricGroup, Constants::metricSource, attributes);
}

std::string SettingsHandler::stringifyVector(const std::vector<std::string>& values) {
    JsonPool pool;
    auto& allocator = pool.allocator();
    rapidjson::Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(values.size()), allocator);
    for (const auto& value : values) {
        array.PushBack(rapidjson::Value(value, allocator), allocator);
    }
    return Utils::RapidjsonUtil::stringify(array);
}

}  // namespace SettingsHandler
