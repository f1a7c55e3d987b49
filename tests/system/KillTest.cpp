#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

#include "HostFixture.h"
#include "support/Sanitizers.h"

namespace SystemTests {

namespace {

/// SETTINGS_TEST_KILLS sets another number.
unsigned rounds() {
    const char* const wanted = std::getenv("SETTINGS_TEST_KILLS");
    return wanted != nullptr ? static_cast<unsigned>(std::atoi(wanted)) : TestSupport::sanitized ? 6 : 50;
}

/// Increments settings together as fast as the host accepts it, and remembers the newest value of an event.
class Counter {
public:
    /// Several keys: with batches.
    Counter(const std::string& socket, Lines settingKeys, long firstNumber)
        : keys(std::move(settingKeys)), connection(socket), sent(firstNumber) {
        writer = std::thread([this] { write(); });
        reader = std::thread([this] { read(); });
    }

    /// Waits until the host has ended and everything that it sent was read.
    void finish() {
        writer.join();
        reader.join();
    }

    /// Waits for the first event.
    void awaitFirst() {
        const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
        while (announced < 0 && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    Lines keys;
    std::atomic<long> announced{-1};

private:
    void write() {
        for (;;) {
            ++sent;
            const std::string number = std::to_string(sent);
            std::string requests;
            for (const auto& key : keys) {
                requests.append(requests.empty() ? "" : ",").append(R"({"type":24,"messageId":"k","timestamp":)");
                requests.append(number).append(R"(,"payload":{"settingDBId":")").append(key).append(R"(","to":")");
                requests.append(number).append("\"}}");
            }
            if (!connection.sendLine(keys.size() == 1 ? requests : R"({"batch":[)" + requests + "]}")) {
                return;
            }
        }
    }

    void read() {
        while (const auto line = connection.receiveLine()) {
            const auto frame = parsed(*line);
            if (frame.HasMember("payload") && frame["payload"]["settingDBId"].GetString() == keys.back()) {
                announced = std::atol(frame["payload"]["to"].GetString());
            }
        }
    }

    WireTests::HostClient connection;
    long sent;
    std::thread writer;
    std::thread reader;
};

}  // namespace

class HostKill : public HostTest {
protected:
    /// One counter for each of `keysOfCounters`.
    void killWhileTheyCount(const std::vector<Lines>& keysOfCounters, unsigned kills);
    /// All keys of the counter together, below `limit`.
    void expectKept(const Counter& counter, long limit) {
        const long kept = number(counter.keys.front());
        for (const auto& key : counter.keys) {
            EXPECT_EQ(number(key), kept) << key;
        }
        if (counter.announced >= 0) {
            EXPECT_GE(kept, counter.announced.load()) << counter.keys.front();
            EXPECT_LT(kept, limit);
        }
    }
    /// 0 while the setting has its first value.
    long number(const std::string& key) { return std::atol(get(key).c_str()); }
};

void HostKill::killWhileTheyCount(const std::vector<Lines>& keysOfCounters, unsigned kills) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    long announced = 0;
    for (unsigned round = 0; round < kills; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        start({"--log-level", "3"});
        ASSERT_FALSE(HasFatalFailure());
        std::vector<std::unique_ptr<Counter>> counters;
        counters.reserve(keysOfCounters.size());
        for (const auto& keys : keysOfCounters) {
            counters.push_back(std::make_unique<Counter>(socket(), keys, round * 1000000L));
        }
        // In every fourth round at any time after the start, otherwise while all write.
        if (round % 4 != 3) {
            for (const auto& counter : counters) {
                counter->awaitFirst();
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60000));
        kill();
        for (const auto& counter : counters) {
            counter->finish();
        }
        start({"--log-level", "3"});
        for (const auto& counter : counters) {
            expectKept(*counter, (round + 1) * 1000000L);
            announced += counter->announced >= 0 ? 1 : 0;
        }
        disconnect();
        const std::string log = stop();
        EXPECT_FALSE(contains(log, "settings-host:")) << "the database was not in order: " << log;
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(announced, static_cast<long>(kills)) << "hardly anything was announced before the kills";
    RecordProperty("rounds", static_cast<int>(kills));
}

TEST_F(HostKill, NoValueWhoseEventWasSeenIsLost) {
    killWhileTheyCount({{"deviceName"}, {"companionDevice"}, {"captionsFontSize"}}, rounds());
}

TEST_F(HostKill, NoBatchIsStoredInPart) {
    killWhileTheyCount({{"deviceName", "timezone", "friendlyName", "a key of its own"}, {"companionDevice"}},
                       rounds() / 3);
}

}  // namespace SystemTests
