#include "handler/SetRequest.h"

#include "Utils/RapidjsonUtil.h"

namespace SettingsHandlerKit {

namespace JsonUtil = Utils::RapidjsonUtil;

SetRequest readSetRequest(const std::string& text,
                          const CommunicationHandler::CommunicationHandlerInterface& transport) {
    SetRequest request;
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(text.c_str());
    if (document.HasParseError()) {
        request.missing = "the request is not JSON";
        return request;
    }
    const auto miss = [&](const std::string& member, const char* type) {
        if (request.missing.empty()) {
            request.missing = "\"" + member + "\" is missing or not " + type;
        }
    };
    long timestamp = 0;
    if (JsonUtil::tryGetInt64Member(document, transport.timestampKey, timestamp)) {
        request.timestamp = timestamp;
    } else {
        miss(transport.timestampKey, "an integer");
    }
    rapidjson::Value payload;
    if (!JsonUtil::tryGetObjectMember(document, transport.payloadKey, payload)) {
        miss(transport.payloadKey, "an object");
        return request;
    }
    if (!JsonUtil::tryGetStringMember(payload, "settingDBId", request.settingDBId)) {
        miss("settingDBId", "a string");
    }
    std::string value;
    if (!JsonUtil::tryGetStringMember(payload, "to", value)) {
        miss("to", "a string");
    }
    return request;
}

}  // namespace SettingsHandlerKit
