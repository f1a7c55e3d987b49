#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Utils/Rapidjson.h"
#include "Wire/Utf8.h"

namespace Wire {

/// Names and strings become valid UTF-8: each byte that is not part of a character becomes U+FFFD.
template <typename Output>
class Utf8Writer : public rapidjson::Writer<Output> {
public:
    using JsonWriter = rapidjson::Writer<Output>;
    using JsonWriter::JsonWriter;

    bool String(const char* text, rapidjson::SizeType length, bool /*copy*/ = false) {
        return isValidUtf8({text, length}) ? JsonWriter::String(text, length)
                                           : JsonWriter::String(withValidUtf8({text, length}));
    }

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false) { return String(text, length, copy); }
};

/// Writes one JSON object member by member, as compact text without a line end, in valid UTF-8 whatever it is given.
template <typename Output = rapidjson::StringBuffer>
class ObjectWriter {
public:
    explicit ObjectWriter(Output output = Output()) : out(std::move(output)) { writer.StartObject(); }

    ObjectWriter(const ObjectWriter&) = delete;
    ObjectWriter& operator=(const ObjectWriter&) = delete;

    void text(std::string_view name, std::string_view value) {
        string(name);
        string(value);
    }

    template <typename Integer>
    void number(std::string_view name, Integer value) {
        static_assert(std::is_integral_v<Integer>);
        string(name);
        if constexpr (std::is_signed_v<Integer>) {
            writer.Int64(value);
        } else {
            writer.Uint64(value);
        }
    }

    void boolean(std::string_view name, bool value) {
        string(name);
        writer.Bool(value);
    }

    void null(std::string_view name) {
        string(name);
        writer.Null();
    }

    void json(std::string_view name, const rapidjson::Value& value) {
        string(name);
        value.Accept(writer);
    }

    /// An array of strings.
    template <typename Texts>
    void texts(std::string_view name, const Texts& values) {
        string(name);
        writer.StartArray();
        for (const auto& value : values) {
            string(value);
        }
        writer.EndArray();
    }

    /// What follows are members of an object of that name, until `endObject`.
    void beginObject(std::string_view name) {
        string(name);
        writer.StartObject();
    }
    void endObject() { writer.EndObject(); }

    /// Returns: the text; for other outputs what their `finish` returns.
    auto finish() {
        writer.EndObject();
        if constexpr (std::is_same_v<Output, rapidjson::StringBuffer>) {
            return std::string(out.GetString(), out.GetSize());
        } else {
            return out.finish();
        }
    }

private:
    void string(std::string_view text) { writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size())); }

    Output out;
    Utf8Writer<Output> writer{out};
};

}  // namespace Wire
