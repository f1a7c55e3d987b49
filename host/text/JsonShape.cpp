#include "text/JsonShape.h"

#include <algorithm>

#include "Utils/Rapidjson.h"
#include "text/Utf8.h"

namespace SettingsHost {

namespace {

/// Follows the parser's events.
class ShapeReader : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ShapeReader> {
public:
    explicit ShapeReader(JsonShape& result) : shape(result) {}

    bool StartObject() { return open(JsonShape::Root::OBJECT); }
    bool StartArray() { return open(JsonShape::Root::ARRAY); }
    bool EndObject(rapidjson::SizeType /*members*/) { return close(); }
    bool EndArray(rapidjson::SizeType /*elements*/) { return close(); }
    bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) { return check(text, length); }
    bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) { return check(text, length); }

private:
    bool open(JsonShape::Root kind) {
        if (depth == 0) {
            shape.root = kind;
        }
        ++depth;
        shape.nesting = std::max(shape.nesting, depth);
        return true;
    }

    bool close() {
        --depth;
        return true;
    }

    bool check(const char* text, std::size_t length) {
        shape.wellFormed = shape.wellFormed && isValidUtf8({text, length});
        return true;
    }

    JsonShape& shape;
    std::size_t depth = 0;
};

}  // namespace

JsonShape shapeOf(const std::string& text) {
    JsonShape shape;
    ShapeReader handler(shape);
    rapidjson::Reader reader;
    rapidjson::StringStream stream(text.c_str());
    shape.valid = !reader.Parse<Utils::jsonParseFlags>(stream, handler).IsError();
    return shape;
}

}  // namespace SettingsHost
