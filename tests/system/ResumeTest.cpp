#include <filesystem>

#include "WebHostFixture.h"

namespace SystemTests {

/// A client that comes back at each of the two listeners of the shipped program.
class HostResume : public HostWeb {
protected:
    /// Connections of the same kind, one after the other. Frames are those of one connection.
    struct Connection {
        virtual ~Connection() = default;
        virtual void connect() = 0;
        virtual void disconnect() = 0;
        virtual void send(const std::string& frame) = 0;
        virtual std::optional<std::string> receive() = 0;
    };

    struct SocketConnection : Connection {
        explicit SocketConnection(HostResume& itsTest) : test(itsTest) {}
        void connect() override { client = std::make_unique<WireTests::HostClient>(test.socket()); }
        void disconnect() override { client.reset(); }
        void send(const std::string& frame) override { client->sendLine(frame); }
        std::optional<std::string> receive() override { return client->receiveLine(); }

        HostResume& test;
        std::unique_ptr<WireTests::HostClient> client;
    };

    struct PageConnection : Connection {
        explicit PageConnection(HostResume& itsTest) : test(itsTest) {}
        void connect() override { client = test.page(); }
        void disconnect() override { client.reset(); }
        void send(const std::string& frame) override { client->sendText(frame); }
        std::optional<std::string> receive() override { return client->receiveText(); }

        HostResume& test;
        std::unique_ptr<WireTests::HostWebSocket> client;
    };

    /// What comes up to the reply to a hello with these members: "Den Attic", and then the reply.
    static std::pair<std::string, rapidjson::Document> hello(Connection& connection, const std::string& members) {
        connection.send(R"({"messageId":"h","hello":{)" + members + "}}");
        std::string values;
        for (;;) {
            const auto text = connection.receive();
            if (!text) {
                ADD_FAILURE() << "no reply";
                return {values, rapidjson::Document(rapidjson::kObjectType)};
            }
            auto frame = parsed(*text);
            if (frame.HasMember("hello")) {
                return {values, std::move(frame)};
            }
            if (frame.HasMember("payload")) {
                values += std::string(values.empty() ? "" : " ") + frame["payload"]["to"].GetString();
            }
        }
    }

    static std::string resume(const std::string& run, unsigned sequence) {
        return R"("resume":{"run":")" + run + R"(","sequence":)" + std::to_string(sequence) + "}";
    }
};

TEST_F(HostResume, MissesNothingOverAReconnectionAndReadsAnewAfterARestart) {
    startWeb();
    SocketConnection socketConnection(*this);
    PageConnection pageConnection(*this);
    unsigned seen = 0;
    std::string run;
    for (Connection* const connection :
         {static_cast<Connection*>(&socketConnection), static_cast<Connection*>(&pageConnection)}) {
        connection->connect();
        const auto first = hello(*connection, R"("client":"remote")");
        EXPECT_EQ(first.first, "");
        EXPECT_FALSE(first.second["hello"].HasMember("missed"));
        EXPECT_EQ(first.second["hello"]["sequence"].GetUint(), seen);
        run = first.second["hello"]["run"].GetString();
        connection->disconnect();
        set("deviceName", "\"Den\"", seen + 1);
        const bool enable = seen == 0;
        EXPECT_EQ(device(std::string(R"({"command":"captions","enabled":)") + (enable ? "true}" : "false}")),
                  R"({"ok":true})");
        set("deviceName", "\"Attic\"", seen + 2);
        connection->connect();
        const auto second = hello(*connection, resume(run, seen));
        EXPECT_EQ(second.first, "Den Attic");
        seen += 2;
        EXPECT_TRUE(second.second ==
                    parsed(R"({"messageId":"h","hello":{"version":"1.1.0","run":")" + run + R"(","sequence":)" +
                           std::to_string(seen) + R"(,"missed":false,"reread":["captionsEnabled"]}})"));
        connection->disconnect();
    }
    disconnect();
    stop();
    startWeb();
    for (Connection* const connection :
         {static_cast<Connection*>(&socketConnection), static_cast<Connection*>(&pageConnection)}) {
        connection->connect();
        const auto anew = hello(*connection, resume(run, seen));
        EXPECT_EQ(anew.first, "");
        EXPECT_STRNE(anew.second["hello"]["run"].GetString(), run.c_str());
        EXPECT_TRUE(anew.second["hello"]["missed"].GetBool());
        EXPECT_FALSE(anew.second["hello"].HasMember("reread"));
        EXPECT_EQ(anew.second["hello"]["sequence"].GetUint(), 0U);
        connection->disconnect();
    }
}

TEST_F(HostResume, TheAdministrationWorksInsideTheSandbox) {
    startWeb();
    const std::string address = ask(R"({"messageId":"a","page":{}})")["page"]["address"].GetString();
    EXPECT_EQ(address, "http://127.0.0.1:" + std::to_string(port) + "/?key=" + key);
    const auto open = page();
    const std::string renewed = ask(R"({"messageId":"a","page":{"newKey":true}})")["page"]["address"].GetString();
    EXPECT_NE(renewed, address);
    const auto closing = open->receive();
    ASSERT_TRUE(closing);
    EXPECT_EQ(closing->closeStatus(), 4401);
    const std::string backup = ask(R"({"messageId":"a","backup":{}})")["backup"]["file"].GetString();
    EXPECT_EQ(backup, database() + ".backup.1");
    EXPECT_TRUE(std::filesystem::exists(backup));
    const auto reply = ask(R"({"messageId":"a","status":{}})");
    const auto& status = reply["status"];
    EXPECT_STREQ(status["health"]["status"].GetString(), "ok");
    ASSERT_TRUE(status.HasMember("disk"));
    EXPECT_EQ(status["disk"]["total"].GetUint64(), std::filesystem::space(database()).capacity);
    EXPECT_GT(status["now"].GetInt64(), 1700000000000);
}

TEST_F(HostResume, ThePagesKeyIsNotTraced) {
    startWeb();
    WireTests::HostClient watcher(deviceSocket());
    watcher.sendLine(R"({"command":"trace","enabled":true})");
    EXPECT_EQ(watcher.receiveLine(), R"({"ok":true})");
    ask(R"({"messageId":"a","page":{}})");
    get("timezone");
    std::string traced;
    while (!contains(traced, "timezone")) {
        traced += watcher.receiveLine().value_or("timezone");
    }
    EXPECT_FALSE(contains(traced, key)) << traced;
}

}  // namespace SystemTests
