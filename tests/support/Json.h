#pragma once

#include <string>

#include <gtest/gtest.h>

#include "Utils/Rapidjson.h"

namespace TestSupport {

inline rapidjson::Document parsed(const std::string& text) {
    rapidjson::Document document;
    document.Parse(text.c_str());
    EXPECT_FALSE(document.HasParseError()) << text;
    return document;
}

}  // namespace TestSupport
