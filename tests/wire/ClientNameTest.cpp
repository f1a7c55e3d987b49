#include <gtest/gtest.h>

#include "Wire/FrameInspector.h"

TEST(ClientName, HasOneTo64Characters) {
    EXPECT_FALSE(Wire::isClientName(""));
    EXPECT_TRUE(Wire::isClientName("k"));
    EXPECT_TRUE(Wire::isClientName("Fernbedienung Küche 📺"));
    EXPECT_TRUE(Wire::isClientName(std::string(64, 'x')));
    EXPECT_FALSE(Wire::isClientName(std::string(65, 'x')));
    std::string longest;
    for (int number = 0; number < 64; ++number) {
        longest += "📺";
    }
    EXPECT_TRUE(Wire::isClientName(longest));
    EXPECT_FALSE(Wire::isClientName(longest + "x"));
}

TEST(ClientName, HasNoControlCharacterAndIsUtf8) {
    for (const std::string name : {"a\n", "\x1f", "\x7f", "\xC2\x80", "\xC2\x9f", "a\xff", "\x80"}) {
        EXPECT_FALSE(Wire::isClientName(name)) << name;
    }
    EXPECT_FALSE(Wire::isClientName(std::string(1, '\0')));
    EXPECT_TRUE(Wire::isClientName("\xC2\xA0\\ \""));
}
