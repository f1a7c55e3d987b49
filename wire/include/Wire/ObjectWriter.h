#pragma once

#include <cstdint>
#include <cstring>
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
        // Nearly all texts; character by character they take several times as long.
        if (isPlainAscii({text, length})) {
            return plainString({text, length});
        }
        return isValidUtf8({text, length}) ? JsonWriter::String(text, length)
                                           : JsonWriter::String(withValidUtf8({text, length}));
    }

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false) { return String(text, length, copy); }

    /// A text that is plain ASCII.
    bool plainString(std::string_view text) {
        this->Prefix(rapidjson::kStringType);
        if constexpr (std::is_same_v<Output, rapidjson::StringBuffer>) {
            char* const place = this->os_->Push(text.size() + 2);
            place[0] = '"';
            std::memcpy(place + 1, text.data(), text.size());
            place[text.size() + 1] = '"';
        } else {
            this->os_->Put('"');
            this->os_->Append(text);
            this->os_->Put('"');
        }
        return this->EndValue(true);
    }
};

/// The name of a member. One that stands in the source is plain ASCII.
class MemberName {
public:
    template <std::size_t Size>
    MemberName(const char (&literal)[Size]) : text(literal, Size - 1) {}
    MemberName(const std::string& anyText) : text(anyText), isPlain(false) {}

    const std::string_view text;
    const bool isPlain = true;
};

/// Writes one JSON object member by member, as compact text without a line end, in valid UTF-8 whatever it is given.
template <typename Output = rapidjson::StringBuffer>
class ObjectWriter {
public:
    explicit ObjectWriter(Output output = Output()) : out(std::move(output)) { writer.StartObject(); }

    ObjectWriter(const ObjectWriter&) = delete;
    ObjectWriter& operator=(const ObjectWriter&) = delete;

    void text(MemberName name, std::string_view value) {
        this->name(name);
        string(value);
    }

    template <typename Integer>
    void number(MemberName name, Integer value) {
        static_assert(std::is_integral_v<Integer>);
        this->name(name);
        if constexpr (std::is_signed_v<Integer>) {
            writer.Int64(value);
        } else {
            writer.Uint64(value);
        }
    }

    void boolean(MemberName name, bool value) {
        this->name(name);
        writer.Bool(value);
    }

    void null(MemberName name) {
        this->name(name);
        writer.Null();
    }

    void json(MemberName name, const rapidjson::Value& value) {
        this->name(name);
        value.Accept(writer);
    }

    /// An array of strings.
    template <typename Texts>
    void texts(MemberName name, const Texts& values) {
        this->name(name);
        writer.StartArray();
        for (const auto& value : values) {
            string(value);
        }
        writer.EndArray();
    }

    /// What follows are members of an object of that name, until `endObject`.
    void beginObject(MemberName name) {
        this->name(name);
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
    void name(MemberName name) { name.isPlain ? writer.plainString(name.text) : string(name.text); }
    bool string(std::string_view text) {
        return writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }

    Output out;
    Utf8Writer<Output> writer{out};
};

}  // namespace Wire
