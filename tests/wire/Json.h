#pragma once

// A copy of the JSON library under a name of its own, because the programs that link these sources configure theirs in
// different ways. For the sources of this folder only.

#define RAPIDJSON_NAMESPACE wire_tests_json
#define RAPIDJSON_NAMESPACE_BEGIN namespace wire_tests_json {
#define RAPIDJSON_NAMESPACE_END }
#define RAPIDJSON_HAS_STDSTRING 1
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace WireTests {

namespace json = wire_tests_json;

inline json::Document parsed(const std::string& text) {
    json::Document document;
    document.Parse<json::kParseDefaultFlags | json::kParseIterativeFlag>(text.c_str(), text.size());
    return document;
}

inline std::string contentOf(const std::string& file) {
    std::ifstream stream(file);
    if (!stream) {
        throw std::runtime_error("cannot read " + file);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Without blanks, in the order of the members.
inline std::string compact(const json::Value& value) {
    json::StringBuffer buffer;
    json::Writer<json::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace WireTests
