#include <condition_variable>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "Utils/Rapidjson.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"

namespace SettingsHandlerKit {

class SettingObserversTest : public ::testing::Test {
protected:
    SettingObserversTest() {
        hub.connected(client);
        hub.registerMessageHandler(24, [this](const std::string& /*text*/) { onRequest(); });
    }

    void sendEvent(const std::string& key, const std::string& from, const std::string& to) {
        rapidjson::Document payload(rapidjson::kObjectType);
        auto& allocator = payload.GetAllocator();
        payload.AddMember("settingDBId", rapidjson::Value(key, allocator), allocator);
        payload.AddMember("from", rapidjson::Value(from, allocator), allocator);
        payload.AddMember("to", rapidjson::Value(to, allocator), allocator);
        hub.sendMessage(25, payload);
    }

    void request(std::function<void()> action, const std::shared_ptr<SettingsHandlerTesting::FakeClient>& requester) {
        onRequest = std::move(action);
        hub.received(requester, R"({"type":24})");
    }
    void request(std::function<void()> action) { request(std::move(action), client); }

    /// An observer that writes what it is told down as `name`.
    SettingObserver recorder(const std::string& name) {
        return [this, name](const ObservedSetting& what) {
            told.push_back(name + ": " + what.settingDBId +
                           (what.event ? " '" + what.event->from + "' -> '" + what.event->to + "' " +
                                             std::to_string(what.event->sequence) + " " + originName(what.event->origin)
                                       : " notice") +
                           ", frames " + std::to_string(client->frames.size()));
        };
    }

    std::vector<std::string> taken() { return std::exchange(told, {}); }

    SettingsHostTests::LogRecording log;
    MessageHub hub{std::make_shared<TrafficRecording>()};
    std::shared_ptr<SettingsHandlerTesting::FakeClient> client = std::make_shared<SettingsHandlerTesting::FakeClient>();
    std::function<void()> onRequest;
    std::vector<std::string> told;
};

TEST_F(SettingObserversTest, AreToldOfEachEventAndNoticeAfterTheClients) {
    const auto all = hub.observers().add(std::nullopt, recorder("all"));
    const auto one = hub.observers().add("timezone", recorder("one"));
    request([&] {
        hub.valueChanged("captionsEnabled");
        sendEvent("deviceName", "TV", "Den");
        sendEvent("timezone", "", "Europe/Paris");
        hub.valueChanged("timezone");
        EXPECT_TRUE(told.empty()) << "called from inside the handler";
    });
    // Two events and a notice were sent before.
    EXPECT_EQ(taken(), (std::vector<std::string>{"all: deviceName 'TV' -> 'Den' 1 socket, frames 3",
                                                 "all: timezone '' -> 'Europe/Paris' 2 socket, frames 3",
                                                 "one: timezone '' -> 'Europe/Paris' 2 socket, frames 3",
                                                 "all: captionsEnabled notice, frames 3"}));
    const auto page = std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::PAGE);
    request([&] { sendEvent("deviceName", "Den", "Attic"); }, page);
    hub.perform(Origin::DEVICE, [&] {
        sendEvent("deviceName", "Attic", "TV");
        hub.valueChanged("timezone");
    });
    EXPECT_EQ(taken(), (std::vector<std::string>{"all: deviceName 'Den' -> 'Attic' 3 page, frames 4",
                                                 "all: deviceName 'Attic' -> 'TV' 4 device, frames 6",
                                                 "all: timezone notice, frames 6", "one: timezone notice, frames 6"}));
}

TEST_F(SettingObserversTest, AreToldWithoutAnyClient) {
    hub.disconnected(client, DisconnectReason::CLOSED);
    const auto all = hub.observers().add(std::nullopt, recorder("all"));
    hub.perform(Origin::DEVICE, [&] {
        sendEvent("deviceName", "TV", "Den");
        hub.valueChanged("timezone");
    });
    EXPECT_EQ(taken(), (std::vector<std::string>{"all: deviceName 'TV' -> 'Den' 1 device, frames 0",
                                                 "all: timezone notice, frames 0"}));
}

TEST_F(SettingObserversTest, AreToldAtOnceOfWhatHappensOutsideOfRequestsAndActions) {
    const auto page = std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::PAGE);
    request([] {}, page);
    const auto all = hub.observers().add(std::nullopt, recorder("all"));
    sendEvent("deviceName", "TV", "Den");
    hub.valueChanged("deviceName");
    EXPECT_EQ(taken(), (std::vector<std::string>{"all: deviceName 'TV' -> 'Den' 1 device, frames 1",
                                                 "all: deviceName notice, frames 2"}));
    EXPECT_EQ(*client->frames.back(), R"({"notice":{"reread":["deviceName"]}})");
}

TEST_F(SettingObserversTest, AreNotToldAfterTheHandleIsGone) {
    auto first = hub.observers().add(std::nullopt, recorder("first"));
    auto second = hub.observers().add(std::nullopt, recorder("second"));
    Observation moved(std::move(first));
    second.end();
    second.end();
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    EXPECT_EQ(taken(), std::vector<std::string>{"first: deviceName 'TV' -> 'Den' 1 socket, frames 1"});
    moved = hub.observers().add(std::nullopt, recorder("third"));
    request([&] { sendEvent("deviceName", "Den", "TV"); });
    EXPECT_EQ(taken(), std::vector<std::string>{"third: deviceName 'Den' -> 'TV' 2 socket, frames 2"});
    moved = Observation();
    EXPECT_FALSE(hub.observers().empty()) << "forgotten with the next event";
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    EXPECT_TRUE(taken().empty());
    EXPECT_TRUE(hub.observers().empty());
}

TEST_F(SettingObserversTest, MayUnsubscribeThemselvesAndOthersDuringACall) {
    Observation self;
    Observation other;
    Observation last;
    self = hub.observers().add(std::nullopt, [&](const ObservedSetting& what) {
        recorder("self")(what);
        self.end();
        other = Observation();
    });
    other = hub.observers().add(std::nullopt, recorder("other"));
    last = hub.observers().add(std::nullopt, recorder("last"));
    request([&] {
        sendEvent("deviceName", "TV", "Den");
        sendEvent("deviceName", "Den", "Attic");
    });
    EXPECT_EQ(taken(), (std::vector<std::string>{"self: deviceName 'TV' -> 'Den' 1 socket, frames 2",
                                                 "last: deviceName 'TV' -> 'Den' 1 socket, frames 2",
                                                 "last: deviceName 'Den' -> 'Attic' 2 socket, frames 2"}));
}

TEST_F(SettingObserversTest, SeeChangesInTheirOrderWhenOneOfThemMakesMore) {
    const auto chained = hub.observers().add("deviceName", [&](const ObservedSetting& what) {
        recorder("chained")(what);
        sendEvent("timezone", "", "UTC");
        EXPECT_EQ(told.size(), 1U) << "called from inside a call";
    });
    const auto all = hub.observers().add(std::nullopt, recorder("all"));
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    EXPECT_EQ(taken(), (std::vector<std::string>{"chained: deviceName 'TV' -> 'Den' 1 socket, frames 1",
                                                 "all: deviceName 'TV' -> 'Den' 1 socket, frames 2",
                                                 "all: timezone '' -> 'UTC' 2 device, frames 2"}));
}

TEST_F(SettingObserversTest, ARequestOfAnObserverIsNotAnsweredToTheClientOfTheRequestBefore) {
    const auto asking = hub.observers().add(std::nullopt, [&](const ObservedSetting& /*what*/) {
        rapidjson::Document payload(rapidjson::kObjectType);
        hub.sendResponse("own", payload);
    });
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    EXPECT_EQ(client->frames.size(), 1U) << *client->frames.back();
}

TEST_F(SettingObserversTest, AnExceptionIsLoggedAndTheOthersAreCalled) {
    const auto faulty = hub.observers().add(
        std::nullopt, [](const ObservedSetting& /*what*/) { throw std::runtime_error("observer"); });
    const auto other = hub.observers().add(std::nullopt, recorder("other"));
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    request([&] { sendEvent("deviceName", "Den", "TV"); });
    EXPECT_EQ(taken(), (std::vector<std::string>{"other: deviceName 'TV' -> 'Den' 1 socket, frames 1",
                                                 "other: deviceName 'Den' -> 'TV' 2 socket, frames 2"}));
    EXPECT_EQ(log.take(), (std::vector<std::string>{"3 settings-host:an observer of settings failed: observer",
                                                    "3 settings-host:an observer of settings failed: observer"}));
}

TEST_F(SettingObserversTest, AreToldOfWhatARequestDidBeforeItFailed) {
    const auto all = hub.observers().add(std::nullopt, recorder("all"));
    request([&] {
        sendEvent("deviceName", "TV", "Den");
        hub.valueChanged("timezone");
        throw std::runtime_error("collaborator");
    });
    EXPECT_EQ(taken(), (std::vector<std::string>{"all: deviceName 'TV' -> 'Den' 1 socket, frames 2",
                                                 "all: timezone notice, frames 2"}));
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 settings-host:a request of type 24 failed: collaborator"});
}

TEST_F(SettingObserversTest, AHandleMayOutliveTheHub) {
    Observation handle;
    {
        MessageHub other{std::make_shared<TrafficRecording>()};
        handle = other.observers().add(std::nullopt, recorder("all"));
    }
    handle.end();
    EXPECT_TRUE(taken().empty());
}

TEST_F(SettingObserversTest, TheEndOnAnotherThreadWaitsForACallInProgress) {
    std::mutex mutex;
    std::condition_variable changed;
    bool isCalled = false;
    bool isOver = false;
    Observation handle = hub.observers().add(std::nullopt, [&](const ObservedSetting& /*what*/) {
        std::unique_lock<std::mutex> lock(mutex);
        isCalled = true;
        changed.notify_all();
        lock.unlock();
        // Gives the other thread a chance to return too early.
        std::this_thread::yield();
        isOver = true;
    });
    std::thread ending([&] {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return isCalled; });
        lock.unlock();
        handle.end();
        EXPECT_TRUE(isOver);
    });
    request([&] { sendEvent("deviceName", "TV", "Den"); });
    ending.join();
}

}  // namespace SettingsHandlerKit
