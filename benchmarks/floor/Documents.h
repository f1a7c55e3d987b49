#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace Benchmarks::Floor {

using Pool = rapidjson::MemoryPoolAllocator<>;

/// A document to parse a usual request into without the heap.
class RequestDocument {
public:
    /// Returns: false when `text` is no JSON.
    bool parse(const std::string& text) { return !json.Parse<Utils::jsonParseFlags>(text.c_str()).HasParseError(); }
    rapidjson::Value& root() { return json; }

private:
    alignas(8) char values[1024];
    alignas(8) char levels[1024];
    Pool valuePool{values, sizeof(values)};
    Pool levelPool{levels, sizeof(levels)};
    rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, Pool> json{rapidjson::kObjectType, &valuePool, 256, &levelPool};
};

/// A document to build a message in without the heap.
class MessageDocument {
public:
    void add(const std::string& name, const std::string& value) { addTo(json, name, value); }
    void addTo(rapidjson::Value& object, const std::string& name, const std::string& value) {
        object.AddMember(rapidjson::Value(name, pool), rapidjson::Value(value, pool), pool);
    }
    void addObject(const std::string& name, rapidjson::Value& object) {
        json.AddMember(rapidjson::Value(name, pool), object, pool);
    }
    rapidjson::Document& document() { return json; }

private:
    alignas(8) char values[4096];
    Pool pool{values, sizeof(values)};
    rapidjson::Document json{rapidjson::kObjectType, &pool};
};

}  // namespace Benchmarks::Floor
