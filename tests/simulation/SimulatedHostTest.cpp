#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

using namespace std::chrono_literals;

namespace {

std::string setRequest(const std::string& key, const std::string& value, std::int64_t timestamp = 1) {
    return R"({"type":24,"messageId":"m","answer":true,"timestamp":)" + std::to_string(timestamp) +
           R"(,"payload":{"settingDBId":")" + key + R"(","to":")" + value + "\"}}";
}

bool anyHas(const std::vector<std::string>& frames, const std::string& part) {
    return std::any_of(frames.begin(), frames.end(),
                       [&](const auto& frame) { return frame.find(part) != std::string::npos; });
}

}  // namespace

class SimulatedHostTest : public ::testing::Test {
protected:
    PlainChoices plain;
    SimulatedHost host{plain};
};

TEST_F(SimulatedHostTest, ServesClientsOfEveryKind) {
    ASSERT_TRUE(host.start()) << host.startFailure();
    const auto socket = host.connect(Kind::SOCKET);
    const auto page = host.connect(Kind::PAGE);
    const auto device = host.connect(Kind::DEVICE);
    host.settle();
    socket->send(setRequest("deviceName", "Den"));
    device->send(R"({"command":"locale","value":"fr-FR"})");
    host.settle();
    EXPECT_TRUE(anyHas(page->take(), R"("to":"Den")"));
    EXPECT_TRUE(anyHas(socket->take(), R"("outcome":"changed")"));
    EXPECT_EQ(device->take(), std::vector<std::string>{R"({"ok":true})"});
    EXPECT_EQ(host.storedSettings()["deviceName"], "Den");
    page->send(setRequest("deviceName", "Attic", 2));
    host.settle();
    EXPECT_TRUE(anyHas(socket->take(), R"("origin":"page")"));
}

TEST_F(SimulatedHostTest, StopsAndFindsItsValuesAgain) {
    ASSERT_TRUE(host.start());
    const auto client = host.connect(Kind::SOCKET);
    client->send(setRequest("deviceName", "Den"));
    host.settle();
    host.stop();
    host.settle();
    EXPECT_EQ(host.state(), SimulatedHost::State::OFF);
    EXPECT_TRUE(client->isClosedByHost());
    ASSERT_TRUE(host.start());
    EXPECT_EQ(host.storedSettings()["deviceName"], "Den");
}

TEST_F(SimulatedHostTest, KeepsWhatWasAnnouncedBeforeAKillAndAPowerCut) {
    for (const bool powerIsCut : {false, true}) {
        ASSERT_TRUE(host.start());
        const auto client = host.connect(Kind::SOCKET);
        const std::string name = powerIsCut ? "Attic" : "Den";
        client->send(setRequest("deviceName", name));
        host.settle();
        EXPECT_EQ(client->take().size(), 2U);
        powerIsCut ? host.powerCut() : host.kill();
        EXPECT_EQ(host.state(), SimulatedHost::State::DEAD);
        EXPECT_TRUE(client->isClosedByHost());
        EXPECT_EQ(host.storedSettings()["deviceName"], name);
    }
}

/// Clients that do as the seed says, with everything that can happen to a host.
std::uint64_t run(std::uint64_t seed, std::vector<std::string>* log) {
    SeededChoices choices(seed);
    SimulatedHost host(choices);
    if (log != nullptr) {
        host.observeLog([log](auto /*level*/, const std::string& text) { log->push_back(text); });
    }
    const std::vector<std::string> faults{"storage-full", "storage-slow", "sdk-slow", "replies-late", "clock-jump"};
    std::vector<std::shared_ptr<Connection>> clients;
    for (std::int64_t operation = 0; operation < 300; ++operation) {
        host.start();
        switch (choices.pick(16, "what is done")) {
            case 0:
                clients.push_back(host.connect(static_cast<Kind>(choices.pick(3, "which kind"))));
                break;
            case 1:
                host.killAtDiskCall(static_cast<long>(1 + choices.pick(40, "when")));
                break;
            case 2:
                host.powerCutAtDiskCall(static_cast<long>(1 + choices.pick(40, "when")));
                break;
            case 3:
                host.stop();
                break;
            case 4:
                host.advance(std::chrono::minutes(choices.pick(90, "how long")));
                break;
            case 5:
                host.failDiskCalls(1, static_cast<long>(choices.pick(20, "how many")));
                break;
            case 6: {
                const auto& name = faults[choices.pick(faults.size(), "which fault")];
                const auto device = host.connect(Kind::DEVICE);
                device->send(R"({"command":"fault","name":")" + name + R"(","enabled":)" +
                             (choices.pick(3, "on") == 0 ? "true}" : "false}"));
                break;
            }
            default:
                for (const auto& client : clients) {
                    client->send(client->kind() == Kind::DEVICE
                                     ? R"({"command":"timezone","value":"Europe/Paris"})"
                                     : setRequest("deviceName", "Room " + std::to_string(operation), operation));
                }
        }
        for (auto steps = choices.pick(60, "how many steps"); steps > 0; --steps) {
            host.step();
        }
        clients.erase(std::remove_if(clients.begin(), clients.end(), [](const auto& each) { return !each->isOpen(); }),
                      clients.end());
    }
    host.settle();
    return host.fingerprint();
}

TEST(SimulatedHost, DoesTheSameAgainWithTheSameSeed) {
    for (const std::uint64_t seed : {1, 2, 3}) {
        std::vector<std::string> first;
        std::vector<std::string> second;
        const std::uint64_t fingerprint = run(seed, &first);
        // In between memory is used in another way.
        const std::vector<std::string> texts(100, std::string(1000, 'x'));
        EXPECT_EQ(run(seed, &second), fingerprint);
        EXPECT_EQ(first, second);
        EXPECT_NE(run(seed + 100, nullptr), fingerprint);
    }
}

}  // namespace SettingsSimulation
