#include "Wire/AnswerFrame.h"
#include "Wire/Frames.h"
#include "Wire/Utf8.h"

namespace Wire {

TEST(Utf8, AcceptsCharactersOfEveryLength) {
    for (const auto* text :
         {"", "a", "é", "中", "😀", "mixed é中😀", "\x7f", "\xc2\x80", "\xef\xbf\xbf", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
        EXPECT_EQ(withValidUtf8(text), text);
    }
    EXPECT_TRUE(isValidUtf8(std::string_view("a\0b", 3)));
}

TEST(Utf8, RejectsInvalidBytes) {
    for (const auto* text : {"\x80", "\xff", "\xc3", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80",
                             "\xf4\x90\x80\x80", "ok\xc3(", "\xe4\xb8"}) {
        EXPECT_FALSE(isValidUtf8(text)) << text;
        EXPECT_TRUE(isValidUtf8(withValidUtf8(text)));
    }
    EXPECT_FALSE(isValidUtf8(std::string_view("\xc3\0", 2)));
}

TEST(Utf8, ReplacesInvalidBytesAndKeepsTheRest) {
    EXPECT_EQ(withValidUtf8("a\xff"
                            "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(withValidUtf8("\xe4\xb8"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Utf8, PlainAsciiIsWhatJsonWritesAsItIs) {
    for (std::size_t size = 0; size <= 17; ++size) {
        EXPECT_TRUE(isPlainAscii(std::string(size, ' ')));
        EXPECT_TRUE(isPlainAscii(std::string(size, '\x7f')));
        for (std::size_t place = 0; place < size; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                for (const char around : {'a', '!', '#', '[', ']', ' ', '\x7f'}) {
                    std::string text(size, around);
                    text[place] = static_cast<char>(byte);
                    const bool isPlain = byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
                    ASSERT_EQ(isPlainAscii(text), isPlain) << size << " " << place << " " << byte;
                }
            }
        }
    }
}

TEST(Frames, AreCompactAndValidForAnyBytes) {
    EXPECT_EQ(refusalFrame("code", "say \"no\""), R"({"error":{"code":"code","message":"say \"no\""}})");
    EXPECT_EQ(objectFrame("device", {{"b", "\xff"}, {"a", std::string("\0", 1)}}),
              "{\"device\":{\"a\":\"\\u0000\",\"b\":\"\xEF\xBF\xBD\"}}");
}

TEST(Frames, AnAnswerHasTheMembersThatApplyInTheirOrder) {
    EXPECT_EQ(answerFrame({22, "l", AnswerOutcome::done, "", "", {}, {}, true, {}}),
              R"({"type":22,"messageId":"l","payload":{"outcome":"done"}})");
    EXPECT_EQ(
        answerFrame({24, "\"\xff", AnswerOutcome::refused, AnswerReason::stale, "a\nb", "k\\", "\x01", false, -7}),
        "{\"type\":24,\"messageId\":\"\\\"\xEF\xBF\xBD\",\"payload\":{\"outcome\":\"refused\",\"reason\":\"stale\","
        "\"message\":\"a\\nb\",\"settingDBId\":\"k\\\\\",\"value\":\"\\u0001\",\"applied\":false,\"newest\":-7}}");
    EXPECT_EQ(answerFrame({24, "", AnswerOutcome::changed, "", "", "", "", true, {}}),
              R"({"type":24,"messageId":"","payload":{"outcome":"changed","settingDBId":"","value":""}})");
}

}  // namespace Wire
