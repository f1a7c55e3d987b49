#include "Constants.h"
#include "Json.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"

namespace SettingsHandler {

namespace JsonUtil = Utils::RapidjsonUtil;

bool SettingsHandler::handleSetSettingRequest(const std::string& message) {
    logInformation(logTag, "Handling SetSettings request");
    ParsedText request;
    if (!request.parse(message)) {
        logError(logTag, "Payload was not parsed successfully");
        return false;
    }
    long timestamp = 0;
    if (!JsonUtil::tryGetInt64Member(request.root(), communicationHandler->timestampKey, timestamp)) {
        logError(logTag, "SetSetting Message timestamp not found");
        return false;
    }
    rapidjson::Value payload;
    if (!JsonUtil::tryGetObjectMember(request.root(), communicationHandler->payloadKey, payload)) {
        logError(logTag, "SetSetting Message payload not found");
        return false;
    }
    std::string settingDBId;
    if (!JsonUtil::tryGetStringMember(payload, Constants::settingDBId, settingDBId)) {
        logError(logTag, "SetSetting settingId not found in payload or has incorrect format");
        return false;
    }
    // Intended: the time stamp is recorded before the value is read, also for a request that then fails.
    if (!isRequestValid(settingDBId, timestamp)) {
        logError(logTag, "Invalid Request: SettingsDBId is invalid or request is older than current request");
        return false;
    }
    std::string value;
    if (!JsonUtil::tryGetStringMember(payload, Constants::to, value)) {
        logError(logTag, "to value field in payload not found or has incorrect format");
        return false;
    }
    return setSetting(settingDBId, value);
}

}  // namespace SettingsHandler
