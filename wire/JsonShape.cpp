#include "Wire/JsonShape.h"

#include <algorithm>
#include <cstdint>

#include "Wire/Utf8.h"

namespace Wire {

namespace {

/// Follows the parser's events, and forwards them until the nesting is over the limit.
template <typename Next>
class ShapeReader {
public:
    using Size = rapidjson::SizeType;

    ShapeReader(JsonShape& result, Next& nextHandler) : shape(result), next(nextHandler) {}

    bool Null() {
        return forward([&] { return next.Null(); });
    }
    bool Bool(bool value) {
        return forward([&] { return next.Bool(value); });
    }
    bool Int(int value) {
        return forward([&] { return next.Int(value); });
    }
    bool Uint(unsigned value) {
        return forward([&] { return next.Uint(value); });
    }
    bool Int64(std::int64_t value) {
        return forward([&] { return next.Int64(value); });
    }
    bool Uint64(std::uint64_t value) {
        return forward([&] { return next.Uint64(value); });
    }
    bool Double(double value) {
        return forward([&] { return next.Double(value); });
    }
    bool RawNumber(const char* text, Size length, bool copy) {
        return forward([&] { return next.RawNumber(text, length, copy); });
    }
    bool String(const char* text, Size length, bool copy) {
        check(text, length);
        return forward([&] { return next.String(text, length, copy); });
    }
    bool Key(const char* text, Size length, bool copy) {
        check(text, length);
        return forward([&] { return next.Key(text, length, copy); });
    }
    bool StartObject() {
        open(JsonShape::Root::OBJECT);
        return forward([&] { return next.StartObject(); });
    }
    bool StartArray() {
        open(JsonShape::Root::ARRAY);
        return forward([&] { return next.StartArray(); });
    }
    bool EndObject(Size members) {
        --depth;
        return forward([&] { return next.EndObject(members); });
    }
    bool EndArray(Size elements) {
        --depth;
        return forward([&] { return next.EndArray(elements); });
    }

private:
    template <typename Event>
    bool forward(const Event& event) {
        return shape.nesting > maximumNesting || event();
    }

    void open(JsonShape::Root kind) {
        if (depth == 0) {
            shape.root = kind;
        }
        ++depth;
        shape.nesting = std::max(shape.nesting, depth);
    }

    void check(const char* text, std::size_t length) {
        shape.wellFormed = shape.wellFormed && isValidUtf8({text, length});
    }

    JsonShape& shape;
    Next& next;
    std::size_t depth = 0;
};

template <typename Next>
JsonShape follow(const std::string& text, Next& next) {
    JsonShape shape;
    ShapeReader<Next> handler(shape, next);
    rapidjson::Reader reader;
    rapidjson::StringStream stream(text.c_str());
    shape.valid = !reader.Parse<Utils::jsonParseFlags>(stream, handler).IsError();
    return shape;
}

}  // namespace

JsonShape shapeOf(const std::string& text) {
    rapidjson::BaseReaderHandler<> ignoring;
    return follow(text, ignoring);
}

JsonShape shapeOf(const std::string& text, rapidjson::Document& document) {
    JsonShape shape;
    const auto parse = [&](rapidjson::Document& builder) {
        shape = follow(text, builder);
        return shape.valid && shape.nesting <= maximumNesting;
    };
    document.Populate(parse);
    return shape;
}

}  // namespace Wire
