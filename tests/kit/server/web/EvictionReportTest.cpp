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

    /// Ends with the turn of the loop in which the report comes, so that no further interval can end before.
    void runUntilReported(std::size_t count) {
        onReport = [this, count] {
            if (reported.size() == count) {
                loop.stop();
            }
        };
        loop.run();
        onReport = [] {};
    }

    EvictionReportTest() {
        keepsLoopRunning.start(
            loop, [](int) {}, [](int) {});
    }

    EventLoop loop;
    TcpListener keepsLoopRunning{"127.0.0.1", 0};
    std::vector<std::size_t> reported;
    std::function<void()> onReport = [] {};
    EvictionReport report{loop,
                          [this](std::size_t count) {
                              reported.push_back(count);
                              onReport();
                          },
                          interval};
};

TEST_F(EvictionReportTest, ReportsTheFirstAtOnceAndTheOthersTogetherAtTheEndOfTheInterval) {
    evict(1);
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    evict(4999);
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    runUntilReported(2);
    evict(3);
    runUntilReported(3);
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 4999, 3}));
}

TEST_F(EvictionReportTest, AfterAQuietIntervalTheNextIsReportedAtOnceAgain) {
    evict(1);
    {
        // Its interval ends behind that of the report, in the same turn.
        const RepeatingTimer behind(loop, interval, interval, [&] { loop.stop(); });
        loop.run();
    }
    EXPECT_EQ(reported, std::vector<std::size_t>{1});
    evict(2);
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 1}));
    runUntilReported(3);
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 1, 1}));
}

}  // namespace SettingsHandlerKit
