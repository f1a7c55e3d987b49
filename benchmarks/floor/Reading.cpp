#include "Utils/RapidjsonUtil.h"
#include "floor/Documents.h"
#include "floor/Floor.h"
#include "floor/LogLine.h"
#include "floor/Names.h"

namespace Benchmarks::Floor {

namespace JsonUtil = Utils::RapidjsonUtil;
using VessaLogger::ERROR;
using VessaLogger::INFORMATION;
using VessaLogger::TRACE;

bool Floor::deviceMode(const char* name) {
    const auto information = collaborators.device->getDeviceInfo();
    const auto entry = information.find(name);
    return entry != information.end() && entry->second == "on";
}

bool Floor::readStored(SettingsHandler::SettingsNamesType type, const std::string& key, std::string& value) {
    collaborators.storage.getValue(key, value);
    if (value.empty()) {
        value = SettingsHandler::defaultValueForSetting(type);
        if (value == "CUSTOM_DEFAULT_VALUE") {
            logLine(logger, ERROR, "Default value was not found for %s", key.c_str());
            return false;
        }
        logLine(logger, INFORMATION, "Default value retrieved for %s", key.c_str());
    }
    return true;
}

void Floor::read(const std::string& key, std::map<std::string, std::string>& values) {
    const auto type = SettingsHandler::settingTypeFromName(key);
    logLine(logger, TRACE, "SettingDBId: %s", key.c_str());
    std::string value;
    switch (type) {
        case SettingsHandler::CAPTIONS_ENABLED:
            value = collaborators.bridge->isCaptionsEnabled() ? "true" : "false";
            break;
        case SettingsHandler::DO_NOT_DISTURB_ENABLED:
            value = collaborators.bridge->isDoNotDisturbEnabled() ? "true" : "false";
            break;
        case SettingsHandler::ORLIA_LOCALE:
            value = JsonUtil::stringifyVector(collaborators.bridge->getLocales());
            break;
        case SettingsHandler::TIMEZONE:
            value = collaborators.bridge->getTimezone();
            break;
        case SettingsHandler::HANDS_FREE_ENABLED:
            value = deviceMode("currentHandsFreeStatus") ? "true" : "false";
            break;
        case SettingsHandler::HANDS_FREE_ALWAYS_ON_ENABLED:
            value = deviceMode("currentAlwaysOnVoiceMode") ? "true" : "false";
            break;
        case SettingsHandler::PTT_ALWAYS_ON_ENABLED:
            value = deviceMode("currentAlwaysOnPTTMode") ? "true" : "false";
            break;
        default:
            if (!readStored(type, key, value)) {
                return;
            }
    }
    if (type == SettingsHandler::INVALID_SETTING) {
        cache[key] = value;
    }
    values[key] = std::move(value);
}

void Floor::readAll(std::map<std::string, std::string>& values) {
    for (const auto& entry : SettingsHandler::SettingsNamesTypeToStringMapping) {
        read(entry.second, values);
    }
}

void Floor::getSettings(const std::string& request) {
    logLine(logger, INFORMATION, "Handling GetSettings request");
    RequestDocument document;
    if (!document.parse(request)) {
        logLine(logger, ERROR, "Payload was not parsed successfully");
        return;
    }
    std::string messageId;
    if (!JsonUtil::tryGetStringMember(document.root(), collaborators.transport->messageIdKey, messageId)) {
        logLine(logger, ERROR, "GetSettings Message Id not found or has incorrect format");
        return;
    }
    rapidjson::Value payload;
    if (!JsonUtil::tryGetObjectMember(document.root(), collaborators.transport->payloadKey, payload)) {
        logLine(logger, ERROR, "SetSetting Message payload not found");
        return;
    }
    rapidjson::Value names;
    if (!JsonUtil::tryGetValueArrayMember(payload, Names::settings, names)) {
        logLine(logger, ERROR, "GetSettings settings field not found in payload or has incorrect format");
        return;
    }
    logLine(logger, TRACE, "getSettings");
    std::map<std::string, std::string> values;
    bool all = true;
    for (const auto& name : names.GetArray()) {
        if (name.IsString()) {
            all = false;
            read(std::string(name.GetString(), name.GetStringLength()), values);
        }
    }
    if (all) {
        readAll(values);
    }
    reply(messageId, values);
}

void Floor::reply(const std::string& messageId, const std::map<std::string, std::string>& values) {
    MessageDocument message;
    rapidjson::Value settings(rapidjson::kObjectType);
    for (const auto& [name, value] : values) {
        message.addTo(settings, name, value);
    }
    message.addObject(Names::settings, settings);
    collaborators.transport->sendResponse(messageId, message.document());
}

void Floor::initialize() {
    const std::lock_guard<std::mutex> lock(mutex);
    logLine(logger, TRACE, "getSettings");
    cache.clear();
    readAll(cache);
    const std::string& handsFreeEnabled = cache["handsFreeEnabled"];
    logTagged(logger, INFORMATION, "Setting initial hands free status value %s", handsFreeEnabled.c_str());
    collaborators.bridge->setHandsFreeEnabled(handsFreeEnabled == "true");
    const std::string& alwaysOn = cache["handsFreeAlwaysOnEnabled"];
    logTagged(logger, INFORMATION, "Setting initial hands free always on status value %s", alwaysOn.c_str());
    collaborators.bridge->applySetting("handsFreeAlwaysOnEnabled", alwaysOn);
    logTagged(logger, INFORMATION, "Setting initial PTT always on status value %s", alwaysOn.c_str());
    collaborators.bridge->applySetting("pttAlwaysOnEnabled", cache["pttAlwaysOnEnabled"]);
}

}  // namespace Benchmarks::Floor
