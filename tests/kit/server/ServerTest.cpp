#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/server/ServerFixture.h"
#include "kit/server/sockets/ListenerRecording.h"
#include "support/NotificationSocket.h"
#include "support/WebClient.h"

namespace SettingsHandlerKit {

using namespace std::chrono_literals;

class ServerTest : public ServerFixture {
protected:
    static std::uint16_t portOf(const Server& server) {
        const std::string address = server.pageAddress();
        return static_cast<std::uint16_t>(std::stoi(address.substr(std::string("http://127.0.0.1:").size())));
    }

    static std::string errorOf(const std::function<void()>& action) {
        try {
            action();
            return "no error";
        } catch (const std::exception& error) {
            return error.what();
        }
    }
};

TEST_F(ServerTest, ServesOnTheThreadThatRunsIt) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(server.start(), "socket: " + server.socketPath());
    EXPECT_EQ(server.socketPath(), folder / "run/settings.sock");
    EXPECT_TRUE(server.isRunning());
    TestSupport::LineClient client(server.socketPath());
    client.sendLine(setRequest("deviceName", "Den"));
    client.sendLine(R"({"type":7,"messageId":"m","payload":{"settings":["deviceName"]}})");
    const auto stopping = server.observe("deviceName", [&](const ObservedSetting&) { server.stop(); });
    log.take();
    server.run();
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(client.receiveLine(), firstEvent("deviceName", "TV", "Den"));
    EXPECT_EQ(client.receiveLine(), R"({"type":7,"messageId":"m","payload":{"settings":{"deviceName":"Den"}}})");
    EXPECT_EQ(client.receiveLine(), std::nullopt);
    EXPECT_EQ(log.take().back(), "1 settings-host:stopping");
    EXPECT_FALSE(std::filesystem::exists(server.socketPath()));
    EXPECT_EQ(server.eventsSent(), 1U);
}

TEST_F(ServerTest, ServesClientsWithoutASocket) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    const auto client = std::make_shared<SettingsHandlerTesting::FakeClient>();
    const auto other = std::make_shared<SettingsHandlerTesting::FakeClient>();
    server.clients()->connected(client);
    server.clients()->connected(other);
    server.clients()->received(client, setRequest("deviceName", "Den"));
    EXPECT_EQ(client->take(), std::vector<std::string>{firstEvent("deviceName", "TV", "Den")});
    server.clients()->disconnected(client, DisconnectReason::CLOSED);
    server.clients()->received(other, R"({"type":7,"messageId":"m","payload":{"settings":["deviceName"]}})");
    EXPECT_EQ(client->take(), std::vector<std::string>());
    EXPECT_EQ(other->take(),
              (std::vector<std::string>{firstEvent("deviceName", "TV", "Den"),
                                        R"({"type":7,"messageId":"m","payload":{"settings":{"deviceName":"Den"}}})"}));
}

TEST_F(ServerTest, RunsWithoutAnySocket) {
    ServerOptions withoutSocket = options();
    withoutSocket.socketPath = std::nullopt;
    Server server(std::move(withoutSocket));
    EXPECT_EQ(server.start(), "");
    EXPECT_EQ(server.socketPath(), "");
    EXPECT_TRUE(server.foldersInUse().cleared.empty());
    std::vector<std::string> linesBefore{"the action was not called"};
    server.post([&] {
        linesBefore = log.take();
        server.stop();
    });
    server.run();
    EXPECT_EQ(linesBefore, std::vector<std::string>{}) << "it stopped by itself";
}

TEST_F(ServerTest, AStopBeforeTheRunEndsIt) {
    Server server(options());
    server.start();
    server.stop();
    server.run();
    EXPECT_FALSE(server.isRunning());
}

TEST_F(ServerTest, TheServiceManagerIsToldOfARun) {
    TestSupport::NotificationSocket manager(folder / "notify");
    ::setenv("NOTIFY_SOCKET", (folder / "notify").c_str(), 1);
    Server server(options());
    server.start();
    server.stop();
    server.run();
    ::unsetenv("NOTIFY_SOCKET");
    EXPECT_EQ(manager.receive(), "READY=1\nSTATUS=Serving at " + server.socketPath());
    EXPECT_EQ(manager.receive(), "STOPPING=1\nSTATUS=Draining connections");
}

TEST_F(ServerTest, ServesOnACallersLoop) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    client.sendLine(setRequest("deviceName", "Den"));
    std::optional<std::string> line;
    serveUntil(server, [&] { return (line = client.receiveLine(0ms)).has_value(); });
    EXPECT_EQ(line, firstEvent("deviceName", "TV", "Den"));
    server.stop();
    serveUntil(server, [&] { return !server.isRunning(); });
    EXPECT_EQ(client.receiveLine(), std::nullopt);
    EXPECT_TRUE(client.closedByPeer());
    EXPECT_EQ(server.timeout(), std::nullopt);
    server.process();
}

TEST_F(ServerTest, SendsFramesQueuedBetweenTurnsOfACallersLoop) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    client.sendLine(R"({"type":18,"messageId":"m"})");
    serveUntil(server, [&] { return client.receiveLine(0ms).has_value(); });
    serveUntil(server, [&] { return server.timeout() != 0ms; });
    constexpr std::size_t events = 20;
    server.perform([&] {
        for (std::size_t number = 0; number < events; ++number) {
            handler->setSetting("captionsStyles", std::to_string(number) + std::string(30000, 'x'));
        }
    });
    // More than the kernel takes: the rest waits until the client reads.
    EXPECT_EQ(server.timeout(), 0ms);
    std::size_t received = 0;
    serveUntil(server, [&] {
        while (client.receiveLine(0ms)) {
            ++received;
        }
        return received == events;
    });
}

TEST_F(ServerTest, ASecondStopEndsTheGracePeriodOfAClientThatDoesNotRead) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    const TestSupport::LineClient stuck(server.socketPath());
    serveUntil(server, [&] {
        return server.metricsText().find("settings_host_clients{door=\"socket\"} 1") != std::string::npos;
    });
    server.perform([&] {
        for (int number = 0; number < 20; ++number) {
            handler->setSetting("captionsStyles", std::to_string(number) + std::string(30000, 'x'));
        }
    });
    server.stop();
    server.process();
    EXPECT_TRUE(server.isRunning()) << "the client may still read";
    server.stop();
    server.process();
    EXPECT_FALSE(server.isRunning());
}

TEST_F(ServerTest, BacksTheStorageUp) {
    ServerOptions chosen = options();
    chosen.backups.firstCheck = 1ms;
    Server server(std::move(chosen));
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    handler->setSetting("deviceName", "Den");
    server.start();
    log.take();
    serveUntil(server, [&] { return std::filesystem::exists(database() + ".backup.1"); });
    EXPECT_EQ(log.take(), std::vector<std::string>{"1 settings-host:database backed up"});
}

TEST_F(ServerTest, MayBeLeftAloneAtAnyTime) {
    const Server onlyMade(options());
    ServerOptions other = options();
    other.socketPath = folder / "run/other.sock";
    other.listen = "127.0.0.1:0";
    other.backups.firstCheck = 0ms;
    Server started(std::move(other));
    auto observation = started.observeAll([](const ObservedSetting&) {});
    {
        Storage storage(database());
        const auto handler = handlerOf(started, storage);
        started.start();
        started.process();
        started.post([] { FAIL() << "after the end"; });
    }
    observation = Observation();
}

TEST_F(ServerTest, PagesKeysAndCookiesAreMadeOfTheClockAndRandomnessThatWereGiven) {
    ServerOptions chosen = options();
    std::filesystem::create_directories(folder / "pages");
    std::ofstream(folder / "pages/index.html") << "the page";
    chosen.pagesFolder = folder / "pages";
    chosen.listen = "127.0.0.1:0";
    Server server(std::move(chosen));
    EXPECT_EQ(server.pageAddress(), "");
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    const std::string text = server.start();
    const std::string port = std::to_string(portOf(server));
    const std::string key(16, '\x5a');
    std::string hexadecimalKey;
    for (int number = 0; number < 16; ++number) {
        hexadecimalKey += "5a";
    }
    EXPECT_EQ(server.pageAddress(), "http://127.0.0.1:" + port + "/?key=" + hexadecimalKey);
    EXPECT_EQ(text, server.pageAddress() + " socket: " + server.socketPath());
    TestSupport::HttpResponse page;
    server.startThread();
    page = TestSupport::httpGet(portOf(server), "/?key=" + hexadecimalKey);
    EXPECT_EQ(page.body, "the page");
    EXPECT_EQ(page.headers["set-cookie"].rfind("settings-" + port + "=1700000000.", 0), 0U)
        << page.headers["set-cookie"];
    const auto health = TestSupport::httpGet(portOf(server), "/healthz");
    EXPECT_EQ(health.body.rfind(R"({"status":"ok","version":"1.2.3")", 0), 0U) << health.body;
    server.stop();
    server.join();
}

TEST_F(ServerTest, ANewPageKeyIsStoredFirst) {
    ServerOptions chosen = options();
    chosen.listen = "127.0.0.1:0";
    char next = 'a';
    chosen.environment.random = [&](std::size_t count) { return std::string(count, next++); };
    Server server(std::move(chosen));
    EXPECT_EQ(server.renewPageKey(), std::nullopt) << "not served yet";
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    const std::string before = server.pageAddress();
    log.take();
    const auto renewed = server.renewPageKey();
    ASSERT_TRUE(renewed);
    EXPECT_NE(*renewed, before);
    EXPECT_EQ(*renewed, server.pageAddress());
    EXPECT_EQ(log.take(), std::vector<std::string>{"1 settings-host:replaced the page key"});
    // "a" names the run; "b" to "e" are of the key and secret that were not made, and of those of the start; "g" is the
    // second secret.
    std::string secret;
    for (int number = 0; number < 32; ++number) {
        secret += "67";
    }
    EXPECT_EQ(storage.state("web")->load("cookieSecret"), secret);
}

TEST_F(ServerTest, AnEndpointHasAWebSocketAtItsName) {
    ServerOptions chosen = options();
    chosen.listen = "127.0.0.1:0";
    chosen.environment.random = [](std::size_t count) { return std::string(count, 'k'); };
    const std::string key = "?key=6b6b6b6b6b6b6b6b6b6b6b6b6b6b6b6b";
    ListenerRecording clients;
    std::string received;
    clients.onFrame = [&](const auto& client, const std::string& frame) {
        received = std::string(originName(client->origin())) + " " + frame;
        client->send(std::make_shared<const std::string>("own reply"));
    };
    Server server(std::move(chosen));
    server.addEndpoint({"remote", folder / "run/remote.sock", Origin::SOCKET}, clients);
    server.start();
    server.startThread();
    TestSupport::WebSocket client(portOf(server), "/remote" + key, "remote.v1");
    client.sendText("own request");
    const auto reply = client.receive();
    EXPECT_EQ(reply ? reply->payload : "nothing", "own reply");
    EXPECT_EQ(received, "page own request");
    const auto refusal =
        TestSupport::httpGet(portOf(server), "/device" + key,
                             {"Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Version: 13",
                              "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==", "Sec-WebSocket-Protocol: device.v1"});
    EXPECT_EQ(refusal.body,
              "WebSockets are at /settings with subprotocol settings.v1 and at /remote with subprotocol remote.v1.\n");
    server.stop();
    server.join();
}

TEST_F(ServerTest, RefusesAUnixSocketWithoutAPath) {
    const auto forget = [&] {
        ServerOptions chosen = options();
        chosen.socketPath = ServerOptions().socketPath;
        const Server refused(std::move(chosen));
    };
    EXPECT_THROW(forget(), ListenerError);
    EXPECT_EQ(errorOf(forget), "no path is set for the Unix socket of 'settings'");
    Server server(options());
    ListenerRecording clients;
    Endpoint endpoint;
    endpoint.name = "remote";
    EXPECT_THROW(server.addEndpoint(endpoint, clients), ListenerError);
    EXPECT_EQ(errorOf([&] { server.addEndpoint(endpoint, clients); }),
              "no path is set for the Unix socket of 'remote'");
}

TEST_F(ServerTest, AnEndpointHasFramesOfItsOwn) {
    Server server(options());
    ListenerRecording clients;
    server.addEndpoint({"device", folder / "run/device.sock", Origin::DEVICE}, clients);
    for (const auto* name : {"", "settings", "web", "device", "Device", "a/b"}) {
        EXPECT_EQ(errorOf([&] {
                      server.addEndpoint({name, folder / "run/x.sock", Origin::DEVICE}, clients);
                  }),
                  "an endpoint cannot be named '" + std::string(name) + "'");
    }
    Storage storage(database());
    server.watch(storage);
    server.start();
    std::string received;
    clients.onFrame = [&](const auto& client, const std::string& frame) {
        received = frame;
        client->send(std::make_shared<const std::string>("own reply"));
    };
    TestSupport::LineClient client(folder / "run/device.sock");
    client.sendLine("own request");
    std::optional<std::string> line;
    serveUntil(server, [&] { return (line = client.receiveLine(0ms)).has_value(); });
    EXPECT_EQ(received, "own request");
    EXPECT_EQ(line, "own reply");
    const auto folders = server.foldersInUse();
    EXPECT_EQ(folders.changed, std::vector<std::string>{folder / "state"});
    EXPECT_EQ(folders.cleared, (std::vector<std::string>{folder / "run", folder / "run"}));
    client.close();
    server.stop();
    serveUntil(server, [&] { return !server.isRunning(); });
}

TEST_F(ServerTest, ReportsWhatCannotBeServedBeforeAnythingIsChanged) {
    const auto errorWith = [&](const std::function<void(ServerOptions&)>& change) {
        return errorOf([&] {
            ServerOptions chosen = options();
            change(chosen);
            const Server server(std::move(chosen));
        });
    };
    EXPECT_NE(errorWith([](ServerOptions& chosen) { chosen.listen = "10.0.0.1:80"; }).find("10.0.0.1"),
              std::string::npos);
    EXPECT_EQ(errorWith([](ServerOptions& chosen) { chosen.allowedOrigin = "x"; }),
              "'x' is not an origin such as http://localhost:5173");
    EXPECT_NE(errorWith([&](ServerOptions& chosen) {
                  chosen.listen = "127.0.0.1:0";
                  chosen.pagesFolder = folder / "none";
              }).find("cannot read the pages' folder"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "run"));
    const Server first(options());
    EXPECT_NE(errorWith([](ServerOptions&) {}).find("another host listens at"), std::string::npos);
}

TEST_F(ServerTest, HealthAndMetricsAreThoseOfTheWatchedStorage) {
    Server server(options());
    EXPECT_EQ(server.healthText().rfind(R"({"status":"not-serving","version":"1.2.3",)", 0), 0U) << server.healthText();
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    handler->setSetting("deviceName", "Den");
    EXPECT_NE(server.healthText().find(R"("storage":{"writable":true,"keys":1,"failures":0})"), std::string::npos)
        << server.healthText();
    EXPECT_NE(server.metricsText().find("settings_host_storage_seconds_count{operation=\"write\"} 1"),
              std::string::npos);
}

TEST_F(ServerTest, CreatesNoHandlerWithoutItsCollaborators) {
    Server server(options());
    Storage storage(database());
    EXPECT_THROW(server.createHandler(storage, nullptr, launcher, device), std::invalid_argument);
}

TEST(EnvironmentTest, RandomBytesHaveTheRequestedLengthAndAreNeverTheSame) {
    std::set<std::string> seen;
    for (int round = 0; round < 100; ++round) {
        EXPECT_EQ(seen.emplace(Environment().random(16)).first->size(), 16U);
    }
    EXPECT_EQ(seen.size(), 100U);
}

}  // namespace SettingsHandlerKit
