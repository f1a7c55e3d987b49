#include "RequestsFixture.h"

using namespace SettingsClient;
using namespace ClientTests;

namespace {

class ClientChanges : public ClientRequests {
protected:
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
        EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id(3) + R"(","payload":{"settings":["k"]}})");
        host.sendLine(reply(7, 3, R"({"settings":)" + settings + "}"));
        return answer.get();
    }
};

/// What follows each `mark`, up to `end`.
Lines textsAfter(const std::string& mark, const std::string& frame, char end) {
    Lines texts;
    for (std::size_t place = frame.find(mark); place != std::string::npos; place = frame.find(mark, place)) {
        place += mark.size();
        texts.push_back(frame.substr(place, frame.find(end, place) - place));
    }
    return texts;
}

/// Answers each request of the batch. Returns: how many it has.
std::size_t answerAll(const Peer& host, const std::string& batch) {
    const Lines ids = textsAfter(R"("messageId":")", batch, '"');
    for (const auto& id : ids) {
        host.sendLine(R"({"type":24,"messageId":")" + id + R"(","payload":{"outcome":"unchanged"}})");
    }
    return ids.size();
}

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

TEST_F(ClientChanges, AskForAnAnswerAndNoticeOnceThatTheHostGivesOne) {
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

TEST_F(ClientChanges, TellEventsBeforeTheAnswerComesIfAsked) {
    std::promise<std::string> told;
    client.onEvent([&](const auto& event) { told.set_value(event.to); }, true);
    auto answer = start([this] { return client.set("k", "v", 5); });
    const Peer host = serve();
    host.sendLine(event(1, "k", "u", "v"));
    auto value = told.get_future();
    ASSERT_EQ(value.wait_for(waitTimeout), std::future_status::ready);
    EXPECT_EQ(value.get(), "v");
    host.sendLine(reply(24, 1, R"({"outcome":"changed","settingDBId":"k","value":"v"})"));
    host.sendLine(selected(2));
    EXPECT_EQ(brief(answer.get()), "k changed from u now v");
}

TEST_F(ClientChanges, TellEventsLaterThatComeDuringARead) {
    client.onEvent([&](const auto& event) { record.push_back(event.to); }, true);
    auto values = start([this] { return client.get(); });
    const Peer host = serve();
    host.sendLine(event(1, "k", "u", "v"));
    host.sendLine(reply(7, 1, R"({"settings":{"k":"v"}})"));
    values.get();
    EXPECT_EQ(record, Lines());
    client.process();
    EXPECT_EQ(record, Lines{"v"});
}

TEST_F(ClientChanges, CarryTheNameOfTheClientThatTheyAreFor) {
    auto done = start([this] {
        client.actFor(":1.42 player");
        client.set("k", "v", 5);
        client.logOut();
        client.actFor("");
        client.openSettings();
    });
    Peer host = serve();
    std::string request = setRequest(1, "k", "v", "5");
    request.insert(request.find(R"(,"payload")"), R"(,"client":":1.42 player")");
    EXPECT_EQ(host.receiveLine(), request);
    EXPECT_EQ(host.receiveLine(), bare(18, 2));
    host.sendLine(reply(24, 1, R"({"outcome":"unchanged"})"));
    host.sendLine(selected(2));
    EXPECT_EQ(host.receiveLine(), bare(22, 3, R"(,"answer":true,"client":":1.42 player")"));
    host.sendLine(reply(22, 3, R"({"outcome":"done"})"));
    EXPECT_EQ(host.receiveLine(), bare(19, 4, R"(,"answer":true)"));
    host.sendLine(reply(19, 4, R"({"outcome":"done"})"));
    done.get();
}

TEST_F(ClientChanges, AskAgainOnANewConnectionWhetherTheHostAnswers) {
    EXPECT_EQ(answerTo(R"({"outcome":"unchanged"})").outcome, Outcome::UNCHANGED);
    auto answer = start([this] {
        errorOf<ConnectionError>([this] { client.get(); });
        return client.set("k", "v", 5);
    });
    Peer host = listener->accept();
    host.receiveLine();
    EXPECT_EQ(host.receiveLine(), setRequest(4, "k", "v", "5"));
    EXPECT_EQ(host.receiveLine(), bare(18, 5));
    host.sendLine(refusal("unknown-type"));
    host.sendLine(selected(5));
    host.receiveLine();
    host.sendLine(reply(7, 6, R"({"settings":{"k":"v"}})"));
    EXPECT_EQ(answer.get().outcome, Outcome::UNCHANGED);
}

TEST_F(ClientChanges, AreNotTakenForRefusedWhenTheRequestAfterThemIs) {
    auto answers = start([this] { return std::vector<Answer>{client.set("k", "v", 5), client.set("k", "w", 6)}; });
    Peer host = serve();
    host.receiveLine();
    host.receiveLine();
    host.sendLine(reply(24, 1, R"({"outcome":"unchanged"})"));
    host.sendLine(refusal("busy"));
    host.receiveLine();
    host.sendLine(reply(24, 3, R"({"outcome":"unchanged"})"));
    EXPECT_EQ(brief(answers.get()), Lines(2, "k unchanged"));
}

TEST_F(ClientChanges, ReturnTheAnswer) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"unchanged","settingDBId":"k","value":"v"})")), "k unchanged now v");
}

TEST_F(ClientChanges, ReturnWhereAChangeWasNotApplied) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"changed","settingDBId":"k","value":"u","applied":false})",
                             {event(1, "k", "u", "v")})),
              "k changed from u now u not applied");
}

TEST_F(ClientChanges, ReturnTheReasonOfARefusal) {
    EXPECT_EQ(
        brief(answerTo(
            R"({"outcome":"refused","reason":"stale","message":"too late","settingDBId":"k","value":"u","newest":9})")),
        "k refused stale: too late now u newest 9");
}

TEST_F(ClientChanges, ReturnARefusalOfTheFrame) {
    auto answer = start([this] { return client.set("k", "v"); });
    const Peer host = serve();
    host.sendLine(refusal("too-large"));
    host.sendLine(selected(2));
    EXPECT_EQ(brief(answer.get()), "k refused too-large: no");
}

TEST_F(ClientChanges, TakeTheOldValueOfTheLastEventBeforeTheAnswer) {
    EXPECT_EQ(brief(answerTo(R"({"outcome":"changed","value":"v"})",
                             {event(1, "k", "t", "u"), event(2, "k", "u", "v"), event(3, "other", "x", "v")})),
              "k changed from u now v");
}

TEST_F(ClientChanges, RejectAnAnswerWithoutOutcome) {
    for (const std::string payload : {"{}", R"({"outcome":"odd"})", R"({"outcome":1})", "null"}) {
        EXPECT_EQ(errorOf<UnexpectedResponse>([&] { answerTo(payload); }),
                  "unexpected response: not a settings-host (malformed frame)");
        startAnew();
    }
}

TEST_F(ClientChanges, FindTheResultWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"v"})", {event(1, "k", "u", "v")})), "k changed from u now v");
}

TEST_F(ClientChanges, FindTheResultWithoutAnAnswerWhenAnotherClientSetsTheValueAgain) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"w"})", {event(1, "k", "u", "v"), event(2, "k", "v", "w")})),
              "k changed from u now w");
}

TEST_F(ClientChanges, FindThatAValueIsUnchangedWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"v"})")), "k unchanged now v");
}

TEST_F(ClientChanges, FindARefusalWithoutAnAnswer) {
    EXPECT_EQ(brief(conclusionFor(R"({"k":"u"})", {event(1, "other", "u", "v"), event(2, "k", "v", "u")})),
              "k refused now u");
}

TEST_F(ClientChanges, AreNeverOlderThanTheNewestEvent) {
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

TEST_F(ClientChanges, SendABatch) {
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

TEST_F(ClientChanges, SendMoreThanABatchTakesAsSeveral) {
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
        sizes.push_back(answerAll(host, frame));
        sent += sizes.back();
        number += static_cast<int>(sizes.back()) + 1;
        if (sizes.size() == 1) {
            // The first of the second batch has its id before the first batch is sent.
            host.sendLine(selected(number + 1));
        }
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{64, 2, 1}));
    EXPECT_EQ(brief(answers.get()), Lines(67, "k unchanged"));
}

TEST_F(ClientChanges, HaveOneTimestampWhenTheyAreSetTogether) {
    auto answers = start([&] { return client.setAll(std::vector<Assignment>(66, {"k", "v"})); });
    Peer host = serve();
    const std::string first = host.receiveLine();
    host.receiveLine();
    std::string future = event(1, "a", "0", "1");
    future.replace(future.find("1700000000000"), 13, "4102444800000");
    host.sendLine(future);
    answerAll(host, first);
    host.sendLine(selected(66));
    const std::string second = host.receiveLine();
    answerAll(host, second);
    answers.get();
    const Lines timestamps = textsAfter(R"("timestamp":)", first + second, ',');
    EXPECT_EQ(timestamps, Lines(66, timestamps.front()));
}

TEST_F(ClientChanges, ReturnTheRefusalOfABatchForEachOfItsRequests) {
    auto answers = start([this] { return client.setAll({{"a", "1"}, {"b", "2"}}); });
    Peer host = serve();
    host.receiveLine();
    host.sendLine(refusal("too-large"));
    host.sendLine(selected(3));
    EXPECT_EQ(brief(answers.get()), (Lines{"a refused too-large: no", "b refused too-large: no"}));
}

TEST_F(ClientChanges, FindTheResultsOfABatchWithoutAnswers) {
    auto answers = start([this] { return client.setAll({{"a", "1"}, {"b", "2"}}); });
    Peer host = serve();
    host.receiveLine();
    host.receiveLine();
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(selected(3));
    EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id(4) + R"(","payload":{"settings":["a","b"]}})");
    host.sendLine(reply(7, 4, R"({"settings":{"a":"1"}})"));
    EXPECT_EQ(brief(answers.get()), (Lines{"a changed from 0 now 1", "b refused"}));
}

TEST_F(ClientChanges, SendNoEmptyBatch) {
    auto answers = start([this] { return client.setAll({}); });
    Peer host = serve();
    EXPECT_TRUE(answers.get().empty());
    owned.reset();
    EXPECT_TRUE(host.clientCloses());
}

TEST_F(ClientChanges, OpenTheSettingsAndLogOut) {
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

TEST_F(ClientChanges, AreDoneWithoutAnAnswerWhenTheNextOneHasItsReply) {
    auto answer = start([this] { return client.logOut(); });
    const Peer host = serve();
    host.sendLine(selected(2));
    EXPECT_EQ(brief(answer.get()), " done");
}
