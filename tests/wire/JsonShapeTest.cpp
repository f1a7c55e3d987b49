#include <array>
#include <cstdint>
#include <cstdio>

#include "Wire/JsonShape.h"

namespace Wire {

TEST(JsonShape, FindsRootAndNesting) {
    EXPECT_EQ(shapeOf("{}").root, JsonShape::Root::OBJECT);
    EXPECT_EQ(shapeOf(" [1] ").root, JsonShape::Root::ARRAY);
    EXPECT_EQ(shapeOf("5").root, JsonShape::Root::OTHER);
    EXPECT_EQ(shapeOf("5").nesting, 0U);
    EXPECT_EQ(shapeOf(R"({"a":[[1],[[2]]]})").nesting, 4U);
    EXPECT_FALSE(shapeOf("[1").valid);
    EXPECT_TRUE(shapeOf(std::string("[]\0 garbage", 11)).valid);
}

TEST(JsonShape, ReadsAnyDepth) {
    const std::size_t depth = 200000;
    const JsonShape shape = shapeOf(std::string(depth, '[') + std::string(depth, ']'));
    EXPECT_TRUE(shape.valid);
    EXPECT_EQ(shape.nesting, depth);
    EXPECT_FALSE(shapeOf(std::string(depth, '[')).valid);
}

TEST(JsonShape, ChecksResolvedEscapes) {
    EXPECT_TRUE(shapeOf(R"(["\ud83d\ude00"])").wellFormed);
    EXPECT_FALSE(shapeOf(R"(["\udc00"])").wellFormed);
    EXPECT_FALSE(shapeOf(R"({"\udc00":1})").wellFormed);
    EXPECT_FALSE(shapeOf("[\"\xff\"]").wellFormed);
}

namespace {

/// Lists the values of a document with their types.
class Inventory {
public:
    using Size = rapidjson::SizeType;

    bool Null() { return add("null"); }
    bool Bool(bool value) { return add(value ? "true" : "false"); }
    bool Int(int value) { return add("int " + std::to_string(value)); }
    bool Uint(unsigned value) { return add("uint " + std::to_string(value)); }
    bool Int64(std::int64_t value) { return add("int64 " + std::to_string(value)); }
    bool Uint64(std::uint64_t value) { return add("uint64 " + std::to_string(value)); }
    bool Double(double value) {
        std::array<char, 40> text{};
        std::snprintf(text.data(), text.size(), "%a", value);
        return add(std::string("double ") + text.data());
    }
    bool RawNumber(const char* text, Size length, bool /*copy*/) { return add("raw " + std::string(text, length)); }
    bool String(const char* text, Size length, bool /*copy*/) { return add("string " + std::string(text, length)); }
    bool Key(const char* text, Size length, bool /*copy*/) { return add("key " + std::string(text, length)); }
    bool StartObject() { return add("{"); }
    bool EndObject(Size members) { return add("} " + std::to_string(members)); }
    bool StartArray() { return add("["); }
    bool EndArray(Size elements) { return add("] " + std::to_string(elements)); }

    std::vector<std::string> lines;

private:
    bool add(const std::string& line) {
        lines.push_back(line);
        return true;
    }
};

std::vector<std::string> inventoryOf(const rapidjson::Document& document) {
    Inventory inventory;
    document.Accept(inventory);
    return inventory.lines;
}

/// The values of `text` as the handler parses it; empty when it is not JSON.
std::vector<std::string> seenByTheHandler(const std::string& text) {
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(text.c_str());
    return document.HasParseError() ? std::vector<std::string>() : inventoryOf(document);
}

std::vector<std::string> filledFrom(const std::string& text) {
    rapidjson::Document document(rapidjson::kObjectType);
    const JsonShape shape = shapeOf(text, document);
    const JsonShape sameShape = shapeOf(text);
    EXPECT_EQ(shape.valid, sameShape.valid) << text;
    EXPECT_EQ(shape.root, sameShape.root) << text;
    EXPECT_EQ(shape.nesting, sameShape.nesting) << text;
    EXPECT_EQ(shape.wellFormed, sameShape.wellFormed) << text;
    return shape.valid ? inventoryOf(document) : std::vector<std::string>();
}

std::string nestedArrays(std::size_t depth) {
    return std::string(depth, '[') + "-1" + std::string(depth, ']');
}

}  // namespace

TEST(JsonShape, FillsADocumentWithEveryKindOfValue) {
    std::string kinds;
    for (const auto& line : filledFrom(R"({"a":1,"a":"x\ny","b":[null,true,false],"i":4294967295,"j":-2147483649,)"
                                       R"("u":18446744073709551615,"d":18446744073709551616,"e":1.5,"":{}})")) {
        kinds += line + "|";
    }
    EXPECT_EQ(kinds,
              "{|key a|int 1|key a|string x\ny|key b|[|null|true|false|] 3|key i|uint 4294967295|"
              "key j|int64 -2147483649|key u|uint64 18446744073709551615|key d|double 0x1p+64|"
              "key e|double 0x1.8p+0|key |{|} 0|} 9|");
}

TEST(JsonShape, FillsADocumentWithWhatTheHandlerSees) {
    const std::vector<std::string> texts{
        R"({"type":24,"type":7,"payload":{"to":"a","to":"b"},"payload":{}})",
        "[0,-0,2147483647,2147483648,-2147483648,4294967296,9223372036854775807,9223372036854775808]",
        "[-9223372036854775808,-9223372036854775809,0.1,1e308,5e-324,-0.0,1e2,123456789012345678901234567890]",
        R"({"\u0061\u0000b":"\u0000\ud83d\ude00","é":"\"\\\/\b\f\n\r\t"})",
        std::string("{\"a\":1}\0 and more", 17),
        std::string("{\"a\":\"\0\"}", 9),
        "[\"\xff\"]",
        R"(["\udc00"])",
        " \r\n\t{ \"a\" : [ ] } ",
        "5",
        "null",
        "\"text\"",
        "",
        "{",
        "{} {}",
        "[1,]",
        "01",
        "1e999",
        "{'a':1}",
        R"({"a":1 "b":2})",
        nestedArrays(1),
        nestedArrays(maximumNesting),
        std::string(maximumNesting, '[') + std::string(maximumNesting - 1, ']'),
    };
    for (const auto& text : texts) {
        EXPECT_EQ(filledFrom(text), seenByTheHandler(text)) << text;
    }
}

TEST(JsonShape, LeavesADocumentThatItCannotFillUnchanged) {
    for (const auto& text : {nestedArrays(maximumNesting + 1), nestedArrays(200000), std::string("{\"a\":1"),
                             "[" + nestedArrays(maximumNesting) + ",", std::string()}) {
        rapidjson::Document document(rapidjson::kObjectType);
        shapeOf(text, document);
        EXPECT_EQ(inventoryOf(document), (std::vector<std::string>{"{", "} 0"})) << text.substr(0, 100);
    }
}

}  // namespace Wire
