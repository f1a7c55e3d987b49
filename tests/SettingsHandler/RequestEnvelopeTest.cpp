#include <climits>

#include "HandlerFixture.h"

namespace SettingsHandlerTests {

class RequestOrdering : public HandlerTest {
protected:
    bool valid(std::string key, long timestamp) {
        const bool result = handler->isRequestValid(key, timestamp);
        expectJournal(Entries{"log 1 SettingsHandler:isRequestValid"});
        return result;
    }
};

TEST_F(RequestOrdering, TheFirstRequestIsAcceptedAtAnyTime) {
    EXPECT_TRUE(valid("deviceName", -5));
    EXPECT_TRUE(valid("timezone", LONG_MIN));
    EXPECT_TRUE(valid("friendlyName", LONG_MAX));
}

TEST_F(RequestOrdering, OnlyStrictlyOlderRequestsAreRefused) {
    EXPECT_TRUE(valid("captionsEnabled", 100));
    EXPECT_FALSE(valid("captionsEnabled", 99));
    EXPECT_TRUE(valid("captionsEnabled", 100));
    EXPECT_TRUE(valid("captionsEnabled", 101));
    EXPECT_FALSE(valid("captionsEnabled", 100));
}

TEST_F(RequestOrdering, ARefusalLeavesTheRecordAsItIs) {
    EXPECT_TRUE(valid("captionsEnabled", 100));
    EXPECT_FALSE(valid("captionsEnabled", 1));
    EXPECT_FALSE(valid("captionsEnabled", 50));
    EXPECT_TRUE(valid("captionsEnabled", 100));
}

TEST_F(RequestOrdering, EachSettingHasItsOwnRecord) {
    EXPECT_TRUE(valid("captionsEnabled", 100));
    EXPECT_TRUE(valid("deviceName", 5));
    EXPECT_FALSE(valid("deviceName", 4));
}

TEST_F(RequestOrdering, UnknownKeysShareOneRecord) {
    EXPECT_TRUE(valid("unknown", 100));
    EXPECT_FALSE(valid("another", 50));
    EXPECT_TRUE(valid("another", 100));
}

TEST_F(RequestOrdering, ComparesSigned) {
    EXPECT_TRUE(valid("deviceName", -1));
    EXPECT_TRUE(valid("deviceName", 0));
    EXPECT_FALSE(valid("deviceName", -1));
    EXPECT_TRUE(valid("deviceName", LONG_MAX));
    EXPECT_FALSE(valid("deviceName", LONG_MIN));
}

}  // namespace SettingsHandlerTests
