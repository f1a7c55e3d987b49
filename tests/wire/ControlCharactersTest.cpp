#include "Wire/ControlCharacters.h"

namespace Wire {

TEST(ControlCharacters, BecomeEscapesAndOtherBytesStay) {
    EXPECT_EQ(escapeControlCharacters(std::string("a\tb\r\n\0\x1f\x7f \\ é", 13)), R"(a\tb\r\n\x00\x1f\x7f \ é)");
}

TEST(ControlCharacters, OfTwoBytesBecomeOneEscape) {
    EXPECT_EQ(escapeControlCharacters("\xc2\x80\xc2\x9f\x31m \xc2\xa0 \xc3\x80 \xc2"),
              "\\u0080\\u009f1m \xc2\xa0 \xc3\x80 \xc2");
}

TEST(ControlCharacters, DoubledBackslashesKeepDifferentTextsDifferent) {
    EXPECT_EQ(escapeControlCharacters("a\\n\n", Backslash::DOUBLED), R"(a\\n\n)");
}

}  // namespace Wire
