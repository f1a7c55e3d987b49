#include <chrono>
#include <functional>

#include "server/sockets/TcpListener.h"
#include "server/web/EvictionReport.h"

namespace SettingsHandlerKit {

/// Counts evictions on a loop, whose timers end in their order however slow the machine is.
class EvictionReportTest : public ::testing::Test {
protected:
    static constexpr auto interval = std::chrono::milliseconds(20);

    void evict(int count) {
        for (int number = 0; number < count; ++number) {
            report.connectionEvicted();
        }
    }

    void runUntil(const std::function<bool()>& condition) {
        constexpr auto often = std::chrono::milliseconds(1);
        const RepeatingTimer look(loop, often, often, [&] {
            if (condition()) {
                loop.stop();
            }
        });
        loop.run();
    }

    EvictionReportTest() {
        keepsLoopRunning.start(
            loop, [](int) {}, [](int) {});
    }

    EventLoop loop;
    TcpListener keepsLoopRunning{"127.0.0.1", 0};
    std::vector<std::size_t> reported;
    EvictionReport report{loop, [this](std::size_t count) { reported.push_back(count); }, interval};
};

TEST_F(EvictionReportTest, ReportsTheFirstAtOnceAndTheOthersTogetherAtTheEndOfTheInterval) {
    evict(1);
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    evict(4999);
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    runUntil([&] { return reported.size() == 2; });
    evict(3);
    runUntil([&] { return reported.size() == 3; });
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 4999, 3}));
}

TEST_F(EvictionReportTest, AfterAQuietIntervalTheNextIsReportedAtOnceAgain) {
    evict(1);
    bool later = false;
    RepeatingTimer behind(loop, interval, interval, [&] { later = true; });
    runUntil([&] { return later; });
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    evict(2);
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 1}));
    runUntil([&] { return reported.size() == 3; });
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 1, 1}));
}

}  // namespace SettingsHandlerKit
