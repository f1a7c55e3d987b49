#pragma once

#include <cstddef>
#include <string>

#include "Utils/Rapidjson.h"

/// Parsing of untrusted texts, and building of messages.
namespace SettingsHandler {

/// Memory for short-lived JSON values. Values of usual size take nothing from the heap.
class JsonPool {
public:
    using Allocator = rapidjson::MemoryPoolAllocator<>;

    Allocator& allocator() { return pool; }

private:
    alignas(std::max_align_t) char firstChunk[1024];
    Allocator pool{firstChunk, sizeof(firstChunk), 4096};
};

/// An untrusted text, parsed.
class ParsedText {
public:
    /// Parses `text` up to its first NUL character. Returns: false when it is not JSON; the root is then an empty
    /// object.
    bool parse(const std::string& text) { return !document.Parse<Utils::jsonParseFlags>(text.c_str()).HasParseError(); }
    rapidjson::Value& root() { return document; }

private:
    /// What the parser reserves for the values of unfinished arrays and objects, in bytes.
    static constexpr std::size_t unfinishedValues = 256;

    JsonPool values;
    JsonPool parser;
    rapidjson::GenericDocument<rapidjson::UTF8<>, JsonPool::Allocator, JsonPool::Allocator> document{
        rapidjson::kObjectType, &values.allocator(), unfinishedValues, &parser.allocator()};
};

/// Adds copies of `name` and `value` as the last member of `object`.
inline void addStringMember(rapidjson::Value& object, const std::string& name, const std::string& value,
                            rapidjson::Document::AllocatorType& allocator) {
    object.AddMember(rapidjson::Value(name, allocator), rapidjson::Value(value, allocator), allocator);
}

}  // namespace SettingsHandler
