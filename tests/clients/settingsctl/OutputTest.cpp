#include <gtest/gtest.h>

#include "Output.h"

using namespace SettingsCtl;

TEST(SettingsCtlOutput, EscapesControlCharactersBelowSpace) {
    EXPECT_EQ(escaped("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(escaped(std::string("\0\x01\x1b[31m\x1f", 8)), "\\x00\\x01\\x1b[31m\\x1f");
}

TEST(SettingsCtlOutput, EscapesDel) {
    EXPECT_EQ(escaped("a\x7f"), "a\\x7f");
}

TEST(SettingsCtlOutput, EscapesControlCharactersFrom80To9fOnly) {
    EXPECT_EQ(escaped("\xc2\x80\xc2\x9b\xc2\x9f"), "\\u0080\\u009b\\u009f");
    EXPECT_EQ(escaped("\xc2\xa0\xc3\x80\xe2\x82\x9b"), "\xc2\xa0\xc3\x80\xe2\x82\x9b");
}

TEST(SettingsCtlOutput, DoublesBackslashes) {
    EXPECT_EQ(escaped("\\"), "\\\\");
    EXPECT_EQ(escaped("a\\nb\nc"), "a\\\\nb\\nc");
    EXPECT_EQ(escaped("\\x1b\x1b"), "\\\\x1b\\x1b");
    EXPECT_EQ(escaped("\\u009b\xc2\x9b"), "\\\\u009b\\u009b");
}

TEST(SettingsCtlOutput, KeepsEverythingElse) {
    const std::string text = "Küche 'n' \"Bad\" / 日本 ~ ";
    EXPECT_EQ(escaped(text), text);
    EXPECT_EQ(escaped("\xc2"), "\xc2");
    EXPECT_EQ(escaped(""), "");
}

TEST(SettingsCtlOutput, WritesAChangeAsOneLine) {
    EXPECT_EQ(changeLine({}, "deviceName", "TV", "Den"), "deviceName: 'TV' -> 'Den'");
    EXPECT_EQ(changeLine({}, "k\n", "\x1b", ""), "k\\n: '\\x1b' -> ''");
    OutputStyle bare;
    bare.bareValues = true;
    EXPECT_EQ(changeLine(bare, "deviceName", "TV", "D\ten"), "D\\ten");
}

TEST(SettingsCtlOutput, WritesJsonInTheOrderOfItsKeys) {
    EXPECT_EQ(jsonObject({{"b", "2"}, {"a", "\"\n\x7f"}}), "{\"a\":\"\\\"\\n\x7f\",\"b\":\"2\"}");
    EXPECT_EQ(jsonObject({}), "{}");
    EXPECT_EQ(jsonArray({"b", "a"}), R"(["b","a"])");
    EXPECT_EQ(jsonArray({}), "[]");
}
