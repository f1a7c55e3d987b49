#include <chrono>
#include <functional>

#include "server/sockets/TcpDoor.h"
#include "server/web/CrowdReport.h"

namespace SettingsHost {

/// Counts strangers on a loop, whose timers end in their order however slow the machine is.
class CrowdReportTest : public ::testing::Test {
protected:
    static constexpr auto interval = std::chrono::milliseconds(20);

    void strangers(int count) {
        for (int number = 0; number < count; ++number) {
            report.strangerHadToGo();
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

    CrowdReportTest() {
        keepsLoopRunning.start(
            loop, [](int) {}, [](int) {});
    }

    EventLoop loop;
    TcpDoor keepsLoopRunning{"127.0.0.1", 0};
    std::vector<std::size_t> told;
    CrowdReport report{loop, [this](std::size_t count) { told.push_back(count); }, interval};
};

TEST_F(CrowdReportTest, TellsTheFirstAtOnceAndTheOthersTogetherWhenTheTimeIsUp) {
    strangers(1);
    EXPECT_EQ(told, std::vector<std::size_t>{1});
    strangers(4999);
    EXPECT_EQ(told, std::vector<std::size_t>{1});
    runUntil([&] { return told.size() == 2; });
    strangers(3);
    runUntil([&] { return told.size() == 3; });
    EXPECT_EQ(told, (std::vector<std::size_t>{1, 4999, 3}));
}

TEST_F(CrowdReportTest, AfterATimeWithoutStrangersTheNextIsToldAtOnceAgain) {
    strangers(1);
    bool later = false;
    RepeatingTimer behind(loop, interval, interval, [&] { later = true; });
    runUntil([&] { return later; });
    EXPECT_EQ(told, std::vector<std::size_t>{1});
    strangers(2);
    EXPECT_EQ(told, (std::vector<std::size_t>{1, 1}));
    runUntil([&] { return told.size() == 3; });
    EXPECT_EQ(told, (std::vector<std::size_t>{1, 1, 1}));
}

}  // namespace SettingsHost
