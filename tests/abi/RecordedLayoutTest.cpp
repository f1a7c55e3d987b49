#include <gtest/gtest.h>

#include "RecordedLayout.h"

namespace AbiTests {

TEST(RecordedLayout, SizesAndValuesOfTodaysHeadersAreTheRecordedOnes) {
    int compared = 0;
    compareWithRecordedLayout(
        [&compared](const char* name, std::size_t recorded, std::size_t today) {
            ++compared;
        // The recorded layout is that of this processor; on others the locks of the C library have other sizes.
#ifdef __x86_64__
            EXPECT_EQ(today, recorded) << "bytes of " << name;
#else
            static_cast<void>(name);
            static_cast<void>(today);
            static_cast<void>(recorded);
#endif
        },
        [&compared](const char* name, long recorded, long today) {
            ++compared;
            EXPECT_EQ(today, recorded) << name;
        });
    EXPECT_GE(compared, 60);
}

}  // namespace AbiTests
