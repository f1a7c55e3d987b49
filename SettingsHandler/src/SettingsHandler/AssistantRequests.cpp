#include "Constants.h"
#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "Json.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

std::string vaSettingsAppName() {
    using DeviceAbstractionLayer::AppName;
    const auto& names = DeviceAbstractionLayer::AppNameToStringMapping;
    const auto entry = names.find(AppName::VA_SETTINGS_APP);
    return entry == names.end() ? std::string() : entry->second;
}

}  // namespace

void SettingsHandler::handleIsOrliaSelectedVARequest(const std::string& message) {
    ParsedText text;
    // After a parse error the root is an empty object, which has no message id.
    text.parse(message);
    const rapidjson::Value& request = text.root();
    const rapidjson::Value key(rapidjson::StringRef(communicationHandler->messageIdKey));
    const bool hasMessageId = request.IsObject() && request.HasMember(key);
    if (!hasMessageId) {
        logError(logTag, "Message ID not found");
        return;
    }
    const rapidjson::Value& value = request[key];
    if (!value.IsString()) {
        logError(logTag, "Message ID has incorrect format");
        return;
    }
    const std::string messageId(value.GetString(), value.GetStringLength());
    const bool selected = isOrliaSelectedAsVA();

    rapidjson::Document reply(rapidjson::kObjectType);
    auto& allocator = reply.GetAllocator();
    reply.AddMember(rapidjson::Value(Constants::isOrliaSelectedAsVA, allocator), rapidjson::Value(selected), allocator);
    communicationHandler->sendResponse(messageId, reply);
}

bool SettingsHandler::isOrliaSelectedAsVA() {
    return true;
}

void SettingsHandler::handleOpenVASettingsRequest(const std::string& /*message*/) {
    openVASettings();
}

void SettingsHandler::openVASettings() {
    static const std::string appName = vaSettingsAppName();
    appLaunch->launchApp(appName, "");
}

void SettingsHandler::handleLogOutRequest() {
    for (const auto type : {HANDS_FREE_ALWAYS_ON_ENABLED, PTT_ALWAYS_ON_ENABLED}) {
        sdkBridge->applySetting(settingNameFromType(type), defaultValueForSetting(type));
    }
    sdkBridge->setHandsFreeEnabled(false);
    if (!storageManager.clearStorage()) {
        logError(logTag, "Error clearing storage on logout");
    }
    // Intended: no lock, because only the transport's thread uses the handler during a log-out.
    settingsCache = getSettings({});
}

}  // namespace SettingsHandler
