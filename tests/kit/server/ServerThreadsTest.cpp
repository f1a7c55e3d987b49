#include <atomic>
#include <future>
#include <thread>

#include "kit/server/ServerFixture.h"

namespace SettingsHandlerKit {

namespace {

/// Remembers the thread that changed the time zone last.
class ThreadNotingBridge : public SettingsHandlerTesting::FakeSdkBridge {
public:
    using FakeSdkBridge::FakeSdkBridge;

    void setTimezone(std::string newTimezone) override {
        caller = std::this_thread::get_id();
        FakeSdkBridge::setTimezone(std::move(newTimezone));
    }

    std::atomic<std::thread::id> caller;
};

}  // namespace

/// A server on a thread of its own, used from the test's.
class ServerThreadsTest : public ServerFixture {
protected:
    ServerThreadsTest() { bridge = noting; }

    /// Waits for what `action` returns on the server's thread.
    template <typename Action>
    static auto onServer(Server& server, const Action& action) {
        const auto result = std::make_shared<std::promise<decltype(action())>>();
        server.post([result, &action] { result->set_value(action()); });
        return result->get_future().get();
    }

    std::shared_ptr<ThreadNotingBridge> noting = std::make_shared<ThreadNotingBridge>(journal);
};

TEST_F(ServerThreadsTest, EveryCallOfTheHandlerIsOnTheServersThread) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    std::vector<std::string> told;
    const auto observation = server.observeAll([&](const ObservedSetting& what) {
        told.push_back(what.settingDBId + (what.event ? "=" + what.event->to : " notice"));
    });
    server.start();
    server.startThread();
    const auto own = onServer(server, [] { return std::this_thread::get_id(); });
    EXPECT_NE(own, std::this_thread::get_id());
    TestSupport::LineClient client(server.socketPath());
    client.sendLine(setRequest("timezone", "Europe/Paris"));
    const auto event = client.receiveLine();
    ASSERT_TRUE(event);
    EXPECT_EQ(noting->caller.load(), own);
    // What the device does, from any thread.
    server.post([&] {
        server.valueObserver()->valueChanged("timezone");
        handler->notifySystemSettingChanged("timezone", "America/Lima");
    });
    const auto fromDevice = client.receiveLine();
    ASSERT_TRUE(fromDevice);
    EXPECT_NE(fromDevice->find(R"("sequence":2,"origin":"device")"), std::string::npos) << *fromDevice;
    EXPECT_EQ(noting->caller.load(), own);
    server.post([values = server.valueObserver()] { values->valueChanged("captionsEnabled"); });
    EXPECT_EQ(client.receiveLine(), R"({"notice":{"reread":["captionsEnabled"]}})");
    server.stop();
    server.join();
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(told,
              (std::vector<std::string>{"timezone=Europe/Paris", "timezone=America/Lima", "captionsEnabled notice"}));
    EXPECT_EQ(log.take().back(), "1 settings-host:stopping");
}

TEST_F(ServerThreadsTest, ManyThreadsPostObserveAndStop) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    server.startThread();
    constexpr int threads = 4;
    constexpr int changesEach = 25;
    std::atomic<int> told{0};
    std::vector<std::thread> posting;
    posting.reserve(threads);
    for (int thread = 0; thread < threads; ++thread) {
        posting.emplace_back([&, thread] {
            const std::string name = "key of thread " + std::to_string(thread);
            const auto observation = server.observe(name, [&](const ObservedSetting&) { ++told; });
            for (int number = 0; number < changesEach; ++number) {
                server.post([&handler, name, number] { handler->setSetting(name, std::to_string(number)); });
            }
            onServer(server, [] { return true; });
        });
    }
    for (auto& thread : posting) {
        thread.join();
    }
    EXPECT_EQ(told, threads * changesEach);
    EXPECT_EQ(onServer(server, [&] { return server.eventsSent(); }), static_cast<unsigned long>(threads * changesEach));
    std::thread one([&] { server.stop(); });
    std::thread other([&] { server.stop(); });
    one.join();
    other.join();
    server.join();
}

TEST_F(ServerThreadsTest, APostedActionThatFailsIsLoggedAndTheNextIsRun) {
    Server server(options());
    server.start();
    server.startThread();
    server.post([] { throw std::runtime_error("device"); });
    EXPECT_TRUE(onServer(server, [] { return true; }));
    server.stop();
    server.join();
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{"3 settings-host:a posted action failed: device", "1 settings-host:stopping"}));
}

TEST_F(ServerThreadsTest, TheDestructorStopsTheThread) {
    Storage storage(database());
    Server server(options());
    const auto handler = handlerOf(server, storage);
    server.start();
    server.startThread();
    const TestSupport::LineClient client(server.socketPath());
}

TEST_F(ServerThreadsTest, PostsOfOtherThreadsWakeACallersLoop) {
    Server server(options());
    server.start();
    bool isDone = false;
    serveUntil(server, [&] { return server.timeout() == std::nullopt; });
    std::thread posting([&] { server.post([&] { isDone = true; }); });
    serveUntil(server, [&] { return isDone; });
    posting.join();
    server.stop();
    serveUntil(server, [&] { return !server.isRunning(); });
}

}  // namespace SettingsHandlerKit
