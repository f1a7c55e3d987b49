#include "handler/LocaleGuard.h"

#include "SettingsHandler/SettingsNames.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/JsonShape.h"

namespace SettingsHandlerKit {

bool isSafeForHandler(const std::string& settingDBId, const std::string& value) {
    if (SettingsHandler::settingTypeFromName(settingDBId) != SettingsHandler::ORLIA_LOCALE) {
        return true;
    }
    const Wire::JsonShape shape = Wire::shapeOf(value);
    return !shape.valid || (shape.root == Wire::JsonShape::Root::ARRAY && shape.nesting <= Wire::maximumNesting);
}

bool isRequestSafeForHandler(const rapidjson::Value& request) {
    using Utils::RapidjsonUtil::tryGetStringMember;
    if (!request.IsObject()) {
        return true;
    }
    const auto payload = request.FindMember("payload");
    std::string settingDBId;
    std::string value;
    return payload == request.MemberEnd() || !tryGetStringMember(payload->value, "settingDBId", settingDBId) ||
           !tryGetStringMember(payload->value, "to", value) || isSafeForHandler(settingDBId, value);
}

}  // namespace SettingsHandlerKit
