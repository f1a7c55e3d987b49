#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/server/ServerFixture.h"
#include "support/NotificationSocket.h"

namespace SettingsHandlerKit {

using namespace std::chrono_literals;

/// A server that another one follows, and what else an owner puts around one.
class HandOverTest : public ServerFixture {};

TEST_F(HandOverTest, ClientsThatConnectMeanwhileAreServedByTheNextServer) {
    TestSupport::NotificationSocket manager(folder / "notify");
    ::setenv("NOTIFY_SOCKET", (folder / "notify").c_str(), 1);
    const auto chosen = [this](PassedSockets sockets) {
        auto made = options();
        made.listen = "127.0.0.1:0";
        made.sockets = std::move(sockets);
        return made;
    };
    std::string address;
    PassedSockets sockets;
    {
        Server first(chosen({}));
        EXPECT_FALSE(first.handOver().take("settings")) << "it does not serve yet";
        first.start();
        address = first.pageAddress();
        sockets = first.handOver();
        first.run();
        EXPECT_FALSE(first.isRunning());
    }
    TestSupport::LineClient early(folder / "run/settings.sock");
    early.sendLine(R"({"messageId":"h","hello":{}})");
    {
        Server next(chosen(std::move(sockets)));
        EXPECT_EQ(next.socketPath(), folder / "run/settings.sock");
        next.start();
        EXPECT_EQ(next.pageAddress(), address) << "the port; the key is not random here";
        next.post([&] { next.stop(); });
        next.run();
        EXPECT_NE(early.receiveLine().value_or("").find("hello"), std::string::npos);
    }
    ::unsetenv("NOTIFY_SOCKET");
    EXPECT_FALSE(std::filesystem::exists(folder / "run/settings.sock")) << "the last one removes the file";
    const std::string ready = "READY=1\nSTATUS=Serving at " + (folder / "run/settings.sock") + " and " +
                              address.substr(7, address.find("/?") - 7);
    EXPECT_EQ(manager.receive(), ready);
    const std::string reloading = manager.receive().value_or("");
    EXPECT_EQ(reloading.rfind("RELOADING=1\nMONOTONIC_USEC=", 0), 0U) << reloading;
    EXPECT_NE(reloading.find("\nSTATUS=Draining connections"), std::string::npos);
    EXPECT_EQ(manager.receive(), ready);
    EXPECT_EQ(manager.receive(), "STOPPING=1\nSTATUS=Draining connections");
}

TEST_F(HandOverTest, AtTheDescriptorLimitTheSocketsAreHandedOver) {
    auto chosen = options();
    chosen.listen = "127.0.0.1:0";
    Server server(std::move(chosen));
    server.start();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit tight{128, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
    std::vector<Descriptor> all;
    do {
        all.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    } while (all.back().get() >= 0);
    auto sockets = server.handOver();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    for (const auto* const name : {"settings", "web"}) {
        EXPECT_GE(sockets.take(name).value_or(Descriptor()).get(), 0) << name;
    }
    all.clear();
    server.run();
}

TEST_F(HandOverTest, ASocketThatNobodyTakesIsClosed) {
    Server server(options());
    server.start();
    server.handOver();
    server.run();
    EXPECT_THROW(TestSupport::LineClient(folder / "run/settings.sock"), std::exception);
}

TEST_F(HandOverTest, AServerThatIsToStopHandsNothingOver) {
    Server server(options());
    server.start();
    std::vector<bool> isEmpty;
    server.stop();
    server.post([&] { isEmpty.push_back(server.handOver().isEmpty()); });
    server.run();
    EXPECT_EQ(isEmpty, std::vector<bool>{true});
    Server another(options());
    another.start();
    EXPECT_FALSE(another.handOver().isEmpty());
    EXPECT_TRUE(another.handOver().isEmpty()) << "they are handed over already";
    another.run();
}

TEST_F(HandOverTest, ActionsRunInTheOrderOfTheirTimes) {
    Server server(options());
    server.start();
    std::vector<int> done;
    server.postLater(3ms, [&] { done.push_back(3); });
    server.postLater(1ms, [&] {
        done.push_back(1);
        server.postLater(0ms, [&] { done.push_back(0); });
        throw std::runtime_error("no");
    });
    server.postLater(3ms, [&] { done.push_back(4); });
    log.take();
    serveUntil(server, [&] { return done.size() == 4; });
    // The second one may be due with the first.
    EXPECT_EQ(done.front(), 1);
    EXPECT_LT(std::find(done.begin(), done.end(), 3), std::find(done.begin(), done.end(), 4));
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 settings-host:a posted action failed: no"});
    server.postLater(std::chrono::hours(1), [&] { done.push_back(5); });
    server.stop();
    serveUntil(server, [&] { return !server.isRunning(); });
    EXPECT_EQ(done.size(), 4U) << "it does not wait for them";
}

TEST_F(HandOverTest, WhatIsBetweenHearsOfClientsInPlaceOfTheServer) {
    struct Between : ClientListener {
        explicit Between(std::shared_ptr<ClientListener> itsServer) : server(std::move(itsServer)) {}
        void connected(const std::shared_ptr<Client>& client) override {
            heard.emplace_back("connected");
            server->connected(client);
        }
        void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override {
            heard.emplace_back("disconnected");
            server->disconnected(client, reason);
        }
        void received(const std::shared_ptr<Client>& client, const std::string& frame) override {
            heard.push_back(frame);
            frame == "cut" ? client->close() : server->received(client, frame);
        }
        void oversized(const std::shared_ptr<Client>& client) override { server->oversized(client); }
        void refused(Origin origin) override { server->refused(origin); }

        std::shared_ptr<ClientListener> server;
        std::vector<std::string> heard;
    };
    std::shared_ptr<Between> between;
    auto chosen = options();
    chosen.between = [&](std::shared_ptr<ClientListener> server) {
        return between = std::make_shared<Between>(std::move(server));
    };
    Server server(std::move(chosen));
    EXPECT_EQ(server.clients(), between);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    const std::string hello = R"({"messageId":"h","hello":{}})";
    client.sendLine(hello);
    std::optional<std::string> line;
    serveUntil(server, [&] { return (line = client.receiveLine(0ms)).has_value(); });
    EXPECT_NE(line->find("hello"), std::string::npos);
    client.sendLine("cut");
    serveUntil(server, [&] { return between->heard.size() == 4; });
    EXPECT_EQ(between->heard, (std::vector<std::string>{"connected", hello, "cut", "disconnected"}));
    EXPECT_EQ(client.receiveLine(), std::nullopt);
    EXPECT_TRUE(client.closedByPeer());
}

TEST_F(HandOverTest, HealthHasTheMembersThatWereAdded) {
    Server server(options());
    std::vector<std::string> texts;
    server.addToHealth("faults", [&] { return texts; });
    server.start();
    EXPECT_EQ(server.healthText().find("faults"), std::string::npos);
    texts = {"storage-full"};
    EXPECT_NE(server.healthText().find(R"(,"faults":["storage-full"]})"), std::string::npos) << server.healthText();
}

}  // namespace SettingsHandlerKit
