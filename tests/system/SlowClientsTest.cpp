#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

namespace SystemTests {

using WireTests::HostClient;
using WireTests::HostWebSocket;

namespace {

constexpr int eventCount = TestSupport::sanitized ? 500 : 100000;
/// After so many events the test waits for the clients that read, so that only the others fall behind.
constexpr int eventsAtOnce = TestSupport::sanitized ? 50 : 100;
/// So that few events exceed the limit of a client that does not read.
const std::string padding(TestSupport::sanitized ? 3000 : 60, 'p');
constexpr std::size_t mebibyte = 1024UL * 1024;
/// The memory that a client may take that does not read: a backlog of 1 MiB, with the overhead of short frames.
constexpr std::size_t costOfAClient = 4 * mebibyte;

std::string valueOf(int number) {
    return std::to_string(number) + padding;
}

/// Is `frame` the event of change `number`? Compared as text: there are very many of them.
bool isEvent(const std::string& frame, int number) {
    const std::string before = number == 1 ? "TV" : valueOf(number - 1);
    const std::string change = R"("from":")" + before + R"(","to":")" + valueOf(number) + "\"}}";
    return frame.find("\"sequence\":" + std::to_string(number) + ',') != std::string::npos &&
           frame.size() > change.size() && frame.compare(frame.size() - change.size(), change.size(), change) == 0;
}

}  // namespace

class SlowClients : public InMemory<HostWeb> {
protected:
    void SetUp() override { startWeb({"--log-level", "3"}); }

    /// Reads every event as it arrives, in its own thread.
    class Watcher {
    public:
        explicit Watcher(std::function<std::optional<std::string>()> nextFrame)
            : next(std::move(nextFrame)), thread([this] { watch(); }) {}
        ~Watcher() { thread.join(); }
        Watcher(const Watcher&) = delete;
        Watcher& operator=(const Watcher&) = delete;

        /// The last event of the sequence without a gap.
        int seen() const { return inOrder; }

    private:
        void watch() {
            for (int number = 1; number <= eventCount; ++number) {
                const auto frame = next();
                if (!frame || !isEvent(*frame, number)) {
                    ADD_FAILURE() << "instead of event " << number << ": " << frame.value_or("nothing");
                    return;
                }
                inOrder = number;
            }
        }

        std::function<std::optional<std::string>()> next;
        std::atomic<int> inOrder{0};
        std::thread thread;
    };

    /// The number of events, without a gap, that a client received before it was disconnected.
    static int eventsBeforeTheEnd(const std::function<std::optional<std::string>()>& next) {
        int count = 0;
        while (const auto frame = next()) {
            if (!isEvent(*frame, count + 1)) {
                ADD_FAILURE() << "a gap before " << *frame;
                break;
            }
            ++count;
        }
        return count;
    }

    /// Changes the device name repeatedly, never far ahead of the clients that read.
    void makeEvents(const std::array<std::unique_ptr<Watcher>, 2>& watchers) {
        for (int number = 1; number <= eventCount; number += eventsAtOnce) {
            std::string requests;
            for (int next = number; next < number + eventsAtOnce; ++next) {
                requests += setRequest("deviceName", "\"" + valueOf(next) + "\"") + "\n";
            }
            client().send(requests);
            for (int next = number; next < number + eventsAtOnce; ++next) {
                ASSERT_TRUE(client().receiveLine()) << next;
            }
            const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
            for (const auto& watcher : watchers) {
                while (watcher->seen() < number + eventsAtOnce - 1 && std::chrono::steady_clock::now() < until) {
                    std::this_thread::sleep_for(std::chrono::microseconds(50));
                }
                ASSERT_GE(watcher->seen(), number + eventsAtOnce - 1);
            }
        }
    }
};

TEST_F(SlowClients, ClientsThatNeverReadAreDisconnectedAndTheOthersMissNothing) {
    EXPECT_EQ(get("deviceName"), "TV");
    const std::size_t descriptors = TestSupport::openDescriptors(host->pid());
    constexpr std::size_t slowCount = 5;
    std::vector<std::unique_ptr<HostClient>> slowLines;
    std::vector<std::unique_ptr<HostWebSocket>> slowPages;
    constexpr int smallBuffer = 4096;
    for (std::size_t number = 0; number < slowCount; ++number) {
        slowLines.push_back(std::make_unique<HostClient>(socket()));
        slowPages.push_back(
            std::make_unique<HostWebSocket>(port, "/settings?key=" + key, "settings.v1", Lines{}, smallBuffer));
        ASSERT_EQ(slowPages.back()->status(), 101);
    }
    HostClient line(socket());
    const auto pageThatReads = page();
    // A reply shows that the host has accepted the client.
    line.sendLine(R"({"type":18,"messageId":"m"})");
    ASSERT_TRUE(line.receiveLine());
    EXPECT_EQ(get("deviceName"), "TV");
    startMeasuringMemory();
    {
        const std::array<std::unique_ptr<Watcher>, 2> watchers{
            std::make_unique<Watcher>([&] { return line.receiveLine(); }),
            std::make_unique<Watcher>([&] { return pageThatReads->receiveText(); })};
        makeEvents(watchers);
    }
    expectGrowthBelow(2 * slowCount * costOfAClient);
    const std::string metrics = TestSupport::httpGet(port, "/metrics").body;
    EXPECT_TRUE(contains(metrics, "settings_host_slow_clients_disconnected_total{door=\"socket\"} 5\n"));
    EXPECT_TRUE(contains(metrics, "settings_host_slow_clients_disconnected_total{door=\"page\"} 5\n"));
    for (std::size_t number = 0; number < slowCount; ++number) {
        const int received = eventsBeforeTheEnd([&] { return slowLines[number]->receiveLine(); });
        EXPECT_TRUE(slowLines[number]->closedByPeer());
        EXPECT_LT(received, eventCount);
        EXPECT_GT(received, 10);
        EXPECT_LT(eventsBeforeTheEnd([&] { return slowPages[number]->receiveText(); }), eventCount);
        EXPECT_TRUE(slowPages[number]->closedByPeer());
    }
    // The two clients that read are still connected.
    EXPECT_LE(TestSupport::openDescriptors(host->pid()), descriptors + 2);
    EXPECT_EQ(get("deviceName"), valueOf(eventCount));
}

}  // namespace SystemTests
