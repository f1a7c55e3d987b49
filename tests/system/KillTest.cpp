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

/// Increments a setting as fast as the host accepts it, and remembers the newest value of an event.
class Counter {
public:
    Counter(const std::string& socket, std::string settingKey, long firstNumber)
        : key(std::move(settingKey)), connection(socket), sent(firstNumber) {
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

    std::string key;
    std::atomic<long> announced{-1};

private:
    void write() {
        for (;;) {
            ++sent;
            const std::string number = std::to_string(sent);
            std::string request = R"({"type":24,"messageId":"k","timestamp":)";
            request.append(number).append(R"(,"payload":{"settingDBId":")").append(key).append(R"(","to":")");
            if (!connection.sendLine(request.append(number).append("\"}}"))) {
                return;
            }
        }
    }

    void read() {
        while (const auto line = connection.receiveLine()) {
            const auto frame = parsed(*line);
            if (frame.HasMember("payload") && frame["payload"]["settingDBId"].GetString() == key) {
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

class HostKill : public HostTest {};

TEST_F(HostKill, NoValueWhoseEventWasSeenIsLost) {
    const std::vector<std::string> keys{"deviceName", "companionDevice", "captionsFontSize"};
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    long announced = 0;
    for (unsigned round = 0; round < rounds(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        start({"--log-level", "3"});
        ASSERT_FALSE(HasFatalFailure());
        std::vector<std::unique_ptr<Counter>> counters;
        counters.reserve(keys.size());
        for (const auto& key : keys) {
            counters.push_back(std::make_unique<Counter>(socket(), key, round * 1000000L));
        }
        // In one of four rounds at any time after the start, otherwise while all write.
        if (random() % 4 != 0) {
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
            if (counter->announced >= 0) {
                ++announced;
                const long kept = std::atol(get(counter->key).c_str());
                EXPECT_GE(kept, counter->announced.load()) << counter->key;
                EXPECT_LT(kept, (round + 1) * 1000000L);
            }
        }
        disconnect();
        const std::string log = stop();
        EXPECT_FALSE(contains(log, "settings-host:")) << "the database was not in order: " << log;
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(announced, static_cast<long>(rounds())) << "hardly anything was announced before the kills";
    RecordProperty("rounds", static_cast<int>(rounds()));
}

}  // namespace SystemTests
