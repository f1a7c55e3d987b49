#include <thread>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

namespace SystemTests {

/// The resources of a host without requests.
class Idle : public HostWeb {
protected:
    /// Sends a different value for each number and waits until all are handled.
    void write(int first, int last) {
        constexpr int atOnce = 500;
        for (int number = first; number < last;) {
            std::string requests;
            for (int count = 0; count < atOnce && number < last; ++count, ++number) {
                requests += setRequest("deviceName", "\"value " + std::to_string(number) + "\"") + "\n";
            }
            client().send(requests);
            ask(R"({"type":18,"messageId":"done"})");
        }
        EXPECT_EQ(get("deviceName"), "value " + std::to_string(last - 1));
    }
};

TEST_F(Idle, IsNotWokenByItself) {
    startWeb();
    const auto page = this->page();
    WireTests::HostClient person(deviceSocket());
    EXPECT_EQ(get("deviceName"), "TV");
    // Shorter than the time until the first check of the backups, and than the keepalive interval.
    constexpr std::chrono::milliseconds window(2000);
    // The host may still be starting at first, and a check may fall into one window.
    constexpr int attempts = 4;
    long wakes = -1;
    for (int attempt = 0; attempt < attempts && wakes != 0; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const long before = TestSupport::voluntarySwitches(host->pid());
        std::this_thread::sleep_for(window);
        wakes = TestSupport::voluntarySwitches(host->pid()) - before;
    }
    EXPECT_EQ(wakes, 0);
    EXPECT_EQ(get("deviceName"), "TV") << "the host still answers";
}

TEST_F(Idle, TakesLittleMemory) {
    if (!TestSupport::asShipped) {
        GTEST_SKIP() << "other builds take more memory";
    }
    startWeb();
    EXPECT_EQ(get("deviceName"), "TV");
    const auto memory = TestSupport::memoryOf(host->pid());
    EXPECT_LE(memory.resident, 10U * 1024U * 1024U);
    EXPECT_LE(memory.anonymous, 2U * 1024U * 1024U);
    RecordProperty("residentKibibytes", std::to_string(memory.resident / 1024));
    RecordProperty("anonymousKibibytes", std::to_string(memory.anonymous / 1024));
}

using IdleInMemory = InMemory<Idle>;

TEST_F(IdleInMemory, KeepsNothingOfTheChangesItStored) {
    if (!TestSupport::asShipped) {
        GTEST_SKIP() << "other builds take more memory";
    }
    startWeb({"--log-level", "3"});
    // More than the history holds.
    write(0, 2000);
    const auto before = TestSupport::memoryOf(host->pid()).anonymous;
    write(2000, 12000);
    TestSupport::httpGet(port, "/metrics");
    const auto after = TestSupport::memoryOf(host->pid()).anonymous;
    EXPECT_LE(after, before + 256UL * 1024UL);
    RecordProperty("grownKibibytes", std::to_string((static_cast<long>(after) - static_cast<long>(before)) / 1024));
}

}  // namespace SystemTests
