#include "Wire/FrameInspector.h"

#include <algorithm>

#include "Wire/ControlCharacters.h"
#include "Wire/JsonShape.h"
#include "Wire/RefusalCode.h"
#include "Wire/Utf8.h"

namespace Wire {

namespace {

std::optional<Refusal> refusalOf(const std::string& frame, const JsonShape& shape) {
    if (frame.find('\0') != std::string::npos) {
        return Refusal{RefusalCode::notJson, "the frame holds a NUL character"};
    }
    if (!shape.valid) {
        return Refusal{RefusalCode::notJson, "the frame is not JSON"};
    }
    if (!shape.wellFormed) {
        return Refusal{RefusalCode::notJson, "the frame holds bytes or escapes that are not valid UTF-8"};
    }
    if (shape.nesting > maximumNesting) {
        return Refusal{RefusalCode::tooDeep, "the frame is nested deeper than 32 levels"};
    }
    if (shape.root != JsonShape::Root::OBJECT) {
        return Refusal{RefusalCode::notAnObject, "the frame is JSON but not an object"};
    }
    return std::nullopt;
}

}  // namespace

Refusal tooLarge() {
    return {RefusalCode::tooLarge, "the frame is larger than 64 KiB"};
}

std::optional<Refusal> inspectFrame(const std::string& frame) {
    return refusalOf(frame, shapeOf(frame));
}

std::optional<Refusal> inspectFrame(const std::string& frame, rapidjson::Document& request) {
    return refusalOf(frame, shapeOf(frame, request));
}

std::optional<int> requestType(const rapidjson::Value& request) {
    const auto type = request.FindMember("type");
    if (type == request.MemberEnd() || !type->value.IsInt()) {
        return std::nullopt;
    }
    return type->value.GetInt();
}

RequestedChange requestedChange(const rapidjson::Value& request) {
    const auto payload = request.FindMember("payload");
    if (payload == request.MemberEnd() || !payload->value.IsObject()) {
        return {};
    }
    const auto text = [&](const char* name) -> std::optional<std::string_view> {
        const auto member = payload->value.FindMember(name);
        if (member == payload->value.MemberEnd() || !member->value.IsString()) {
            return std::nullopt;
        }
        return std::string_view(member->value.GetString(), member->value.GetStringLength());
    };
    return {text("settingDBId"), text("to")};
}

bool isClientName(std::string_view name) {
    constexpr std::ptrdiff_t longest = 64;
    // Bytes that continue a character start with the bits 10.
    const auto characters = std::count_if(
        name.begin(), name.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; });
    return characters >= 1 && characters <= longest && isValidUtf8(name) && escapeControlCharacters(name) == name;
}

}  // namespace Wire
