#include "SettingsHandlerTesting/FakeStorage.h"
#include "handler/BoundedStorage.h"

namespace SettingsHandlerKit {

class BoundedStorageTest : public ::testing::Test {
protected:
    static constexpr std::size_t large = 60000;

    BoundedStorageTest() {
        for (int number = 0; number < 40; ++number) {
            storage.setValue("k" + std::to_string(number), std::string(large, 'v'));
        }
        storage.setValue("small", std::string(64, 's'));
    }

    /// Reads the keys k`from` to k`to`, without the last one. Returns: how many came.
    int gather(int from, int to) {
        const RequestContext::Scope request(*context, {7, ""});
        int count = 0;
        try {
            for (; from + count < to; ++count) {
                EXPECT_EQ(read("k" + std::to_string(from + count)).size(), large);
            }
        } catch (const ReadLimitExceeded&) {
        }
        return count;
    }

    std::string read(const std::string& key) {
        std::string value;
        guard.getValue(key, value);
        return value;
    }

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<RequestContext> context = std::make_shared<RequestContext>();
    std::vector<std::size_t> askedRoom;
    std::size_t room = 100000000;
    BoundedStorage guard{storage, context, [this](std::size_t bytes) {
                             askedRoom.push_back(bytes);
                             return bytes <= room;
                         }};
};

TEST_F(BoundedStorageTest, AReplyHoldsTwiceAsMuchAsMayBeStored) {
    EXPECT_EQ(gather(0, 34), 34);
    guard.requestEnded();
    EXPECT_EQ(gather(0, 35), 34) << "35 times 60,000 are more than 2 MiB";
    guard.requestEnded();
    EXPECT_EQ(gather(6, 40), 34) << "each request begins anew";
}

TEST_F(BoundedStorageTest, AKeyThatIsNamedOftenCountsOnce) {
    const RequestContext::Scope request(*context, {7, ""});
    for (int round = 0; round < 1000; ++round) {
        EXPECT_EQ(read("k1").size(), large);
        EXPECT_EQ(read("small").size(), 64U);
    }
}

TEST_F(BoundedStorageTest, GathersLessWhenTheBacklogIsLarge) {
    room = 300000;
    EXPECT_EQ(gather(0, 17), 2);
    EXPECT_EQ(askedRoom, (std::vector<std::size_t>{240000, 360000})) << "small replies need no room";
}

TEST_F(BoundedStorageTest, OtherRequestsAndTheHostItselfReadEverything) {
    room = 0;
    for (int number = 0; number < 40; ++number) {
        EXPECT_EQ(read("k" + std::to_string(number)).size(), large);
    }
    const RequestContext::Scope request(*context, {22, ""});
    EXPECT_EQ(read("k1").size(), large);
    EXPECT_TRUE(askedRoom.empty());
}

TEST_F(BoundedStorageTest, ReportsWhenTheHandlersCacheIsToBeRebuilt) {
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(gather(0, 17), 17);
        EXPECT_FALSE(guard.requestEnded()) << "the same values are kept once";
    }
    EXPECT_EQ(gather(17, 18), 1);
    EXPECT_TRUE(guard.requestEnded());
    EXPECT_FALSE(guard.requestEnded()) << "it was made anew";
    EXPECT_EQ(gather(0, 17), 17);
    EXPECT_FALSE(guard.requestEnded());
    EXPECT_TRUE(guard.setValue("k1", "short"));
    EXPECT_TRUE(guard.setValue("k30", std::string(large, 'w')));
    EXPECT_FALSE(guard.requestEnded()) << "what became short is not kept any more";
    storage.setValue("k2", "short");
    EXPECT_EQ(read("k2"), "short");
    EXPECT_TRUE(guard.setValue("k31", std::string(large, 'w')));
    EXPECT_FALSE(guard.requestEnded()) << "nor what was found to be short";
    EXPECT_TRUE(guard.setValue("k32", std::string(large, 'w')));
    EXPECT_TRUE(guard.requestEnded()) << "what is set is kept too";
}

TEST_F(BoundedStorageTest, ALogOutEmptiesTheCache) {
    EXPECT_EQ(gather(0, 17), 17);
    EXPECT_FALSE(guard.requestEnded());
    EXPECT_TRUE(guard.clearStorage());
    EXPECT_EQ(read("k1"), "");
    storage.setValue("k30", std::string(large, 'v'));
    EXPECT_EQ(gather(30, 31), 1);
    EXPECT_FALSE(guard.requestEnded());
}

TEST_F(BoundedStorageTest, ReturnsTheResultsOfTheStorage) {
    EXPECT_TRUE(guard.setValue("new", "value"));
    EXPECT_EQ(read("new"), "value");
    EXPECT_TRUE(guard.removeValue("new"));
    EXPECT_EQ(read("new"), "");
    EXPECT_EQ(read("none"), "");
}

}  // namespace SettingsHandlerKit
