#include "text/Frames.h"
#include "text/JsonShape.h"
#include "text/Utf8.h"

namespace SettingsHost {

TEST(Utf8, TakesEveryLengthOfCharacter) {
    for (const auto* text :
         {"", "a", "é", "中", "😀", "mixed é中😀", "\x7f", "\xc2\x80", "\xef\xbf\xbf", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
        EXPECT_EQ(withValidUtf8(text), text);
    }
    EXPECT_TRUE(isValidUtf8(std::string_view("a\0b", 3)));
}

TEST(Utf8, RefusesWhatIsNoCharacter) {
    for (const auto* text : {"\x80", "\xff", "\xc3", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80",
                             "\xf4\x90\x80\x80", "ok\xc3(", "\xe4\xb8"}) {
        EXPECT_FALSE(isValidUtf8(text)) << text;
        EXPECT_TRUE(isValidUtf8(withValidUtf8(text)));
    }
    EXPECT_FALSE(isValidUtf8(std::string_view("\xc3\0", 2)));
}

TEST(Utf8, ReplacesByteByByteAndKeepsTheRest) {
    EXPECT_EQ(withValidUtf8("a\xff"
                            "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(withValidUtf8("\xe4\xb8"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(JsonShape, TellsRootAndNesting) {
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

TEST(JsonShape, LooksAtResolvedEscapes) {
    EXPECT_TRUE(shapeOf(R"(["\ud83d\ude00"])").wellFormed);
    EXPECT_FALSE(shapeOf(R"(["\udc00"])").wellFormed);
    EXPECT_FALSE(shapeOf(R"({"\udc00":1})").wellFormed);
    EXPECT_FALSE(shapeOf("[\"\xff\"]").wellFormed);
}

TEST(Frames, AreCompactAndValidForAnyBytes) {
    EXPECT_EQ(refusalFrame("code", "say \"no\""), R"({"error":{"code":"code","message":"say \"no\""}})");
    EXPECT_EQ(objectFrame("device", {{"b", "\xff"}, {"a", std::string("\0", 1)}}),
              "{\"device\":{\"a\":\"\\u0000\",\"b\":\"\xEF\xBF\xBD\"}}");
}

}  // namespace SettingsHost
