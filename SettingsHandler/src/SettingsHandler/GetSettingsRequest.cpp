#include "Constants.h"
#include "Json.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"

namespace SettingsHandler {

namespace JsonUtil = Utils::RapidjsonUtil;

namespace {

std::vector<std::string> stringsOf(const rapidjson::Value& array) {
    std::vector<std::string> strings;
    strings.reserve(array.Size());
    for (const auto& element : array.GetArray()) {
        if (element.IsString()) {
            strings.emplace_back(element.GetString(), element.GetStringLength());
        }
    }
    return strings;
}

}  // namespace

void SettingsHandler::handleGetSettingsRequest(const std::string& message) {
    logInformation(logTag, "Handling GetSettings request");
    ParsedText request;
    if (!request.parse(message)) {
        logError(logTag, "Payload was not parsed successfully");
        return;
    }
    std::string messageId;
    if (!JsonUtil::tryGetStringMember(request.root(), communicationHandler->messageIdKey, messageId)) {
        logError(logTag, "GetSettings Message Id not found or has incorrect format");
        return;
    }
    rapidjson::Value payload;
    if (!JsonUtil::tryGetObjectMember(request.root(), communicationHandler->payloadKey, payload)) {
        // Intended: the text names SetSettings.
        logError(logTag, "SetSetting Message payload not found");
        return;
    }
    rapidjson::Value names;
    if (!JsonUtil::tryGetValueArrayMember(payload, Constants::settings, names)) {
        logError(logTag, "GetSettings settings field not found in payload or has incorrect format");
        return;
    }
    const std::map<std::string, std::string> values = getSettings(stringsOf(names));

    rapidjson::Document reply(rapidjson::kObjectType);
    auto& allocator = reply.GetAllocator();
    rapidjson::Value settings(rapidjson::kObjectType);
    for (const auto& [name, value] : values) {
        addStringMember(settings, name, value, allocator);
    }
    reply.AddMember(rapidjson::Value(Constants::settings, allocator), settings, allocator);
    communicationHandler->sendResponse(messageId, reply);
}

}  // namespace SettingsHandler
