#include "RequestsFixture.h"

using namespace SettingsClient;
using namespace ClientTests;
using namespace std::chrono_literals;

TEST_F(ClientRequests, ReadValues) {
    auto values = start([this] { return client.get({"a", "b"}); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id(1) + R"(","payload":{"settings":["a","b"]}})");
    host.sendLine(reply(7, 1, R"({"settings":{"a":"x"}})"));
    EXPECT_EQ(values.get(), (std::map<std::string, std::string>{{"a", "x"}}));
}

TEST_F(ClientRequests, AskWhichAssistantIsSelected) {
    auto isSelected = start([this] { return client.isSelected(); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), bare(18, 1));
    host.sendLine(selected(1));
    EXPECT_TRUE(isSelected.get());
}

TEST_F(ClientRequests, ReadTheHistory) {
    auto events = start([this] {
        client.history();
        return client.history("k", 20);
    });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), query(1, R"("history":{})"));
    host.sendLine(query(1, R"("history":{"events":[]})"));
    EXPECT_EQ(host.receiveLine(), query(2, R"("history":{"settingDBId":"k","limit":20})"));
    host.sendLine(query(2, R"("history":{"events":[)" + event(4, "k", "a", "b") + "," +
                               event(7, "k", "b", "c", R"(,"client":"remote")") + "]}"));
    const auto found = events.get();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].to, "b");
    EXPECT_EQ(found[1].client, "remote");
    EXPECT_EQ(found[1].frame, event(7, "k", "b", "c", R"(,"client":"remote")"));
}

TEST_F(ClientRequests, ReadTheCatalogue) {
    auto settings = start([this] { return client.catalogue(); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), query(1, R"("catalogue":{})"));
    host.sendLine(query(1,
                        R"("catalogue":{"settings":[{"key":"k","number":5,"kind":"choice","values":["A","B"],)"
                        R"("default":"A","owner":"storage","setBy":"anyone","privacy":"personal","description":"D."},)"
                        R"({"key":"l"}]})"));
    const auto found = settings.get();
    ASSERT_EQ(found.size(), 2U);
    const Setting& setting = found[0];
    EXPECT_EQ(setting.key + setting.kind + setting.owner + setting.setBy + setting.privacy + setting.description,
              "kchoicestorageanyonepersonalD.");
    EXPECT_EQ(setting.number, 5);
    EXPECT_EQ(setting.values, (Lines{"A", "B"}));
    EXPECT_EQ(setting.defaultValue, "A");
    EXPECT_EQ(found[1].defaultValue, std::nullopt);
}

TEST_F(ClientRequests, Administrate) {
    auto done = start([this] {
        EXPECT_EQ(client.pageAddress(), std::nullopt);
        EXPECT_EQ(client.pageAddress(true), "http://page");
        EXPECT_EQ(client.backUp(), "/backup");
        EXPECT_EQ(client.status(), R"({"now":1})");
        return errorOf<RequestRefused>([this] { client.backUp(); });
    });
    Peer host = serve();
    const std::pair<std::string, std::string> exchanges[] = {
        {R"("page":{})", R"("page":{})"},
        {R"("page":{"newKey":true})", R"("page":{"address":"http://page"})"},
        {R"("backup":{})", R"("backup":{"file":"/backup"})"},
        {R"("status":{})", R"("status":{ "now": 1})"}};
    int number = 0;
    for (const auto& [sent, answered] : exchanges) {
        EXPECT_EQ(host.receiveLine(), query(++number, sent));
        host.sendLine(query(number, answered));
    }
    host.receiveLine();
    host.sendLine(refusal("not-stored"));
    EXPECT_EQ(done.get(), "the host refused the request: no (not-stored)");
}

TEST_F(ClientRequests, RejectRepliesWithoutTheirMembers) {
    const auto rejects = [this](auto request, const std::string& answer) {
        auto error = start([&] { return errorOf<UnexpectedResponse>(request); });
        Peer host = client.isConnected() ? listener->accept() : serve();
        host.receiveLine();
        host.sendLine(answer);
        EXPECT_EQ(error.get(), "unexpected response: not a settings-host (malformed frame)") << answer;
        startAnew();
    };
    rejects([this] { client.get(); }, reply(7, 1, "{}"));
    rejects([this] { client.isSelected(); }, reply(18, 1, "{}"));
    rejects([this] { client.history(); }, query(1, R"("history":{})"));
    rejects([this] { client.history(); }, query(1, R"("history":{"events":[{}]})"));
    rejects([this] { client.catalogue(); }, query(1, R"("catalogue":{"settings":[1]})"));
    rejects([this] { client.backUp(); }, query(1, R"("backup":{})"));
    rejects([this] { client.status(); }, query(1, R"("status":1)"));
}

TEST_F(ClientRequests, ThrowWhenAHostOfVersion1HasNotWhatTheyNeed) {
    auto errors = start([this] {
        return Lines{errorOf<NotSupported>([this] {
                         client.setAll({{"a", "1"}});
                     }),
                     errorOf<NotSupported>([this] { client.history(); }),
                     errorOf<NotSupported>([this] { client.catalogue(); }),
                     errorOf<NotSupported>([this] { client.pageAddress(); }),
                     errorOf<NotSupported>([this] { client.backUp(); }),
                     errorOf<NotSupported>([this] { client.status(); })};
    });
    Peer host = listener->accept();
    host.receiveLine();
    host.sendLine(refusal("unknown-type"));
    const std::string start = "the host at " + path + " is of version 1.0 and has no ";
    EXPECT_EQ(errors.get(), (Lines{start + "batches", start + "history", start + "catalogue", start + "administration",
                                   start + "administration", start + "administration"}));
    owned.reset();
    EXPECT_TRUE(host.clientCloses());
}

TEST_F(ClientRequests, RejectAHelloThatIsNotWhole) {
    for (const std::string text :
         {R"({"version":"1.1.0","run":"r1"})", R"({"version":"1.1.0","sequence":1})", R"({"run":"r1","sequence":1})",
          R"({"version":"1.1.0","run":"r1","sequence":-1})", "[]"}) {
        auto error = start([this] { return errorOf<UnexpectedResponse>([this] { client.connect(); }); });
        const Peer host = listener->accept();
        host.sendLine(R"({"messageId":")" + id(0) + R"(","hello":)" + text + "}");
        EXPECT_EQ(error.get(), "unexpected response: not a settings-host (malformed frame)") << text;
        startAnew();
    }
}

TEST_F(ClientRequests, ThrowWhenTheHostRefusesTheName) {
    auto error = start([this] { return errorOf<RequestRefused>([this] { client.get(); }); });
    Peer host = listener->accept();
    host.receiveLine();
    host.receiveLine();
    host.sendLine(refusal("bad-request"));
    EXPECT_EQ(error.get(), "the host refused the request: no (bad-request)");
    EXPECT_FALSE(client.isConnected());
}

TEST_F(ClientRequests, ConnectAgainAfterALostConnection) {
    auto error = start([this] { return errorOf<ConnectionError>([this] { client.get(); }); });
    serve().close();
    EXPECT_EQ(error.get(), "the host at " + path + " closed the connection");
    auto isSelected = start([this] { return client.isSelected(); });
    Peer host = listener->accept();
    EXPECT_EQ(host.receiveLine(), hello(resume("r1", 0)));
    host.sendLine(helloAnswer("r1", 0, R"(,"missed":false,"reread":[])"));
    host.sendLine(selected(2));
    EXPECT_TRUE(isSelected.get());
}

TEST_F(ClientRequests, AreNotConfusedWithLateReplies) {
    Client impatient({"kitchen", {{path}}, 50ms});
    EXPECT_EQ(errorOf<ConnectionError>([&] { impatient.get(); }), "the host at " + path + " does not reply");
    EXPECT_FALSE(impatient.isConnected());
    EXPECT_EQ(listener->accept().receiveLine(), hello());
}

TEST_F(ClientRequests, ReportThatThereIsNoHost) {
    listener.reset();
    EXPECT_EQ(errorOf<ConnectionError>([this] { client.connect(); }),
              "cannot reach the host at " + path + ": Connection refused (is settings-host running?)");
}

TEST_F(ClientRequests, WaitForTheAnswerToHelloToKnowTheVersion) {
    auto version = start([this] { return client.wireVersion(); });
    serve();
    EXPECT_EQ(version.get(), "1.1.0");
}
