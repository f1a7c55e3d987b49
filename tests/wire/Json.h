#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "Utils/Rapidjson.h"

// After the header that configures the library.
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>

namespace WireTests {

inline rapidjson::Document parsed(const std::string& text) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(text.c_str(), text.size());
    return document;
}

inline std::string contentOf(const std::string& file) {
    std::ifstream stream(file);
    if (!stream) {
        throw std::runtime_error("cannot read " + file);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Without white space, in the order of the members.
inline std::string compact(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace WireTests
