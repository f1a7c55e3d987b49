#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include <sys/socket.h>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

namespace SystemTests {

using WireTests::HostClient;
using WireTests::HostWebSocket;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024UL;
/// Limits of the host for well-formed requests and for any input.
constexpr std::size_t limitForRequests = 48 * mebibyte;
constexpr std::size_t limitForAnyInput = 96 * mebibyte;
/// Of each kind; a listener accepts 128.
constexpr int clientCount = TestSupport::sanitized ? 20 : 100;
constexpr int smallBuffer = 4096;

}  // namespace

/// Clients that request much and read nothing.
class MemoryOfTheHost : public InMemory<HostWeb> {
protected:
    void serveDatabaseOfAnOlderVersion(int keys, std::size_t size) {
        startWeb({"--log-level", "3"});
        stop();
        sql("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i + 1 < " + std::to_string(keys) +
            ") INSERT INTO settings SELECT 'k' || i, printf('%0" + std::to_string(size) + "d', i) FROM n");
        webArguments = {"--listen", "127.0.0.1:0"};
        startWeb({"--log-level", "3"});
    }

    void expectPeakBelow(std::size_t limit) {
        EXPECT_EQ(get("captionsFontSize"), "FONT_MEDIUM") << "the host does not serve";
        if (!TestSupport::sanitized) {
            const std::size_t peak = TestSupport::peakMemory(host->pid());
            std::cout << "at most " << peak / 1024 << " KiB\n";
            EXPECT_LT(peak, limit);
        }
    }

    /// Sends `bytes` repeatedly until the host reads no more, at most `atMost` bytes.
    void sendUntilBlocked(int descriptor, const std::string& bytes, std::size_t atMost) {
        std::size_t sent = 0;
        for (int refusals = 0; sent < atMost && refusals < 2;) {
            const std::size_t from = sent % bytes.size();
            const ssize_t taken =
                ::send(descriptor, bytes.data() + from, bytes.size() - from, MSG_DONTWAIT | MSG_NOSIGNAL);
            if (taken > 0) {
                sent += static_cast<std::size_t>(taken);
                refusals = 0;
            } else if (errno != EAGAIN) {
                return;
            } else {
                // When it replies, the host has served every client once more.
                EXPECT_TRUE(contains(device(R"({"command":"show"})"), "timezone"));
                ++refusals;
            }
        }
    }

    HostClient& askingLine(const std::string& path, const std::string& requests, std::size_t atMost) {
        lines.push_back(std::make_unique<HostClient>(path));
        sendUntilBlocked(lines.back()->descriptor(), requests, atMost);
        return *lines.back();
    }

    void askingPage(const std::string& request, int times) {
        pages.push_back(
            std::make_unique<HostWebSocket>(port, "/settings?key=" + key, "settings.v1", Lines{}, smallBuffer));
        ASSERT_EQ(pages.back()->status(), 101);
        for (int number = 0; number < times; ++number) {
            pages.back()->sendText(request);
        }
    }

    static std::string names(int from, int to) {
        std::string list;
        for (int number = from; number < to; ++number) {
            list += (list.empty() ? "\"k" : ",\"k") + std::to_string(number) + "\"";
        }
        return "[" + list + "]";
    }

    std::vector<std::unique_ptr<HostClient>> lines;
    std::vector<std::unique_ptr<HostWebSocket>> pages;
};

TEST_F(MemoryOfTheHost, IsBoundedWhenSeveralAskForAllThatAnOlderVersionStored) {
    constexpr int keys = TestSupport::sanitized ? 170 : 900;
    serveDatabaseOfAnOlderVersion(keys, 60000);
    const std::string all = getRequest(names(0, keys));
    for (int number = 0; number < 8; ++number) {
        const auto& asking = lines.emplace_back(std::make_unique<HostClient>(socket()));
        asking->sendLine(all);
    }
    for (const auto& asking : lines) {
        EXPECT_TRUE(contains(asking->receiveLine().value_or(""), R"({"error":{"code":"busy",)"));
    }
    // A few keys at a time can be read.
    constexpr int keysAtOnce = 17;
    for (int from = 0; from < keys; from += keysAtOnce) {
        const int to = std::min(from + keysAtOnce, keys);
        const auto reply = ask(getRequest(names(from, to)));
        const auto& settings = reply["payload"]["settings"];
        ASSERT_EQ(settings.MemberCount(), static_cast<unsigned>(to - from)) << from;
        EXPECT_EQ(settings[("k" + std::to_string(from)).c_str()].GetStringLength(), 60000U);
    }
    EXPECT_EQ(get("k1"), std::string(59999, '0') + "1");
    expectPeakBelow(limitForRequests);
}

TEST_F(MemoryOfTheHost, IsBoundedWhenEverybodyAsksForMuchAndReadsNothing) {
    serveDatabaseOfAnOlderVersion(900, 60000);
    const std::string trace = R"({"command":"trace","enabled":true})";
    for (int number = 0; number < 10; ++number) {
        EXPECT_EQ(askingLine(deviceSocket(), trace + "\n", trace.size() + 1).receiveLine(), R"({"ok":true})");
    }
    for (int number = 0; number < clientCount; ++number) {
        // Either the largest reply or many small ones.
        const std::string large = getRequest(names(number, number + 17)) + "\n";
        const std::string small = getRequest(names(number, number + 1)) + "\n";
        askingLine(socket(), number % 2 == 0 ? large : small, 20000);
        askingLine(deviceSocket(), R"({"command":"show"})" + std::string(2000, ' ') + "\n", 200000);
        askingPage(getRequest(names(number, number + 1)), 20);
    }
    expectPeakBelow(limitForRequests);
    // Clients that read receive events without a gap meanwhile. The storage is full, so the voice SDK holds the value.
    for (int number = 1; number <= 50; ++number) {
        const std::string value(static_cast<std::size_t>(number) * 100, 'v');
        const Lines events = set("timezone", "\"" + value + "\"");
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(parsed(events.front())["sequence"].GetInt(), number);
    }
    expectPeakBelow(limitForRequests);
}

TEST_F(MemoryOfTheHost, IsBoundedWhenNobodyReadsEvents) {
    startWeb({"--log-level", "3"});
    for (int number = 0; number < clientCount; ++number) {
        lines.push_back(std::make_unique<HostClient>(socket()));
        askingPage(R"({"type":18,"messageId":"m"})", 1);
    }
    constexpr int rounds = TestSupport::sanitized ? 5 : 100;
    constexpr int eventsAtOnce = 100;
    Lines events;
    for (int round = 0; round < rounds; ++round) {
        std::string changes;
        for (int number = 0; number < eventsAtOnce; ++number) {
            changes += setRequest("deviceName", "\"" + std::to_string(round * eventsAtOnce + number) + "\"") + "\n";
        }
        ask(changes + getRequest("[]"), &events);
    }
    ASSERT_EQ(events.size(), static_cast<std::size_t>(rounds * eventsAtOnce));
    EXPECT_EQ(parsed(events.back())["sequence"].GetInt(), rounds * eventsAtOnce);
    expectPeakBelow(limitForRequests);
}

TEST_F(MemoryOfTheHost, IsBoundedWhenRepliesGrowSixfoldInTheirFrames) {
    startWeb({"--log-level", "3"});
    std::string control;
    for (int number = 0; number < 10000; ++number) {
        control += "\\u0001";
    }
    constexpr int keys = TestSupport::sanitized ? 20 : 100;
    for (int number = 0; number < keys; ++number) {
        set("k" + std::to_string(number), "\"" + control + "\"", number + 1);
    }
    const std::string all = getRequest(names(0, keys)) + "\n";
    for (int number = 0; number < clientCount; ++number) {
        askingLine(socket(), all, 3 * all.size());
        askingPage(getRequest(names(0, 1)), 20);
    }
    expectPeakBelow(limitForRequests);
}

TEST_F(MemoryOfTheHost, IsBoundedWhenEverybodyAsksForTheHistoryAndReadsNothing) {
    startWeb({"--log-level", "3"});
    const std::string run = ask(R"({"messageId":"h","hello":{}})")["hello"]["run"].GetString();
    const std::string history = R"({"messageId":"y","history":{}})";
    // As much as the history holds of large events, then of small ones.
    for (const auto& [size, events] : {std::pair(std::size_t{15000}, 64), std::pair(std::size_t{10}, 1024)}) {
        for (int number = 0; number < events; ++number) {
            std::string value = std::to_string(number);
            value.resize(size, 'v');
            client().sendLine(setRequest("timezone", "\"" + value + "\""));
            ASSERT_TRUE(client().receiveLine());
        }
        const int newest = ask(R"({"messageId":"h","hello":{}})")["hello"]["sequence"].GetInt();
        const std::size_t known = ask(history)["history"]["events"].Size();
        EXPECT_GT(known * size, size == 10 ? 8000U : 200000U);
        const std::string resume = R"({"messageId":"h","hello":{"resume":{"run":")" + run + R"(","sequence":)" +
                                   std::to_string(newest - static_cast<int>(known)) + "}}}";
        for (int number = 0; number < clientCount / 2; ++number) {
            const std::string& request = number % 2 == 0 ? history : resume;
            askingLine(socket(), request + "\n", 20000);
            askingPage(request, 20);
        }
    }
    expectPeakBelow(limitForRequests);
}

TEST_F(MemoryOfTheHost, IsBoundedWhateverIsSent) {
    startWeb({"--log-level", "3"});
    const std::string half = R"({"type":24,"x":")" + std::string(65000, 'x');
    const std::string values = R"({"type":7,"messageId":"m","payload":{"settings":[)" + std::string(32000, '[');
    std::string noFrames;
    for (int number = 0; number < 1000; ++number) {
        noFrames += "x\n";
    }
    for (int number = 0; number < clientCount; ++number) {
        const std::string& path = number % 2 == 0 ? socket() : deviceSocket();
        askingLine(path, half, half.size());
        askingLine(path, noFrames, 200000);
        askingPage("no JSON", 2000);
        pages.back()->sendFrame(1, number % 2 == 0 ? half : values, false);
    }
    expectPeakBelow(limitForAnyInput);
}

TEST_F(MemoryOfTheHost, IsReturnedWhenTheClientsDisconnect) {
    startWeb({"--log-level", "3"});
    EXPECT_EQ(get("captionsFontSize"), "FONT_MEDIUM");
    const std::size_t before = TestSupport::residentMemory(host->pid());
    const std::string large = getRequest("[]").append(60000, ' ') + "\n";
    for (int number = 0; number < clientCount; ++number) {
        askingLine(socket(), large, large.size()).receiveLine();
        askingLine(deviceSocket(), std::string(65000, 'x'), 65000);
    }
    lines.clear();
    waitFor([&] {
        return contains(TestSupport::httpGet(port, "/metrics").body, "settings_host_clients{door=\"device\"} 0\n");
    });
    if (!TestSupport::sanitized) {
        EXPECT_LT(TestSupport::residentMemory(host->pid()), before + 3 * mebibyte);
    }
}

}  // namespace SystemTests
