#include "Wire/Locales.h"

#include "Wire/JsonShape.h"

namespace Wire {

std::optional<std::vector<std::string>> localesIn(const std::string& text) {
    rapidjson::Document list;
    const JsonShape shape = shapeOf(text, list);
    if (!shape.valid || shape.root != JsonShape::Root::ARRAY || shape.nesting > maximumNesting) {
        return std::nullopt;
    }
    std::vector<std::string> locales;
    for (const auto& element : list.GetArray()) {
        if (element.IsString() && element.GetStringLength() > 0) {
            locales.emplace_back(element.GetString(), element.GetStringLength());
        }
    }
    return locales.empty() ? std::nullopt : std::optional<std::vector<std::string>>(std::move(locales));
}

}  // namespace Wire
