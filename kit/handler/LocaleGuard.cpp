#include "handler/LocaleGuard.h"

#include <string_view>

#include "Utils/RapidjsonUtil.h"
#include "Wire/JsonShape.h"

namespace SettingsHandlerKit {

bool isSafeForHandler(const std::string& settingDBId, const std::string& value) {
    constexpr std::string_view locale = "orliaLocale";
    if (settingDBId != locale) {
        return true;
    }
    const Wire::JsonShape shape = Wire::shapeOf(value);
    return !shape.valid || (shape.root == Wire::JsonShape::Root::ARRAY && shape.nesting <= Wire::maximumNesting);
}

bool isRequestSafeForHandler(const rapidjson::Value& request, const std::string& payloadKey) {
    using Utils::RapidjsonUtil::tryGetStringMember;
    if (!request.IsObject()) {
        return true;
    }
    const auto payload = request.FindMember(payloadKey);
    std::string settingDBId;
    std::string value;
    return payload == request.MemberEnd() || !tryGetStringMember(payload->value, "settingDBId", settingDBId) ||
           !tryGetStringMember(payload->value, "to", value) || isSafeForHandler(settingDBId, value);
}

bool isRequestTextSafeForHandler(const std::string& text, const std::string& payloadKey) {
    // Most requests need no parser: without an escape a name is in the text as it is. The search is for the rare
    // capital.
    if (text.find("Locale") == std::string::npos && text.find('\\') == std::string::npos) {
        return true;
    }
    rapidjson::Document request;
    request.Parse<Utils::jsonParseFlags>(text.c_str());
    return request.HasParseError() || isRequestSafeForHandler(request, payloadKey);
}

}  // namespace SettingsHandlerKit
