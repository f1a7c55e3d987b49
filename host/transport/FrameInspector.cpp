#include "transport/FrameInspector.h"

#include "Utils/RapidjsonUtil.h"
#include "text/JsonShape.h"

namespace SettingsHost {

Refusal tooLarge() {
    return {"too-large", "the frame is larger than 64 KiB"};
}

std::optional<Refusal> inspectFrame(const std::string& frame) {
    if (frame.find('\0') != std::string::npos) {
        return Refusal{"not-json", "the frame holds a NUL character"};
    }
    const JsonShape shape = shapeOf(frame);
    if (!shape.valid) {
        return Refusal{"not-json", "the frame is not JSON"};
    }
    if (!shape.wellFormed) {
        return Refusal{"not-json", "the frame holds bytes or escapes that are not valid UTF-8"};
    }
    if (shape.nesting > maximumNesting) {
        return Refusal{"too-deep", "the frame is nested deeper than 32 levels"};
    }
    if (shape.root != JsonShape::Root::OBJECT) {
        return Refusal{"not-an-object", "the frame is JSON but not an object"};
    }
    return std::nullopt;
}

std::optional<int> requestType(const std::string& frame) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(frame.c_str());
    const auto type = document.FindMember("type");
    if (type == document.MemberEnd() || !type->value.IsInt()) {
        return std::nullopt;
    }
    return type->value.GetInt();
}

std::string requestedSetting(const std::string& frame) {
    using namespace Utils::RapidjsonUtil;
    rapidjson::Document request;
    request.Parse<Utils::jsonParseFlags>(frame.c_str());
    rapidjson::Value payload;
    std::string setting;
    if (tryGetObjectMember(request, "payload", payload)) {
        tryGetStringMember(payload, "settingDBId", setting);
    }
    return setting;
}

}  // namespace SettingsHost
