#include <gtest/gtest.h>

#include "Timeout.h"

using namespace SettingsCtl;
using namespace std::chrono_literals;

TEST(SettingsCtlTimeout, KeepsFractions) {
    EXPECT_EQ(timeoutFrom("0.001"), 1ms);
    EXPECT_EQ(timeoutFrom("0.5"), 500ms);
    EXPECT_EQ(timeoutFrom("1.001"), 1001ms);
    EXPECT_EQ(timeoutFrom("1.999"), 1999ms);
    EXPECT_EQ(timeoutFrom("5"), 5000ms);
    EXPECT_EQ(timeoutFrom("1e2"), 100000ms);
    EXPECT_EQ(timeoutFrom("86400"), 86400000ms);
}

TEST(SettingsCtlTimeout, RejectsEverythingElse) {
    for (const std::string text :
         {"nan", "-nan",  "NAN",    "nan(1)", "inf", "-inf", "infinity", "-5", "-0.5", "0",   "-0", "0.0009", "86400.1",
          "1e9", "1e400", "1e-400", "",       " ",   "5 ",   " 5",       "5s", "5,5",  "0x5", "+5", "soon"}) {
        EXPECT_EQ(timeoutFrom(text), std::nullopt) << text;
    }
    EXPECT_EQ(timeoutFrom(std::string("5\0", 2)), std::nullopt);
}
