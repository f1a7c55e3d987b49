#include "guard/LocaleGuard.h"

#include "SettingsHandler/SettingsNames.h"
#include "Utils/RapidjsonUtil.h"
#include "text/JsonShape.h"

namespace SettingsHost {

bool mayReachHandler(const std::string& settingDBId, const std::string& value) {
    if (SettingsHandler::settingTypeFromName(settingDBId) != SettingsHandler::ORLIA_LOCALE) {
        return true;
    }
    const JsonShape shape = shapeOf(value);
    return !shape.valid || (shape.root == JsonShape::Root::ARRAY && shape.nesting <= maximumNesting);
}

bool requestMayReachHandler(const std::string& requestText) {
    using namespace Utils::RapidjsonUtil;
    rapidjson::Document request;
    if (request.Parse<Utils::jsonParseFlags>(requestText.c_str()).HasParseError()) {
        return true;
    }
    rapidjson::Value payload;
    std::string settingDBId;
    std::string value;
    return !tryGetObjectMember(request, "payload", payload) ||
           !tryGetStringMember(payload, "settingDBId", settingDBId) || !tryGetStringMember(payload, "to", value) ||
           mayReachHandler(settingDBId, value);
}

}  // namespace SettingsHost
