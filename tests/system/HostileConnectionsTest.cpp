#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <thread>
#include <vector>

#include <sys/resource.h>

#include "WebHostFixture.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

namespace SystemTests {

using TestSupport::httpGet;
using TestSupport::TcpConnection;
using WireTests::HostClient;
using WireTests::HostWebSocket;

namespace {

/// Limits of the host.
constexpr std::size_t clientsOfAListener = 128;
/// At the web port.
constexpr std::size_t unauthenticatedConnections = 32;
/// The memory that an idle connection may take.
constexpr std::size_t idleConnectionCost = 64UL * 1024;

const std::string noRoom =
    R"({"error":{"code":"too-many-clients","message":"the host has reached its limit of clients"}})";
const std::string notJson = R"({"error":{"code":"not-json","message":"the frame is not JSON"}})";

}  // namespace

class HostileConnections : public HostWeb {
protected:
    void SetUp() override {
        startWeb({"--log-level", "3"});
        EXPECT_EQ(get("deviceName"), "TV");
        descriptors = TestSupport::openDescriptors(host->pid());
        httpGet(port, "/metrics");
        waitFor([&] { return TestSupport::openDescriptors(host->pid()) == descriptors; });
        startMeasuringMemory();
    }

    /// Expects the state before the test, apart from the test's own connection.
    void expectNothingLeft() {
        // The host may not have accepted and closed all of them yet.
        for (const auto& [listener, count] :
             {std::pair("socket", "1"), std::pair("page", "0"), std::pair("device", "0")}) {
            const std::string series = std::string("settings_host_clients{door=\"") + listener + "\"}";
            const std::string wanted = count;
            waitFor([&] { return metric(series) == wanted; });
        }
        waitFor([&] { return TestSupport::openDescriptors(host->pid()) <= descriptors; });
        EXPECT_EQ(get("deviceName"), "TV");
    }

    /// Returns: the limit of the host before.
    rlim_t limitDescriptors(rlim_t limit) const {
        rlimit before{};
        EXPECT_EQ(::prlimit(host->pid(), RLIMIT_NOFILE, nullptr, &before), 0);
        const rlimit wanted{limit, before.rlim_max};
        EXPECT_EQ(::prlimit(host->pid(), RLIMIT_NOFILE, &wanted, nullptr), 0);
        return before.rlim_cur;
    }

    std::string metric(const std::string& series) {
        const std::string text = TestSupport::httpGet(port, "/metrics").body;
        const std::size_t place = text.find("\n" + series + " ");
        if (place == std::string::npos) {
            return "(none)";
        }
        const std::size_t value = place + series.size() + 2;
        return text.substr(value, text.find('\n', value) - value);
    }

    std::size_t descriptors = 0;
};

TEST_F(HostileConnections, OfAThousandClientsThoseWithinTheLimitAreServedAndTheOthersRefused) {
    constexpr std::size_t connectionCount = 1000;
    for (const auto& [path, listener, others] : {std::tuple(socket(), "socket", clientsOfAListener - 1),
                                                 std::tuple(deviceSocket(), "device", clientsOfAListener)}) {
        std::vector<std::unique_ptr<HostClient>> connections;
        for (std::size_t number = 0; number < connectionCount; ++number) {
            connections.push_back(std::make_unique<HostClient>(path));
            if (number % 100 == 0) {
                EXPECT_EQ(get("deviceName"), "TV") << number;
            }
        }
        for (std::size_t number = 0; number < connectionCount; ++number) {
            if (number < others) {
                connections[number]->sendLine("x");
                EXPECT_EQ(connections[number]->receiveLine(), notJson);
            } else {
                ASSERT_EQ(connections[number]->receiveAll(), noRoom + "\n");
                EXPECT_TRUE(connections[number]->closedByPeer());
            }
        }
        const std::size_t withOthers = descriptors + others;
        waitFor([&] { return TestSupport::openDescriptors(host->pid()) == withOthers; });
        EXPECT_EQ(metric(std::string("settings_host_clients_turned_away_total{door=\"") + listener + "\"}"),
                  std::to_string(connectionCount - others));
        connections.clear();
        expectNothingLeft();
    }
    expectGrowthBelow(clientsOfAListener * idleConnectionCost);
}

TEST_F(HostileConnections, OfAThousandUnauthenticatedConnectionsThoseWithinTheLimitAreKept) {
    constexpr std::size_t connectionCount = 1000;
    const auto openPage = page();
    std::vector<std::unique_ptr<TcpConnection>> connections;
    for (std::size_t number = 0; number < connectionCount; ++number) {
        connections.push_back(std::make_unique<TcpConnection>(port));
        if (number % 100 == 0) {
            openPage->sendText(getRequest(R"(["deviceName"])"));
            EXPECT_TRUE(openPage->receiveText()) << number;
        }
    }
    const auto refused = [&] {
        const std::string count = metric("settings_host_clients_turned_away_total{door=\"page\"}");
        return count == "(none)" ? 0 : std::stoul(count);
    };
    waitFor([&] { return refused() >= connectionCount - unauthenticatedConnections; });
    EXPECT_LE(TestSupport::openDescriptors(host->pid()), descriptors + 1 + unauthenticatedConnections);
    connections.clear();
    waitFor([&] { return TestSupport::openDescriptors(host->pid()) <= descriptors + 1; });
    expectGrowthBelow(clientsOfAListener * idleConnectionCost);
}

TEST_F(HostileConnections, ClientsWithTheKeyAreServedDuringAFloodOfConnections) {
    const std::string cookie = cookieOf(httpGet(port, "/?key=" + key));
    const auto openPage = page();
    std::atomic<bool> done{false};
    // Nothing, the start of a request, a whole request.
    const std::vector<std::string> kinds{"", "GET / HTTP/1.1\r\n",
                                         "GET / HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n\r\n"};
    std::vector<std::thread> floods;
    floods.reserve(kinds.size());
    for (const auto& bytes : kinds) {
        floods.emplace_back([this, bytes, &done] {
            std::deque<TcpConnection> connections;
            while (!done) {
                connections.emplace_back(port).send(bytes);
                if (connections.size() > clientsOfAListener) {
                    connections.pop_front();
                }
            }
        });
    }
    waitFor([&] {
        const std::string count = metric("settings_host_clients_turned_away_total{door=\"page\"}");
        return count != "(none)" && count != "0";
    });
    for (int number = 0; number < 50; ++number) {
        EXPECT_EQ(httpGet(port, "/?key=" + key).status, 200) << number;
        EXPECT_EQ(httpGet(port, "/", {"Cookie: " + cookie}).status, 200) << number;
        EXPECT_EQ(HostWebSocket(port, "/settings", "settings.v1", {"Cookie: " + cookie}).status(), 101) << number;
        openPage->sendText(getRequest(R"(["deviceName"])"));
        EXPECT_TRUE(openPage->receiveText()) << number;
        EXPECT_EQ(get("deviceName"), "TV") << number;
    }
    done = true;
    for (auto& flood : floods) {
        flood.join();
    }
    expectGrowthBelow(clientsOfAListener * idleConnectionCost);
}

TEST_F(HostileConnections, WithoutDescriptorsNewClientsAreRefusedAndConnectedOnesServed) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    const rlim_t before = limitDescriptors(descriptors + 10);
    std::vector<std::unique_ptr<HostClient>> connections;
    std::size_t served = 0;
    for (std::size_t number = 0; number < 30; ++number) {
        connections.push_back(std::make_unique<HostClient>(number % 2 == 0 ? socket() : deviceSocket()));
        connections.back()->sendLine("x");
        const auto answer = connections.back()->receiveLine();
        if (answer == notJson) {
            ++served;
            EXPECT_EQ(served, number + 1) << "some before it were refused";
        } else {
            EXPECT_EQ(answer, noRoom);
            EXPECT_EQ(connections.back()->receiveAll(), "");
            EXPECT_TRUE(connections.back()->closedByPeer());
        }
    }
    EXPECT_GE(served, 10U);
    EXPECT_LT(served, 20U);
    EXPECT_EQ(metric("settings_host_clients_turned_away_total{door=\"page\"}"), "(none)") << "no descriptor for it";
    const Lines events = set("deviceName", R"("Den")");
    EXPECT_EQ(events.size(), 1U) << "a change needs no further descriptor";
    limitDescriptors(before);
    connections.clear();
    set("deviceName", R"("TV")", 2);
    expectNothingLeft();
}

TEST_F(HostileConnections, WithoutTheSpareDescriptorNewClientsWaitAndTheHostSleeps) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    // Below the number of open descriptors.
    const rlim_t before = limitDescriptors(3);
    HostClient waiting(socket());
    const long ticks = TestSupport::processorTicks(host->pid());
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_LT(TestSupport::processorTicks(host->pid()) - ticks, 10) << "the host spins";
    EXPECT_EQ(get("deviceName"), "TV");
    limitDescriptors(before);
    waiting.sendLine("x");
    EXPECT_EQ(waiting.receiveLine(), notJson);
    waiting.close();
    expectNothingLeft();
}

TEST_F(HostileConnections, AClientThatLeavesAfterAnyByteOfAFrameLeavesNothing) {
    const std::string request = setRequest("deviceName", R"("Den")");
    for (const auto& path : {socket(), deviceSocket()}) {
        for (std::size_t size = 0; size <= request.size(); ++size) {
            HostClient(path).send(request.substr(0, size));
            if (size % 16 == 0) {
                EXPECT_EQ(get("deviceName"), "TV") << size;
            }
        }
    }
    expectNothingLeft();
    // With the line end it is a request.
    HostClient(socket()).send(request + "\n");
    waitFor([&] { return get("deviceName") == "Den"; });
}

TEST_F(HostileConnections, AWebSocketThatLeavesAfterAnyByteOfItsLifeLeavesNothing) {
    const std::string request = setRequest("deviceName", R"("Den")");
    // An upgrade request and one masked text frame as bytes.
    std::string life = "GET /settings?key=" + key + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
                       "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                       "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Protocol: settings.v1\r\n\r\n";
    const std::size_t upgrade = life.size();
    life += HostWebSocket::frameBytes(1, request, true);
    for (std::size_t size = 0; size < life.size(); ++size) {
        TcpConnection leaving(port);
        leaving.send(life.substr(0, std::min(size, upgrade)));
        if (size > upgrade) {
            ASSERT_TRUE(leaving.receiveUntil("\r\n\r\n")) << "no WebSocket";
            leaving.send(life.substr(upgrade, size - upgrade));
        }
        if (size % 16 == 0) {
            EXPECT_EQ(get("deviceName"), "TV") << size;
        }
    }
    expectNothingLeft();
    TcpConnection staying(port);
    staying.send(life);
    waitFor([&] { return get("deviceName") == "Den"; });
}

TEST_F(HostileConnections, FramesSentByteByByteDelayNobody) {
    constexpr std::size_t slowClients = 20;
    const std::string request = getRequest(R"(["timezone"])", "slow") + "\n";
    const std::string reply =
        R"({"type":7,"messageId":"slow","payload":{"settings":{"timezone":"America/Vancouver"}}})";
    std::vector<std::unique_ptr<HostClient>> lines;
    std::vector<std::unique_ptr<HostWebSocket>> pages;
    for (std::size_t number = 0; number < slowClients; ++number) {
        lines.push_back(std::make_unique<HostClient>(socket()));
        pages.push_back(page());
    }
    const std::string message = HostWebSocket::frameBytes(1, request, true);
    for (std::size_t place = 0; place < std::max(request.size(), message.size()); ++place) {
        for (std::size_t number = 0; number < slowClients; ++number) {
            if (place < request.size()) {
                lines[number]->send(request.substr(place, 1));
            }
            if (place < message.size()) {
                pages[number]->sendRaw(message.substr(place, 1));
            }
        }
        EXPECT_EQ(get("deviceName"), "TV") << place;
    }
    for (std::size_t number = 0; number < slowClients; ++number) {
        EXPECT_EQ(lines[number]->receiveLine(), reply);
        EXPECT_EQ(pages[number]->receiveText(), reply);
    }
    lines.clear();
    pages.clear();
    expectNothingLeft();
}

TEST_F(HostileConnections, HalfFramesInEveryConnectionAreBounded) {
    constexpr std::size_t halfFrame = 65000;
    // One buffer to read, one to keep, which grows in steps.
    constexpr std::size_t costOfOne = 4 * 65536;
    std::vector<std::unique_ptr<HostClient>> lines;
    std::vector<std::unique_ptr<HostWebSocket>> pages;
    for (std::size_t number = 0; number < 100; ++number) {
        lines.push_back(std::make_unique<HostClient>(socket()));
        lines.back()->send("{\"type\":24,\"x\":\"" + std::string(halfFrame, 'x'));
        pages.push_back(page());
        pages.back()->sendFrame(1, "{\"type\":24,\"x\":\"" + std::string(halfFrame, 'x'), false);
    }
    EXPECT_EQ(get("deviceName"), "TV");
    expectGrowthBelow(200 * costOfOne);
    lines.clear();
    pages.clear();
    expectNothingLeft();
}

TEST_F(HostileConnections, ClientsThatComeAndGoLeaveNothing) {
    const int rounds = TestSupport::sanitized ? 200 : 1000;
    for (int number = 0; number < rounds; ++number) {
        HostClient visitor(number % 2 == 0 ? socket() : deviceSocket());
        visitor.sendLine(getRequest(R"(["timezone"])"));
        if (number % 3 == 0) {
            EXPECT_TRUE(visitor.receiveLine());
        }
        if (number % 5 == 0) {
            page()->sendText(getRequest(R"(["timezone"])"));
        }
    }
    expectNothingLeft();
    expectGrowthBelow(8UL * 1024 * 1024);
}

}  // namespace SystemTests
