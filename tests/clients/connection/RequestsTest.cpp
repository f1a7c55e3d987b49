#include "ClientFixture.h"

using namespace SettingsClient;
using namespace ClientTests;
using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

class ClientRequests : public ClientFixture {
protected:
    /// Sends what `request` sends while the host is served by the test.
    template <typename Request>
    auto start(Request request) {
        return std::async(std::launch::async, std::move(request));
    }
    /// The host's end of the connection of the request that was started, its hello answered.
    Peer serve() {
        Peer host = listener->accept();
        EXPECT_EQ(host.receiveLine(), hello());
        host.sendLine(helloAnswer("r1", 0));
        return host;
    }
    static std::string setRequest(int number, const std::string& key, const std::string& value,
                                  const std::string& timestamp) {
        return R"({"type":24,"messageId":")" + id(std::to_string(number)) + R"(","timestamp":)" + timestamp +
               R"(,"answer":true,"payload":{"settingDBId":")" + key + R"(","to":")" + value + R"("}})";
    }
    static std::string bare(int type, int number, const std::string& members = "") {
        return R"({"type":)" + std::to_string(type) + R"(,"messageId":")" + id(std::to_string(number)) + "\"" +
               members + "}";
    }
    static std::string selected(int number) { return reply(18, number, R"({"isOrliaSelectedAsVA":true})"); }
    static std::string query(int number, const std::string& text) {
        return R"({"messageId":")" + id(std::to_string(number)) + R"(",)" + text + "}";
    }
    template <typename Error, typename Action>
    static std::string errorOf(const Action& action) {
        try {
            action();
        } catch (const Error& error) {
            return error.what();
        }
        return "nothing was thrown";
    }
    /// The answer to a request of one setting, to which the host sends `payload`.
    Answer answerTo(const std::string& payload, const Lines& before = {}) {
        auto answer = start([this] { return client.set("k", "v", 5); });
        const Peer host = serve();
        for (const auto& line : before) {
            host.sendLine(line);
        }
        host.sendLine(reply(24, 1, payload));
        host.sendLine(selected(2));
        return answer.get();
    }
    /// The same from a host that sends no answer, but `before`; `settings` are its values.
    Answer conclusionFor(const std::string& settings, const Lines& before = {}) {
        auto answer = start([this] { return client.set("k", "v", 5); });
        Peer host = listener->accept();
        host.receiveLine();
        host.sendLine(refusal("unknown-type"));
        for (const auto& line : before) {
            host.sendLine(line);
        }
        EXPECT_EQ(host.receiveLine(), setRequest(1, "k", "v", "5"));
        EXPECT_EQ(host.receiveLine(), bare(18, 2));
        host.sendLine(selected(2));
        EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id("3") + R"(","payload":{"settings":["k"]}})");
        host.sendLine(reply(7, 3, R"({"settings":)" + settings + "}"));
        return answer.get();
    }
};

std::string brief(const Answer& answer) {
    static constexpr const char* outcomes[] = {"changed", "unchanged", "done", "refused"};
    return answer.key + " " + outcomes[static_cast<int>(answer.outcome)] +
           (answer.reason.empty() ? "" : " " + answer.reason) + (answer.message.empty() ? "" : ": " + answer.message) +
           (answer.from ? " from " + *answer.from : "") + (answer.value ? " now " + *answer.value : "") +
           (answer.applied ? "" : " not applied") + (answer.newest ? " newest " + std::to_string(*answer.newest) : "");
}

Lines brief(const std::vector<Answer>& answers) {
    Lines lines;
    for (const auto& answer : answers) {
        lines.push_back(brief(answer));
    }
    return lines;
}

}  // namespace

TEST_F(ClientRequests, ReadValues) {
    auto values = start([this] { return client.get({"a", "b"}); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id("1") + R"(","payload":{"settings":["a","b"]}})");
    host.sendLine(reply(7, 1, R"({"settings":{"a":"x"}})"));
    EXPECT_EQ(values.get(), (std::map<std::string, std::string>{{"a", "x"}}));
}

TEST_F(ClientRequests, AskForAnAnswerAndNoticeOnceThatTheHostGivesOne) {
    auto answers = start([this] { return std::vector<Answer>{client.set("k", "v", 5), client.set("k", "w", 6)}; });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), setRequest(1, "k", "v", "5"));
    EXPECT_EQ(host.receiveLine(), bare(18, 2));
    host.sendLine(event(1, "k", "u", "v"));
    host.sendLine(reply(24, 1, R"({"outcome":"changed","settingDBId":"k","value":"v"})"));
    host.sendLine(selected(2));
    EXPECT_EQ(host.receiveLine(), setRequest(3, "k", "w", "6"));
    host.sendLine(event(2, "k", "v", "w"));
    host.sendLine(reply(24, 3, R"({"outcome":"changed","settingDBId":"k","value":"w"})"));
    EXPECT_EQ(brief(answers.get()), (Lines{"k changed from u now v", "k changed from v now w"}));
    owned.reset();
    EXPECT_TRUE(host.clientCloses());
}

TEST_F(ClientRequests, ReturnTheAnswer) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"unchanged","settingDBId":"k","value":"v"})")), "k unchanged now v");
}

TEST_F(ClientRequests, ReturnWhereAChangeWasNotApplied) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"changed","settingDBId":"k","value":"u","applied":false})",
                             {event(1, "k", "u", "v")})),
              "k changed from u now u not applied");
}

TEST_F(ClientRequests, ReturnTheReasonOfARefusal) {
    EXPECT_EQ(
        brief(answerTo(
            R"({"outcome":"refused","reason":"stale","message":"too late","settingDBId":"k","value":"u","newest":9})")),
        "k refused stale: too late now u newest 9");
}

TEST_F(ClientRequests, ReturnARefusalOfTheFrame) {
    auto answer = start([this] { return client.set("k", "v"); });
    const Peer host = serve();
    host.sendLine(refusal("too-large"));
    host.sendLine(selected(2));
    EXPECT_EQ(brief(answer.get()), "k refused too-large: no");
}

TEST_F(ClientRequests, TakeTheOldValueOfTheLastEventBeforeTheAnswer) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"changed","value":"v"})",
                             {event(1, "k", "t", "u"), event(2, "k", "u", "v"), event(3, "other", "x", "v")})),
              "k changed from u now v");
}

TEST_F(ClientRequests, RejectAnAnswerWithoutOutcome) {
    for (const std::string payload : {"{}", R"({"outcome":"odd"})", R"({"outcome":1})", "null"}) {
        EXPECT_EQ(errorOf<UnexpectedResponse>([&] { answerTo(payload); }),
                  "unexpected response: not a settings-host (malformed frame)");
        startAnew();
    }
}

TEST_F(ClientRequests, FindTheResultWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"v"})", {event(1, "k", "u", "v")})), "k changed from u now v");
}

TEST_F(ClientRequests, FindTheResultWithoutAnAnswerWhenAnotherClientSetsTheValueAgain) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"w"})", {event(1, "k", "u", "v"), event(2, "k", "v", "w")})),
              "k changed from u now w");
}

TEST_F(ClientRequests, FindThatAValueIsUnchangedWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"v"})")), "k unchanged now v");
}

TEST_F(ClientRequests, FindARefusalWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"u"})", {event(1, "other", "u", "v"), event(2, "k", "v", "u")})),
              "k refused now u");
}

TEST_F(ClientRequests, AreNeverOlderThanTheNewestEvent) {
    auto answer = start([this] {
        client.get();
        return client.set("k", "v");
    });
    Peer host = serve();
    std::string future = event(1, "a", "0", "1");
    future.replace(future.find("1700000000000"), 13, "4102444800000");
    host.sendLine(future);
    host.receiveLine();
    host.sendLine(reply(7, 1, R"({"settings":{}})"));
    EXPECT_EQ(host.receiveLine(), setRequest(2, "k", "v", "4102444800000"));
    host.sendLine(reply(24, 2, R"({"outcome":"unchanged"})"));
    host.sendLine(selected(3));
    EXPECT_TRUE(answer.get().accepted());
}

TEST_F(ClientRequests, SendABatch) {
    auto answers = start([this] { return client.setAll({{"a", "1", 5}, {"b", "2", 6}, {"c", "3", 7}}); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), R"({"batch":[)" + setRequest(1, "a", "1", "5") + "," + setRequest(2, "b", "2", "6") +
                                      "," + setRequest(3, "c", "3", "7") + "]}");
    EXPECT_EQ(host.receiveLine(), bare(18, 4));
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(reply(24, 1, R"({"outcome":"changed","settingDBId":"a","value":"1"})"));
    host.sendLine(refusal("busy", R"(,"index":1)"));
    host.sendLine(reply(24, 3, R"({"outcome":"refused","reason":"read-only","message":"no","settingDBId":"c"})"));
    host.sendLine(selected(4));
    EXPECT_EQ(brief(answers.get()), (Lines{"a changed from 0 now 1", "b refused busy: no", "c refused read-only: no"}));
}

TEST_F(ClientRequests, SendMoreThanABatchTakesAsSeveral) {
    std::vector<Assignment> assignments(65, {"k", "v", 5});
    // 64 KiB with the second of these.
    assignments.push_back({"k", std::string(33000, 'x'), 5});
    assignments.push_back({"k", std::string(33000, 'x'), 5});
    auto answers = start([&] { return client.setAll(assignments); });
    Peer host = serve();
    int number = 0;
    std::size_t sent = 0;
    std::vector<std::size_t> sizes;
    while (sent < assignments.size()) {
        const std::string frame = host.receiveLine();
        EXPECT_LE(frame.size(), 65536U);
        if (sizes.empty()) {
            EXPECT_EQ(host.receiveLine().rfind(R"({"type":18,)", 0), 0U);
        }
        sizes.push_back(0);
        for (std::size_t place = frame.find("kitchen-"); place != std::string::npos;
             place = frame.find("kitchen-", place + 1)) {
            const std::string message = frame.substr(place, frame.find('"', place) - place);
            host.sendLine(R"({"type":24,"messageId":")" + message + R"(","payload":{"outcome":"unchanged"}})");
            ++sizes.back();
            ++sent;
        }
        number += static_cast<int>(sizes.back()) + 1;
        if (sizes.size() == 1) {
            // The first of the second batch has its id before the first batch is sent.
            host.sendLine(selected(number + 1));
        }
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{64, 2, 1}));
    EXPECT_EQ(brief(answers.get()), Lines(67, "k unchanged"));
}

TEST_F(ClientRequests, ReturnTheRefusalOfABatchForEachOfItsRequests) {
    auto answers = start([this] { return client.setAll({{"a", "1"}, {"b", "2"}}); });
    Peer host = serve();
    host.receiveLine();
    host.sendLine(refusal("too-large"));
    host.sendLine(selected(3));
    EXPECT_EQ(brief(answers.get()), (Lines{"a refused too-large: no", "b refused too-large: no"}));
}

TEST_F(ClientRequests, FindTheResultsOfABatchWithoutAnswers) {
    auto answers = start([this] { return client.setAll({{"a", "1"}, {"b", "2"}}); });
    Peer host = serve();
    host.receiveLine();
    host.receiveLine();
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(selected(3));
    EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id("4") + R"(","payload":{"settings":["a","b"]}})");
    host.sendLine(reply(7, 4, R"({"settings":{"a":"1"}})"));
    EXPECT_EQ(brief(answers.get()), (Lines{"a changed from 0 now 1", "b refused"}));
}

TEST_F(ClientRequests, SendNoEmptyBatch) {
    auto answers = start([this] { return client.setAll({}); });
    Peer host = serve();
    EXPECT_TRUE(answers.get().empty());
    owned.reset();
    EXPECT_TRUE(host.clientCloses());
}

TEST_F(ClientRequests, AskWhichAssistantIsSelected) {
    auto isSelected = start([this] { return client.isSelected(); });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), bare(18, 1));
    host.sendLine(selected(1));
    EXPECT_TRUE(isSelected.get());
}

TEST_F(ClientRequests, OpenTheSettingsAndLogOut) {
    auto answers = start([this] { return std::vector<Answer>{client.openSettings(), client.logOut()}; });
    Peer host = serve();
    EXPECT_EQ(host.receiveLine(), bare(19, 1, R"(,"answer":true)"));
    EXPECT_EQ(host.receiveLine(), bare(18, 2));
    host.sendLine(reply(19, 1, R"({"outcome":"done"})"));
    host.sendLine(selected(2));
    EXPECT_EQ(host.receiveLine(), bare(22, 3, R"(,"answer":true)"));
    host.sendLine(reply(22, 3, R"({"outcome":"refused","reason":"not-stored","message":"the disk"})"));
    EXPECT_EQ(brief(answers.get()), (Lines{" done", " refused not-stored: the disk"}));
}

TEST_F(ClientRequests, AreDoneWithoutAnAnswerWhenTheNextOneHasItsReply) {
    auto answer = start([this] { return client.logOut(); });
    const Peer host = serve();
    host.sendLine(selected(2));
    EXPECT_EQ(brief(answer.get()), " done");
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
