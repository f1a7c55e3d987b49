#pragma once

#include <algorithm>
#include <atomic>
#include <csignal>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "SettingsHandlerKit/ClientListener.h"
#include "server/loop/EventLoop.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ListenerLimits.h"
#include "support/LineReader.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

/// Observes listeners in a test: keeps their clients, counts, and by default answers each frame in angle brackets.
/// Listeners notify it on the thread of their loop.
class ListenerRecording : public ClientListener {
public:
    void connected(const std::shared_ptr<Client>& client) override {
        clients.push_back(client);
        origins += std::string(originName(client->origin())) + " ";
        ++connections;
    }
    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override {
        clients.erase(std::find(clients.begin(), clients.end(), client));
        tooSlow += reason == DisconnectReason::TOO_SLOW ? 1 : 0;
        ++disconnections;
    }
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override { onFrame(client, frame); }
    void oversized(const std::shared_ptr<Client>& client) override { sendTo(client, "TOO LARGE"); }
    void refused(Origin /*origin*/) override { ++refusedConnections; }

    static void sendTo(const std::shared_ptr<Client>& client, const std::string& text) {
        client->send(std::make_shared<const std::string>(text));
    }

    static void waitFor(const std::function<bool()>& condition) {
        const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
        while (!condition() && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(condition());
    }

    /// Of all its listeners.
    std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>();
    std::vector<std::shared_ptr<Client>> clients;
    /// Of all clients that connected, in order, each with a blank after it.
    std::string origins;
    std::function<void(const std::shared_ptr<Client>&, const std::string&)> onFrame =
        [](const auto& client, const auto& frame) { sendTo(client, "<" + frame + ">"); };
    std::atomic<int> connections{0};
    std::atomic<int> disconnections{0};
    std::atomic<int> tooSlow{0};
    std::atomic<int> refusedConnections{0};
};

/// A listener on a loop in its own thread.
template <typename Listener>
class ListenerTest : public ::testing::Test, public ListenerRecording {
protected:
    ListenerTest() { std::signal(SIGPIPE, SIG_IGN); }

    /// Not left to the destructor: the loop's thread calls this object's virtual operations.
    void TearDown() override { stop(); }

    void serve(std::unique_ptr<Listener> listenerToServe) {
        listener = std::move(listenerToServe);
        loop.onSignals({SIGUSR1}, [this] { loop.stop(); });
        std::promise<void> turning;
        loop.later([&turning] { turning.set_value(); });
        thread = std::thread([this] {
            loop.run();
            listener->close();
            loop.drain(200, [this] { listener->closeNow(); });
            listener.reset();
        });
        // What a listener opens and closes as it starts is not counted by tests.
        turning.get_future().wait();
    }

    void stop() {
        if (thread.joinable()) {
            ::raise(SIGUSR1);
            thread.join();
        }
    }

    TestSupport::TemporaryDirectory folder;
    EventLoop loop;

private:
    std::unique_ptr<Listener> listener;
    std::thread thread;
};

}  // namespace SettingsHandlerKit
