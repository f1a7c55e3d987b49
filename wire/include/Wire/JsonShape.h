#pragma once

#include <cstddef>
#include <string>

#include "Utils/Rapidjson.h"

namespace Wire {

/// The deepest nesting that the host accepts: the root counts as 1.
constexpr std::size_t maximumNesting = 32;

/// The kind of a JSON text, found without building a document and at any depth of nesting.
struct JsonShape {
    enum class Root { OBJECT, ARRAY, OTHER };

    /// Is it JSON for the handler: by the same parser, up to the first NUL character?
    bool valid = false;
    Root root = Root::OTHER;
    /// The depth of nesting of objects and arrays.
    std::size_t nesting = 0;
    /// Are all names and string values well-formed UTF-8 once their escapes are resolved?
    bool wellFormed = true;
};

JsonShape shapeOf(const std::string& text);

/// The same, and fills `document`, unless the text is not JSON or is nested deeper than `maximumNesting`.
JsonShape shapeOf(const std::string& text, rapidjson::Document& document);

}  // namespace Wire
