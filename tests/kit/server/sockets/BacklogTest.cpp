#include "server/sockets/Backlog.h"
#include "server/sockets/ListenerLimits.h"

namespace SettingsHandlerKit {

namespace {

/// Enough for frames of almost 900,000 bytes in all.
constexpr std::size_t limit = 1120000;

std::shared_ptr<const std::string> frameOf(std::size_t size) {
    return std::make_shared<const std::string>(size, 'f');
}

}  // namespace

class BacklogTest : public ::testing::Test {
protected:
    /// Somebody whose connection is closed when it is dropped.
    ClientBacklog& client(const std::string& name) {
        clients.push_back(std::make_unique<ClientBacklog>(backlog, [this, name] { dropped.push_back(name); }));
        return *clients.back();
    }

    std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>(limit);
    std::vector<std::unique_ptr<ClientBacklog>> clients;
    std::vector<std::string> dropped;
};

TEST_F(BacklogTest, TheClientWithTheLargestBacklogIsDroppedFirstAndNoMoreThanNecessary) {
    auto& little = client("little");
    auto& most = client("most");
    auto& much = client("much");
    auto& requester = client("asker");
    little.push(frameOf(100000));
    most.push(frameOf(150000));
    most.push(frameOf(150000));
    much.push(frameOf(250000));
    EXPECT_EQ(dropped, std::vector<std::string>{});
    requester.push(frameOf(250000));
    EXPECT_EQ(dropped, std::vector<std::string>{"most"});
    EXPECT_TRUE(most.empty());
    requester.push(frameOf(5000));
    EXPECT_EQ(dropped, std::vector<std::string>{"most"}) << "what is left fits";
    little.push(frameOf(310000));
    EXPECT_EQ(dropped, (std::vector<std::string>{"most", "little"})) << "also the one who is being sent something";
    much.push(frameOf(500000));
    EXPECT_EQ(dropped, (std::vector<std::string>{"most", "little", "much"}));
    EXPECT_EQ(requester.unread(), 255000U);
}

TEST_F(BacklogTest, OfEqualBacklogsTheOlderClientIsDropped) {
    auto& first = client("first");
    auto& second = client("second");
    auto& third = client("third");
    second.push(frameOf(400000));
    first.push(frameOf(400000));
    third.push(frameOf(300000));
    EXPECT_EQ(dropped, std::vector<std::string>{"first"});
    third.push(frameOf(200000));
    EXPECT_EQ(dropped, (std::vector<std::string>{"first", "third"}));
}

TEST_F(BacklogTest, SeveralAreDroppedWhenOneIsNotEnough) {
    auto& first = client("first");
    auto& second = client("second");
    // As long as one of them has it, it takes its memory.
    const auto shared = frameOf(400000);
    first.push(shared);
    first.push(frameOf(1));
    second.push(shared);
    second.push(frameOf(2));
    client("third").push(frameOf(399000));
    EXPECT_TRUE(dropped.empty());
    client("fourth").push(frameOf(200000));
    EXPECT_EQ(dropped, (std::vector<std::string>{"second", "first"}));
}

TEST_F(BacklogTest, AFrameForManyCountsOnce) {
    const auto shared = frameOf(100000);
    for (int number = 0; number < 300; ++number) {
        client("reader").push(shared);
    }
    EXPECT_TRUE(dropped.empty());
    EXPECT_LT(backlog->size(), 150000U);
    EXPECT_GT(backlog->size(), 100000U);
    EXPECT_EQ(clients[0]->unread(), 100000U);
    const std::size_t all = backlog->size();
    while (clients.size() > 1) {
        clients.pop_back();
    }
    EXPECT_LT(backlog->size(), all) << "its places";
    EXPECT_GT(backlog->size(), 100000U) << "the first one has it still";
    clients.clear();
    EXPECT_EQ(backlog->size(), 0U);
}

TEST_F(BacklogTest, FramesCountUntilTheyAreSent) {
    auto& reader = client("reader");
    for (int round = 0; round < 100; ++round) {
        reader.push(frameOf(400000));
        reader.push(frameOf(400000));
        EXPECT_EQ(reader.unread(), 800000U);
        EXPECT_FALSE(backlog->hasRoomFor(100000));
        reader.pop();
        EXPECT_TRUE(backlog->hasRoomFor(400000));
        reader.pop();
        EXPECT_EQ(backlog->size(), 0U);
    }
    EXPECT_TRUE(dropped.empty());
}

TEST_F(BacklogTest, ShortFramesCountWithTheirOverhead) {
    auto& reader = client("reader");
    int count = 0;
    for (; dropped.empty(); ++count) {
        reader.push(frameOf(1));
    }
    EXPECT_LT(count, 10000);
}

TEST_F(BacklogTest, InputOfClientsCountsToo) {
    auto& half = client("half");
    auto& reader = client("reader");
    half.setInput(450000);
    half.setInput(400000);
    half.setInput(400000);
    reader.push(frameOf(300000));
    EXPECT_TRUE(dropped.empty());
    reader.setInput(200000);
    EXPECT_EQ(dropped, std::vector<std::string>{"reader"});
    reader.push(frameOf(350000));
    half.setInput(700000);
    EXPECT_EQ(dropped, (std::vector<std::string>{"reader", "half"}));
    reader.clear();
    EXPECT_EQ(backlog->size(), 0U);
}

TEST_F(BacklogTest, HasRoomForWhatFitsWithItsOverhead) {
    EXPECT_EQ(Backlog::maximum, 32U * 1024U * 1024U);
    EXPECT_TRUE(backlog->hasRoomFor(896000));
    EXPECT_FALSE(backlog->hasRoomFor(896001)) << "a quarter more for gaps";
    EXPECT_FALSE(backlog->hasRoomFor(limit + 1));
}

/// One client for itself: the budget of all is not used up.
class ClientBacklogTest : public BacklogTest {
protected:
    ClientBacklogTest() { backlog = std::make_shared<Backlog>(); }
};

TEST_F(ClientBacklogTest, AClientMayLetAMebibyteWaitBehindTheFrameThatIsOnItsWay) {
    auto& reader = client("reader");
    reader.push(frameOf(5 * maximumWaiting));
    reader.push(frameOf(maximumWaiting));
    reader.push(frameOf(1));
    EXPECT_TRUE(dropped.empty());
    EXPECT_EQ(reader.disconnectReason(), DisconnectReason::CLOSED);
    reader.push(frameOf(1));
    EXPECT_EQ(dropped, std::vector<std::string>{"reader"});
    EXPECT_EQ(reader.disconnectReason(), DisconnectReason::TOO_SLOW);
    EXPECT_TRUE(reader.empty());
    EXPECT_EQ(backlog->size(), 0U);
}

TEST_F(ClientBacklogTest, AClientOverTheBudgetOfAllWasTooSlow) {
    auto& reader = client("reader");
    auto& other = client("other");
    other.push(frameOf(1));
    reader.push(frameOf(Backlog::maximum));
    EXPECT_EQ(reader.disconnectReason(), DisconnectReason::TOO_SLOW);
    EXPECT_EQ(other.disconnectReason(), DisconnectReason::CLOSED);
}

TEST_F(ClientBacklogTest, InputIsPausedWhileMoreThan64KiBAreUnreadAndResumedOnce) {
    auto& reader = client("reader");
    reader.push(frameOf(maximumUnread));
    EXPECT_FALSE(reader.pauseInput());
    EXPECT_FALSE(reader.resumeInput()) << "it was not paused";
    reader.push(frameOf(1));
    reader.pop();
    EXPECT_FALSE(reader.resumeInput()) << "it is paused only when asked";
    reader.push(frameOf(maximumUnread));
    EXPECT_TRUE(reader.pauseInput());
    EXPECT_FALSE(reader.resumeInput());
    reader.pop();
    EXPECT_TRUE(reader.resumeInput());
    EXPECT_FALSE(reader.resumeInput());
}

}  // namespace SettingsHandlerKit
