#include <filesystem>

#include "kit/server/ServerFixture.h"
#include "kit/support/FaultyDisk.h"
#include "support/Json.h"

namespace SettingsHandlerKit {

namespace {

using TestSupport::parsed;

}  // namespace

/// Frames without a type, as a client of a server sees them.
class ServerQueriesTest : public ServerFixture {
protected:
    /// Sends `frame`. Returns: everything that comes up to the reply or refusal.
    std::vector<std::string> ask(Server& server, TestSupport::LineClient& client, const std::string& frame) {
        client.sendLine(frame);
        std::vector<std::string> received;
        serveUntil(server, [&] {
            while (const auto line = client.receiveLine(std::chrono::milliseconds(0))) {
                received.push_back(*line);
                const auto members = parsed(*line);
                if ((members.HasMember("messageId") && !members.HasMember("sequence")) || members.HasMember("error")) {
                    return true;
                }
            }
            return false;
        });
        return received;
    }

    /// Of one line.
    std::string reply(Server& server, TestSupport::LineClient& client, const std::string& frame) {
        const auto lines = ask(server, client, frame);
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : lines.back();
    }

    static std::string resume(const std::string& run, unsigned long sequence) {
        return R"({"messageId":"h1","hello":{"resume":{"run":")" + run + R"(","sequence":)" + std::to_string(sequence) +
               "}}}";
    }

    /// The name of a run whose bytes are all the same.
    static std::string runOf(const std::string& byte) {
        std::string run;
        for (int number = 0; number < 16; ++number) {
            run += byte;
        }
        return run;
    }

    static std::string hello(const std::string& run, const std::string& rest) {
        return R"({"messageId":"h1","hello":{"version":"1.1.0","run":")" + run + R"(","sequence":)" + rest + "}}";
    }

    /// Options of a server whose random bytes are all this one.
    ServerOptions optionsWith(char random) {
        ServerOptions chosen = options();
        chosen.environment.random = [random](std::size_t count) { return std::string(count, random); };
        return chosen;
    }

    const std::string historyRequest = R"({"messageId":"y1","history":{}})";
    const std::string noEvents = R"({"messageId":"y1","history":{"events":[]}})";
};

TEST_F(ServerQueriesTest, ResumesOverAReconnectionAndNotOverARestart) {
    Storage storage(database());
    {
        Server server(optionsWith('a'));
        const auto handler = handlerOf(server, storage);
        server.start();
        auto client = std::make_unique<TestSupport::LineClient>(server.socketPath());
        const std::string first = firstEvent("deviceName", "TV", "Den");
        EXPECT_EQ(ask(server, *client, setRequest("deviceName", "Den") + "\n" + R"({"messageId":"h1","hello":{}})"),
                  (std::vector<std::string>{first, hello(runOf("61"), "1")}));
        client.reset();
        server.perform([&] { handler->setSetting("deviceName", "Attic"); });
        server.valueObserver()->valueChanged("captionsEnabled");
        client = std::make_unique<TestSupport::LineClient>(server.socketPath());
        const auto missed = ask(server, *client, resume(runOf("61"), 1));
        ASSERT_EQ(missed.size(), 2U);
        EXPECT_EQ(parsed(missed[0])["sequence"].GetInt(), 2);
        EXPECT_STREQ(parsed(missed[0])["payload"]["to"].GetString(), "Attic");
        EXPECT_EQ(missed[1], hello(runOf("61"), R"(2,"missed":false,"reread":["captionsEnabled"])"));
        EXPECT_EQ(reply(server, *client, historyRequest),
                  R"({"messageId":"y1","history":{"events":[)" + first + "," + missed[0] + "]}}");
        server.stop();
        serveUntil(server, [&] { return !server.isRunning(); });
    }
    Server server(optionsWith('b'));
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    EXPECT_EQ(reply(server, client, historyRequest), noEvents) << "of this run alone";
    EXPECT_EQ(reply(server, client, resume(runOf("61"), 0)), hello(runOf("62"), R"(0,"missed":true)"));
    EXPECT_EQ(reply(server, client, resume(runOf("62"), 0)), hello(runOf("62"), R"(0,"missed":false,"reread":[])"));
}

TEST_F(ServerQueriesTest, EveryLogOutEmptiesTheHistory) {
    Server server(optionsWith('a'));
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    const std::vector<std::pair<std::string, std::function<void()>>> ways{
        {"requested", [&] { ask(server, client, R"({"type":22,"messageId":"o","answer":true})"); }},
        {"called", [&] { handler->handleLogOutRequest(); }},
        {"performed", [&] { server.perform([&] { handler->handleLogOutRequest(); }); }},
        {"of the storage", [&] { storage.clearStorage(); }}};
    unsigned long sequence = 0;
    for (const auto& [way, logOut] : ways) {
        handler->setSetting("deviceName", "Secret room");
        ++sequence;
        EXPECT_NE(ask(server, client, historyRequest).back(), noEvents) << way;
        logOut();
        EXPECT_EQ(ask(server, client, historyRequest).back(), noEvents) << way;
        EXPECT_EQ(reply(server, client, resume(runOf("61"), sequence)),
                  hello(runOf("61"), std::to_string(sequence) + R"(,"missed":true)"))
            << way;
    }
}

TEST_F(ServerQueriesTest, ALogOutThatFailsEmptiesItWhenItWasRequested) {
    const auto disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    Server server(optionsWith('a'));
    Storage storage(database(), disk);
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    handler->setSetting("deviceName", "Secret room");
    disk->failFrom(1);
    EXPECT_FALSE(storage.clearStorage());
    EXPECT_NE(ask(server, client, historyRequest).back(), noEvents) << "everything is still there";
    ask(server, client, R"({"type":22,"messageId":"o","answer":true})");
    EXPECT_EQ(ask(server, client, historyRequest).back(), noEvents);
    disk->work();
}

TEST_F(ServerQueriesTest, TheHistoryIsInNoLogAndNoMetric) {
    Server server(optionsWith('a'));
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    handler->setSetting("deviceName", "Secret room");
    log.take();
    EXPECT_NE(ask(server, client, resume(runOf("61"), 0)).front().find("Secret room"), std::string::npos);
    EXPECT_NE(reply(server, client, historyRequest).find("Secret room"), std::string::npos);
    reply(server, client, R"({"messageId":"h2","hello":{"client":"Secret remote"}})");
    reply(server, client, R"({"messageId":"a3","status":{}})");
    EXPECT_EQ(log.take(), std::vector<std::string>());
    EXPECT_EQ(server.metricsText().find("Secret"), std::string::npos);
}

TEST_F(ServerQueriesTest, TheAdministrationWithoutStorageAndPages) {
    Server server(options());
    server.start();
    TestSupport::LineClient client(server.socketPath());
    EXPECT_EQ(reply(server, client, R"({"messageId":"a1","page":{"newKey":true}})"), R"({"messageId":"a1","page":{}})");
    EXPECT_EQ(reply(server, client, R"({"messageId":"a2","backup":{}})"),
              R"({"error":{"code":"not-stored","message":"no backup was made: there is no storage"}})");
    const auto status = parsed(reply(server, client, R"({"messageId":"a3","status":{}})"));
    EXPECT_FALSE(status["status"].HasMember("disk"));
    EXPECT_EQ(status["status"]["newest"].MemberCount(), 0U);
}

TEST_F(ServerQueriesTest, PageTellsAndReplacesTheKey) {
    const auto disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    ServerOptions chosen = options();
    chosen.listen = "127.0.0.1:0";
    char next = 'a';
    chosen.environment.random = [&](std::size_t count) { return std::string(count, next++); };
    Server server(std::move(chosen));
    Storage storage(database(), disk);
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    const auto page = [](const std::string& address) {
        return R"({"messageId":"a1","page":{"address":")" + address + "\"}}";
    };
    const std::string before = server.pageAddress();
    EXPECT_EQ(reply(server, client, R"({"messageId":"a1","page":{}})"), page(before));
    disk->failFrom(1);
    EXPECT_EQ(
        reply(server, client, R"({"messageId":"a1","page":{"newKey":true}})"),
        R"({"error":{"code":"not-stored","message":"the new key could not be stored; the old one stays valid"}})");
    EXPECT_EQ(server.pageAddress(), before);
    disk->work();
    const std::string renewed = reply(server, client, R"({"messageId":"a1","page":{"newKey":true}})");
    EXPECT_NE(server.pageAddress(), before);
    EXPECT_EQ(renewed, page(server.pageAddress()));
}

TEST_F(ServerQueriesTest, BackupMakesOne) {
    const auto disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    Server server(options());
    Storage storage(database(), disk);
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    handler->setSetting("deviceName", "Den");
    disk->failFrom(1);
    EXPECT_EQ(parsed(reply(server, client, R"({"messageId":"a2","backup":{}})"))["error"]["code"], "not-stored");
    EXPECT_FALSE(std::filesystem::exists(database() + ".backup.1"));
    disk->work();
    EXPECT_EQ(reply(server, client, R"({"messageId":"a2","backup":{}})"),
              R"({"messageId":"a2","backup":{"file":")" + storage.file() + ".backup.1\"}}");
    EXPECT_TRUE(std::filesystem::exists(database() + ".backup.1"));
}

TEST_F(ServerQueriesTest, StatusTellsHealthVersionsDiskAndNewestTimestamps) {
    Server server(options());
    Storage storage(database());
    const auto handler = handlerOf(server, storage);
    server.start();
    TestSupport::LineClient client(server.socketPath());
    const auto set = [](const std::string& key, long timestamp) {
        return R"({"type":24,"messageId":"s","answer":true,"timestamp":)" + std::to_string(timestamp) +
               R"(,"payload":{"settingDBId":")" + key + R"(","to":"Den"}})";
    };
    ask(server, client, set("deviceName", 7));
    ask(server, client, set("deviceName", 6));
    ask(server, client, set("unknown", 8));
    ask(server, client, set("unknown too", 9));
    const auto frame = parsed(reply(server, client, R"({"messageId":"a3","status":{}})"));
    const auto& status = frame["status"];
    auto health = parsed(server.healthText());
    health["uptimeSeconds"] = status["health"]["uptimeSeconds"].GetInt();
    EXPECT_TRUE(status["health"] == health) << server.healthText();
    EXPECT_TRUE(status["versions"] == parsed(R"({"host":"1.2.3","wire":"1.1.0"})"));
    EXPECT_EQ(status["disk"]["total"].GetUint64(), std::filesystem::space(database()).capacity);
    EXPECT_LE(status["disk"]["free"].GetUint64(), status["disk"]["total"].GetUint64());
    EXPECT_TRUE(status["newest"] == parsed(R"({"":9,"deviceName":7})"));
    EXPECT_EQ(status["now"].GetInt64(), 1700000000000);
}

}  // namespace SettingsHandlerKit
