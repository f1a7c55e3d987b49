#include <thread>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

namespace SystemTests {

/// What a host takes of the machine while nobody wants anything from it.
class Idle : public HostWeb {
protected:
    void SetUp() override {
        if (!TestSupport::asShipped) {
            GTEST_SKIP();
        }
    }

    /// Makes changes, none like another, and waits until they are handled.
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
    // Shorter than the time until the first look at the backups, and until a page is pinged.
    constexpr std::chrono::milliseconds window(2000);
    // The start may still be going on at first, and a look may fall into one window.
    constexpr int attempts = 4;
    long wakes = -1;
    for (int attempt = 0; attempt < attempts && wakes != 0; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const long before = TestSupport::voluntarySwitches(host->pid());
        std::this_thread::sleep_for(window);
        wakes = TestSupport::voluntarySwitches(host->pid()) - before;
    }
    EXPECT_EQ(wakes, 0);
    EXPECT_EQ(get("deviceName"), "TV") << "it does not sleep for good";
}

TEST_F(Idle, TakesLittleMemory) {
    startWeb();
    EXPECT_EQ(get("deviceName"), "TV");
    const auto memory = TestSupport::memoryOf(host->pid());
    EXPECT_LE(memory.resident, 10U * 1024U * 1024U);
    EXPECT_LE(memory.anonymous, 2U * 1024U * 1024U);
    RecordProperty("residentKibibytes", std::to_string(memory.resident / 1024));
    RecordProperty("anonymousKibibytes", std::to_string(memory.anonymous / 1024));
}

/// With its database in memory, so that the disk does not make it long.
class IdleInMemory : public Idle {
protected:
    std::string database() override { return memory / "settings.db"; }

    TestSupport::TemporaryDirectory memory{TestSupport::memoryFolder()};
};

TEST_F(IdleInMemory, KeepsNothingOfTheChangesItStored) {
    startWeb({"--log-level", "3"});
    write(0, 1000);
    const auto before = TestSupport::memoryOf(host->pid()).anonymous;
    write(1000, 10000);
    TestSupport::httpGet(port, "/metrics");
    const auto after = TestSupport::memoryOf(host->pid()).anonymous;
    EXPECT_LE(after, before + 256U * 1024U);
    RecordProperty("grownKibibytes", std::to_string((static_cast<long>(after) - static_cast<long>(before)) / 1024));
}

}  // namespace SystemTests
