#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "server/loop/Deadline.h"
#include "server/loop/EventLoop.h"
#include "simulation/SimulatedDisk.h"
#include "simulation/SimulatedHost.h"
#include "simulation/VirtualClock.h"

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

TEST_F(SimulatedHostTest, ItsClockDrivesAllTimers) {
    std::vector<std::string> backups;
    host.observeLog([&](auto /*level*/, const std::string& text) {
        if (text.find("backed up") != std::string::npos) {
            backups.push_back(text);
        }
    });
    ASSERT_TRUE(host.start());
    host.advance(4999ms);
    EXPECT_EQ(backups.size(), 0U);
    host.advance(100ms);
    EXPECT_EQ(backups.size(), 1U);
    EXPECT_EQ(host.files().count("/simulated/settings.db.backup.1"), 1U);
    host.advance(26h);
    EXPECT_EQ(backups.size(), 2U);
    const auto page = host.connect(Kind::PAGE);
    host.settle();
    EXPECT_TRUE(page->isOpen()) << "its time begins when it connects";
    host.advance(10min);
    EXPECT_TRUE(page->isOpen()) << "it answers the pings";
    host.faults().switchOn(SettingsHost::Fault::REPLIES_LATE);
    page->send(R"({"type":18,"messageId":"m"})");
    host.advance(1999ms);
    EXPECT_EQ(page->take().size(), 0U);
    host.advance(1ms);
    EXPECT_EQ(page->take().size(), 1U);
    page->setReading(false);
    host.advance(1min);
    page->setReading(true);
    host.settle();
    EXPECT_TRUE(page->isClosedByHost()) << "it answers them no more";
}

TEST_F(SimulatedHostTest, APageThatAskedDuringALongStallIsAnswered) {
    ASSERT_TRUE(host.start());
    const auto client = host.connect(Kind::SOCKET);
    host.settle();
    host.faults().switchOn(SettingsHost::Fault::STORAGE_SLOW, std::int64_t{20'000});
    client->send(setRequest("deviceName", "Den"));
    const auto page = host.connect(Kind::PAGE);
    page->send(R"({"type":18,"messageId":"m"})");
    host.settle();
    EXPECT_EQ(page->take().size(), 1U);
}

TEST(Deadline, CountsFromNowAlsoInALongTurn) {
    VirtualClock clock;
    SettingsHandlerKit::EventLoop loop;
    bool isOver = false;
    SettingsHandlerKit::Deadline deadline(loop, [&] { isOver = true; });
    // A disk that took 20 seconds.
    clock.advance(20s);
    deadline.set(15s);
    loop.keepOpen(true);
    loop.turn();
    EXPECT_FALSE(isOver);
    clock.advance(15s);
    loop.turn();
    EXPECT_TRUE(isOver);
}

TEST(EventLoop, TheGracePeriodBeginsWithTheDrainAlsoInALongTurn) {
    VirtualClock clock;
    SettingsHandlerKit::EventLoop loop;
    loop.keepOpen(true);
    bool isOver = false;
    clock.advance(20s);
    loop.beginDrain(500, [&] { isOver = true; });
    loop.turn();
    EXPECT_FALSE(isOver);
    clock.advance(500ms);
    loop.turn();
    EXPECT_TRUE(isOver);
    loop.keepOpen(false);
    loop.endDrain();
}

TEST_F(SimulatedHostTest, ARestartOfTheHostServesThoseWhoConnectMeanwhile) {
    ASSERT_TRUE(host.start());
    const auto before = host.connect(Kind::SOCKET);
    const auto device = host.connect(Kind::DEVICE);
    device->send(R"({"command":"fault","name":"restart","enabled":true})");
    while (host.state() == SimulatedHost::State::RUNNING) {
        ASSERT_TRUE(host.step());
    }
    // It learns of the stop in the next turn.
    host.step();
    const auto meanwhile = host.connect(Kind::PAGE);
    meanwhile->send(R"({"type":18,"messageId":"m"})");
    host.settle();
    EXPECT_EQ(host.state(), SimulatedHost::State::RUNNING);
    EXPECT_TRUE(before->isClosedByHost());
    EXPECT_EQ(device->take(), std::vector<std::string>{R"({"ok":true})"});
    EXPECT_EQ(meanwhile->take().size(), 1U);
}

TEST_F(SimulatedHostTest, AClientThatDoesNotReadIsDisconnected) {
    ASSERT_TRUE(host.start());
    const auto lazy = host.connect(Kind::SOCKET);
    const auto other = host.connect(Kind::SOCKET);
    lazy->setReading(false);
    for (int number = 0; number < 100; ++number) {
        other->send(setRequest("companionDevice", std::string(30000, static_cast<char>('a' + number % 2)), number + 1));
        host.settle();
    }
    lazy->setReading(true);
    host.settle();
    EXPECT_TRUE(lazy->isClosedByHost());
    EXPECT_TRUE(other->isOpen());
}

TEST_F(SimulatedHostTest, EndsInTheMiddleOfARequest) {
    ASSERT_TRUE(host.start());
    const auto client = host.connect(Kind::SOCKET);
    host.settle();
    host.killAtDiskCall(1);
    client->send(setRequest("deviceName", "Den"));
    host.settle();
    EXPECT_EQ(host.state(), SimulatedHost::State::DEAD);
    EXPECT_EQ(client->take().size(), 0U);
    ASSERT_TRUE(host.start()) << host.startFailure();
    host.failDiskCalls(1, 100);
    const auto again = host.connect(Kind::SOCKET);
    again->send(setRequest("deviceName", "Den"));
    host.settle();
    EXPECT_TRUE(anyHas(again->take(), "not-stored"));
    EXPECT_GT(host.diskFailures(), 0);
}

/// Always the same answer, as far as there are so many.
class SameChoice : public Choices {
public:
    explicit SameChoice(std::size_t number) : answer(number) {}
    std::size_t pick(std::size_t count, const char* /*what*/) override { return std::min(answer, count - 1); }

private:
    std::size_t answer;
};

TEST(SimulatedDisk, LosesWhatWasNotSyncedWhenThePowerIsCut) {
    SameChoice nothingIsLeft(1);
    SimulatedDisk disk(nothingIsLeft, [](auto /*time*/) {});
    EXPECT_FALSE(disk.createFolder("/folder"));
    EXPECT_FALSE(disk.sync("/"));
    for (const std::string file : {"/folder/synced", "/folder/unsynced"}) {
        EXPECT_FALSE(disk.createFile(file));
    }
    EXPECT_FALSE(disk.sync("/folder/synced"));
    disk.losePower();
    std::vector<std::string> names;
    EXPECT_FALSE(disk.list("/folder", names));
    EXPECT_EQ(names, std::vector<std::string>{"synced"});
    EXPECT_FALSE(disk.renameFile("/folder/synced", "/folder/new"));
    disk.losePower();
    EXPECT_TRUE(disk.find("/folder/synced")) << "the new name was not synced";
    EXPECT_FALSE(disk.removeFile("/folder/synced"));
    EXPECT_FALSE(disk.sync("/folder"));
    disk.losePower();
    EXPECT_FALSE(disk.find("/folder/synced"));
}

TEST(SimulatedDisk, FailsWhenItIsTo) {
    PlainChoices plain;
    SimulatedDisk disk(plain, [](auto /*time*/) {});
    disk.failCalls(2, 1);
    EXPECT_FALSE(disk.createFile("/a"));
    EXPECT_EQ(disk.createFile("/b"), std::errc::io_error);
    EXPECT_FALSE(disk.createFile("/c"));
    EXPECT_EQ(disk.failures(), 1);
    disk.cutOff();
    EXPECT_EQ(disk.createFile("/d"), std::errc::io_error);
    EXPECT_EQ(disk.contents().size(), 2U);
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
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
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
