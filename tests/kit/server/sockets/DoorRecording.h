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

#include "server/loop/EventLoop.h"
#include "server/sockets/DoorEvents.h"
#include "support/LineReader.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

/// Whoever owns a door in a test: keeps its clients, counts, and answers each frame in angle brackets unless told
/// otherwise. The door calls on its loop's thread.
class DoorRecording {
public:
    DoorEvents events() {
        return {[this](const auto& client) {
                    clients.push_back(client);
                    origins += std::string(originName(client->origin())) + " ";
                    ++arrived;
                },
                [this](const auto& client, Departure departure) {
                    clients.erase(std::find(clients.begin(), clients.end(), client));
                    tooSlow += departure == Departure::TOO_SLOW ? 1 : 0;
                    ++left;
                },
                [this](const auto& client, const auto& frame) { onFrame(client, frame); },
                [](const auto& client) { sendTo(client, "TOO LARGE"); },
                [this](Origin) { ++turnedAway; },
                backlog};
    }

    static void sendTo(const std::shared_ptr<Client>& client, const std::string& text) {
        client->send(std::make_shared<const std::string>(text));
    }

    static void waitFor(const std::function<bool()>& condition) {
        const auto until = std::chrono::steady_clock::now() + TestSupport::patience;
        while (!condition() && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(condition());
    }

    /// Of all doors that it owns.
    std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>();
    std::vector<std::shared_ptr<Client>> clients;
    /// Of those who arrived, in order, each with a blank after it.
    std::string origins;
    std::function<void(const std::shared_ptr<Client>&, const std::string&)> onFrame =
        [](const auto& client, const auto& frame) { sendTo(client, "<" + frame + ">"); };
    std::atomic<int> arrived{0};
    std::atomic<int> left{0};
    std::atomic<int> tooSlow{0};
    std::atomic<int> turnedAway{0};
};

/// A door on a loop in a thread of its own.
template <typename Door>
class DoorTest : public ::testing::Test, protected DoorRecording {
protected:
    DoorTest() { std::signal(SIGPIPE, SIG_IGN); }
    ~DoorTest() override { stop(); }

    void serve(std::unique_ptr<Door> doorToServe) {
        door = std::move(doorToServe);
        loop.onSignals({SIGUSR1}, [this] { loop.stop(); });
        std::promise<void> turning;
        loop.later([&turning] { turning.set_value(); });
        thread = std::thread([this] {
            loop.run();
            door->close();
            loop.drain(200, [this] { door->closeNow(); });
            door.reset();
        });
        // What a door opens and closes as it starts is not counted by tests.
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
    std::unique_ptr<Door> door;
    std::thread thread;
};

}  // namespace SettingsHost
