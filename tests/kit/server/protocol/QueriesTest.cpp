#include <stdexcept>

#include "SettingsHandlerKit/DatabaseError.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "Utils/Rapidjson.h"
#include "Wire/Catalogue.h"
#include "Wire/FrameInspector.h"
#include "kit/server/protocol/HubFixture.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"

namespace SettingsHandlerKit {

using SettingsHandlerTesting::FakeClient;

namespace {

using Frames = std::vector<std::string>;

/// 16 bytes of 5a.
const std::string run = "5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a5a";

class FakeAdministration : public Administration {
public:
    std::string pageAddress() const override { return address; }
    std::optional<std::string> renewPageKey() override {
        if (!failure.empty()) {
            throw std::runtime_error(failure);
        }
        return renewed;
    }
    std::string backUp() override {
        if (!failure.empty()) {
            throw DatabaseError(failure);
        }
        return "/state/settings.db.backup.1";
    }
    Wire::StatusReply status() override {
        return {R"({"status":"ok"})", "1.2.3", Wire::StatusReply::Disk{1000, 2000}, {}, 1700000000000};
    }

    std::string address = "http://127.0.0.1:8097/?key=old";
    std::optional<std::string> renewed = "http://127.0.0.1:8097/?key=new";
    std::string failure;
};

std::string refusal(const std::string& code, const std::string& message) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(message);
    return R"({"error":{"code":")" + code + R"(","message":)" + buffer.GetString() + "}}";
}

}  // namespace

class QueriesTest : public ::testing::Test {
protected:
    QueriesTest() {
        hub.administer(administration);
        hub.connected(client);
        hub.connected(other);
        hub.registerMessageHandler(22, [this](const std::string&) {
            if (onLogOut) {
                onLogOut();
            }
        });
        traffic->take();
    }

    /// Makes the next event. Returns: its frame.
    std::string event(const std::string& key = "deviceName", const std::string& to = "v") {
        rapidjson::Document payload(rapidjson::kObjectType);
        auto& allocator = payload.GetAllocator();
        payload.AddMember("settingDBId", rapidjson::Value(key, allocator), allocator);
        payload.AddMember("to", rapidjson::Value(to, allocator), allocator);
        hub.sendMessage(25, payload);
        std::string sent = *other->frames.back();
        client->frames.clear();
        other->frames.clear();
        return sent;
    }

    void notice(const std::string& key) {
        hub.valueChanged(key);
        client->frames.clear();
        other->frames.clear();
    }

    Frames ask(const std::string& frame) { return askAs(client, frame); }

    Frames askAs(const std::shared_ptr<FakeClient>& asker, const std::string& frame) {
        hub.received(asker, frame);
        if (asker != other) {
            EXPECT_EQ(other->take(), Frames()) << "to the asker alone";
        }
        return asker->take();
    }

    Frames resume(unsigned long sequence, const std::string& ofRun = run) {
        return ask(R"({"messageId":"h1","hello":{"resume":{"run":")" + ofRun + R"(","sequence":)" +
                   std::to_string(sequence) + "}}}");
    }

    static std::string helloReply(unsigned long sequence, const std::string& more = "") {
        return R"({"messageId":"h1","hello":{"version":"1.1.0","run":")" + run + R"(","sequence":)" +
               std::to_string(sequence) + more + "}}";
    }
    static std::string missed(unsigned long sequence) { return helloReply(sequence, R"(,"missed":true)"); }
    static std::string complete(unsigned long sequence, const std::string& keys = "") {
        return helloReply(sequence, R"(,"missed":false,"reread":[)" + keys + "]");
    }

    Frames history(const std::string& members = "") { return ask(R"({"messageId":"y1","history":{)" + members + "}}"); }
    static Frames historyReply(const std::string& events) {
        return {R"({"messageId":"y1","history":{"events":[)" + events + "]}}"};
    }

    static constexpr std::size_t limit = 500000;

    SettingsHostTests::LogRecording log;
    std::shared_ptr<TrafficRecording> traffic = std::make_shared<TrafficRecording>();
    std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>(limit);
    FakeAdministration administration;
    MessageHub hub{traffic, std::make_shared<RequestContext>(), backlog,
                   Environment{[] { return std::chrono::system_clock::time_point(std::chrono::milliseconds(7)); },
                               [](std::size_t count) { return std::string(count, '\x5a'); }}};
    std::shared_ptr<FakeClient> client = std::make_shared<FakeClient>();
    std::shared_ptr<FakeClient> other = std::make_shared<FakeClient>();
    std::shared_ptr<FakeClient> page = std::make_shared<FakeClient>(Origin::PAGE, ListenerKind::WEB);
    std::function<void()> onLogOut;
};

TEST_F(QueriesTest, HelloTellsVersionRunAndSequence) {
    EXPECT_EQ(ask(R"({"messageId":"h1","hello":{}})"), Frames{helloReply(0)});
    event();
    event();
    EXPECT_EQ(ask(R"({"messageId":"h1","hello":{"later":1}})"), Frames{helloReply(2)}) << "others are ignored";
    EXPECT_EQ(ask(R"({"messageId":"","hello":{"client":"kitchen-remote"}})").at(0).substr(0, 15), R"({"messageId":"")");
}

TEST_F(QueriesTest, HelloNamesTheConnectionUntilTheNextName) {
    hub.registerMessageHandler(24, [&](const std::string&) {
        rapidjson::Document payload(rapidjson::kObjectType);
        hub.sendMessage(25, payload);
    });
    const auto nameOfTheNextEvent = [&] {
        hub.received(client, R"({"type":24})");
        other->take();
        rapidjson::Document sent;
        sent.Parse(client->take().at(0).c_str());
        return std::string(sent.HasMember("client") ? sent["client"].GetString() : "(none)");
    };
    EXPECT_EQ(nameOfTheNextEvent(), "(none)");
    ask(R"({"messageId":"h1","hello":{"client":"kitchen-remote"}})");
    EXPECT_EQ(nameOfTheNextEvent(), "kitchen-remote");
    ask(R"({"messageId":"h1","hello":{}})");
    EXPECT_EQ(nameOfTheNextEvent(), "kitchen-remote");
    ask(R"({"messageId":"h1","hello":{"client":"b","resume":{}}})");
    EXPECT_EQ(nameOfTheNextEvent(), "kitchen-remote") << "nothing is done when it is refused";
    ask(R"({"messageId":"h1","hello":{"client":"c","resume":{"run":"","sequence":0}}})");
    EXPECT_EQ(nameOfTheNextEvent(), "c");
}

TEST_F(QueriesTest, ResumingSendsTheEventsAfterThatOneAndThenTheReply) {
    const std::string first = event("deviceName", "a");
    const std::string second = event("timezone", "b");
    const std::string third = event("deviceName", "c");
    EXPECT_EQ(resume(0), (Frames{first, second, third, complete(3)}));
    EXPECT_EQ(resume(1), (Frames{second, third, complete(3)}));
    EXPECT_EQ(resume(3), Frames{complete(3)});
}

TEST_F(QueriesTest, ResumingTellsTheKeysOfNotices) {
    const std::string first = event();
    notice("timezone");
    notice("captionsEnabled");
    const std::string second = event();
    EXPECT_EQ(resume(0), (Frames{first, second, complete(2, R"("captionsEnabled","timezone")")}));
    EXPECT_EQ(resume(1), (Frames{second, complete(2, R"("captionsEnabled","timezone")")}));
    EXPECT_EQ(resume(2), Frames{complete(2)});
}

TEST_F(QueriesTest, ANoticeWithoutClientsIsRemembered) {
    hub.disconnected(client, DisconnectReason::CLOSED);
    hub.disconnected(other, DisconnectReason::CLOSED);
    hub.valueChanged("timezone");
    hub.connected(client);
    EXPECT_EQ(resume(0), Frames{complete(0, R"("timezone")")});
}

TEST_F(QueriesTest, ResumingSharesTheFramesOfTheEvents) {
    rapidjson::Document payload(rapidjson::kObjectType);
    hub.sendMessage(25, payload);
    const auto sent = client->frames.at(0);
    client->frames.clear();
    hub.received(client, R"({"messageId":"h1","hello":{"resume":{"run":")" + run + R"(","sequence":0}}})");
    EXPECT_EQ(client->frames.at(0), sent);
}

TEST_F(QueriesTest, WhoResumesAnotherRunOrAnUnknownSequenceMissed) {
    event();
    EXPECT_EQ(resume(1, "5a"), Frames{missed(1)});
    EXPECT_EQ(resume(0, ""), Frames{missed(1)});
    EXPECT_EQ(resume(2), Frames{missed(1)}) << "ahead";
    EXPECT_EQ(resume(18446744073709551615U), Frames{missed(1)});
    for (int number = 2; number <= 1025; ++number) {
        event();
    }
    EXPECT_EQ(resume(0), Frames{missed(1025)}) << "event 1 is forgotten";
    EXPECT_EQ(resume(1).size(), 1025U);
}

TEST_F(QueriesTest, ALogOutEmptiesTheHistoryBeforeItIsHandled) {
    event("deviceName", "Secret room");
    onLogOut = [&] {
        EXPECT_EQ(historyReply(""), history());
        throw std::runtime_error("collaborator");
    };
    ask(R"({"type":22})");
    log.take();
    onLogOut = nullptr;
    EXPECT_EQ(history(), historyReply(""));
    EXPECT_EQ(resume(0), Frames{missed(1)});
    EXPECT_EQ(resume(1), Frames{missed(1)}) << "has seen all events, but not the log-out";
    const std::string next = event();
    EXPECT_EQ(history(), historyReply(next));
    EXPECT_EQ(resume(2), Frames{complete(2)});
}

TEST_F(QueriesTest, TheServiceEmptiesTheHistory) {
    event();
    hub.forgetHistory();
    EXPECT_EQ(history(), historyReply(""));
    EXPECT_EQ(resume(1), Frames{missed(1)});
}

TEST_F(QueriesTest, HistoryHoldsTheNewestEventsOldestFirst) {
    EXPECT_EQ(history(), historyReply(""));
    const std::string first = event("deviceName", "a");
    const std::string second = event("timezone", "b");
    notice("captionsEnabled");
    const std::string third = event("deviceName", "c");
    EXPECT_EQ(history(), historyReply(first + "," + second + "," + third));
    EXPECT_EQ(history(R"("limit":2)"), historyReply(second + "," + third));
    EXPECT_EQ(history(R"("limit":1024)"), historyReply(first + "," + second + "," + third));
    EXPECT_EQ(history(R"("settingDBId":"deviceName")"), historyReply(first + "," + third));
    EXPECT_EQ(history(R"("limit":1,"settingDBId":"deviceName","later":[])"), historyReply(third));
    EXPECT_EQ(history(R"("settingDBId":"captionsEnabled")"), historyReply(""));
}

TEST_F(QueriesTest, TheCatalogueIsToldToEveryClient) {
    for (const auto& asker : {client, page}) {
        const auto frames = askAs(asker, R"({"messageId":"c1","catalogue":{}})");
        ASSERT_EQ(frames.size(), 1U);
        rapidjson::Document reply;
        reply.Parse(frames[0].c_str());
        EXPECT_EQ(reply["catalogue"]["settings"].Size(), Wire::catalogue().size());
        EXPECT_STREQ(reply["catalogue"]["settings"][0]["key"].GetString(), "deviceName");
    }
}

TEST_F(QueriesTest, MalformedQueriesAreRefusedAndNothingIsDone) {
    const std::string longName(65, 'x');
    const std::vector<std::pair<std::string, std::string>> faults{
        {R"({"hello":{}})", R"("messageId" must be a string)"},
        {R"({"messageId":1,"hello":{}})", R"("messageId" must be a string)"},
        {R"({"messageId":null,"history":{}})", R"("messageId" must be a string)"},
        {R"({"catalogue":{}})", R"("messageId" must be a string)"},
        {R"({"page":{}})", R"("messageId" must be a string)"},
        {R"({"messageId":"m","hello":[]})", R"("hello" must be an object)"},
        {R"({"messageId":"m","hello":null})", R"("hello" must be an object)"},
        {R"({"messageId":"m","history":"deviceName"})", R"("history" must be an object)"},
        {R"({"messageId":"m","catalogue":true})", R"("catalogue" must be an object)"},
        {R"({"messageId":"m","page":1})", R"("page" must be an object)"},
        {R"({"messageId":"m","backup":1})", R"("backup" must be an object)"},
        {R"({"messageId":"m","status":1})", R"("status" must be an object)"},
        {R"({"messageId":"m","hello":{"client":1}})", R"("client" must be a string)"},
        {R"({"messageId":"m","hello":{"client":""}})",
         R"("client" must be 1 to 64 characters, none of them a control character)"},
        {R"({"messageId":"m","hello":{"client":"a\n"}})",
         R"("client" must be 1 to 64 characters, none of them a control character)"},
        {R"({"messageId":"m","hello":{"client":")" + longName + "\"}}",
         R"("client" must be 1 to 64 characters, none of them a control character)"},
        {R"({"messageId":"m","hello":{"resume":"r"}})", R"("resume" must be an object)"},
        {R"({"messageId":"m","hello":{"resume":{}}})", R"("run" must be a string)"},
        {R"({"messageId":"m","hello":{"resume":{"sequence":1}}})", R"("run" must be a string)"},
        {R"({"messageId":"m","hello":{"resume":{"run":1,"sequence":1}}})", R"("run" must be a string)"},
        {R"({"messageId":"m","hello":{"resume":{"run":"r"}}})", R"("sequence" must be an integer of 0 or more)"},
        {R"({"messageId":"m","hello":{"resume":{"run":"r","sequence":-1}}})",
         R"("sequence" must be an integer of 0 or more)"},
        {R"({"messageId":"m","hello":{"resume":{"run":"r","sequence":1.0}}})",
         R"("sequence" must be an integer of 0 or more)"},
        {R"({"messageId":"m","hello":{"resume":{"run":"r","sequence":18446744073709551616}}})",
         R"("sequence" must be an integer of 0 or more)"},
        {R"({"messageId":"m","hello":{"resume":{"run":"r","sequence":"1"}}})",
         R"("sequence" must be an integer of 0 or more)"},
        {R"({"messageId":"m","history":{"settingDBId":1}})", R"("settingDBId" must be a string)"},
        {R"({"messageId":"m","history":{"limit":0}})", R"("limit" must be an integer from 1 to 1,024)"},
        {R"({"messageId":"m","history":{"limit":1025}})", R"("limit" must be an integer from 1 to 1,024)"},
        {R"({"messageId":"m","history":{"limit":-1}})", R"("limit" must be an integer from 1 to 1,024)"},
        {R"({"messageId":"m","history":{"limit":2.5}})", R"("limit" must be an integer from 1 to 1,024)"},
        {R"({"messageId":"m","history":{"limit":"2"}})", R"("limit" must be an integer from 1 to 1,024)"},
        {R"({"messageId":"m","page":{"newKey":1}})", R"("newKey" must be true or false)"}};
    administration.failure = "must not be called";
    for (const auto& [frame, message] : faults) {
        traffic->take();
        const std::string refused = refusal("bad-request", message);
        EXPECT_EQ(ask(frame), Frames{refused});
        EXPECT_EQ(traffic->take(), (Frames{"received " + frame, "sent to one " + refused, "refused bad-request"}));
    }
    EXPECT_EQ(log.take(), Frames());
}

TEST_F(QueriesTest, TheFirstKindOfTheListCounts) {
    EXPECT_EQ(ask(R"({"status":{},"history":{},"messageId":"h1","hello":{}})"), Frames{helloReply(0)});
    EXPECT_EQ(ask(R"({"messageId":"y1","status":{},"history":{}})"), historyReply(""));
    EXPECT_EQ(ask(R"({"messageId":"h1","hello":{},"type":99})"),
              Frames{refusal("unknown-type", R"("type" must be one of the request types 7, 18, 19, 22, 24)")});
    EXPECT_EQ(ask(R"({"messageId":"h1","hallo":{}})"),
              Frames{refusal("unknown-type", R"("type" must be one of the request types 7, 18, 19, 22, 24)")});
}

TEST_F(QueriesTest, TheAdministrationIsAtTheUnixSocketAlone) {
    const std::string elsewhere = refusal("not-here", "only available at the Unix socket");
    for (const std::string kind : {"page", "backup", "status"}) {
        EXPECT_EQ(askAs(page, R"({"messageId":"a1",")" + kind + "\":{}}"), Frames{elsewhere});
        EXPECT_EQ(askAs(page, R"({"messageId":"a1",")" + kind + "\":1}"), Frames{elsewhere});
        EXPECT_EQ(askAs(page, "{\"" + kind + "\":{}}"),
                  Frames{refusal("bad-request", R"("messageId" must be a string)")});
    }
    // A page of an endpoint whose origin is that of native clients.
    const auto otherPage = std::make_shared<FakeClient>(Origin::SOCKET, ListenerKind::WEB);
    EXPECT_EQ(askAs(otherPage, R"({"messageId":"a1","page":{}})"), Frames{elsewhere});
    MessageHub withoutService(traffic);
    withoutService.received(client, R"({"messageId":"a1","status":{}})");
    EXPECT_EQ(client->take(), Frames{elsewhere});
}

TEST_F(QueriesTest, PageTellsTheAddressToTheAskerAlone) {
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{}})"),
              Frames{R"({"messageId":"a1","page":{"address":"http://127.0.0.1:8097/?key=old"}})"});
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{"newKey":false}})"),
              Frames{R"({"messageId":"a1","page":{"address":"http://127.0.0.1:8097/?key=old"}})"});
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{"newKey":true}})"),
              Frames{R"({"messageId":"a1","page":{"address":"http://127.0.0.1:8097/?key=new"}})"});
    EXPECT_EQ(traffic->take(), (Frames{R"(received {"messageId":"a1","page":{}})",
                                       R"(received {"messageId":"a1","page":{"newKey":false}})",
                                       R"(received {"messageId":"a1","page":{"newKey":true}})"}))
        << "the key is in no trace";
}

TEST_F(QueriesTest, PageWithoutPagesHasNoAddress) {
    administration.address.clear();
    administration.failure = "must not be called";
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{}})"), Frames{R"({"messageId":"a1","page":{}})"});
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{"newKey":true}})"), Frames{R"({"messageId":"a1","page":{}})"});
    EXPECT_EQ(log.take(), Frames());
}

TEST_F(QueriesTest, ANewKeyThatCannotBeStoredIsRefused) {
    const Frames refused{refusal("not-stored", "the new key could not be stored; the old one stays valid")};
    administration.renewed.reset();
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{"newKey":true}})"), refused);
    EXPECT_EQ(log.take(), Frames());
    administration.failure = "disk full";
    EXPECT_EQ(ask(R"({"messageId":"a1","page":{"newKey":true}})"), refused);
    EXPECT_EQ(log.take(), Frames{"3 settings-host:cannot replace the key of the pages: disk full"});
}

TEST_F(QueriesTest, BackupTellsItsFile) {
    EXPECT_EQ(ask(R"({"messageId":"a2","backup":{}})"),
              Frames{R"({"messageId":"a2","backup":{"file":"/state/settings.db.backup.1"}})"});
    administration.failure = "disk full";
    EXPECT_EQ(ask(R"({"messageId":"a2","backup":{}})"), Frames{refusal("not-stored", "no backup was made: disk full")});
    EXPECT_EQ(log.take(), Frames{"3 settings-host:database backup failed: disk full"});
}

TEST_F(QueriesTest, StatusTellsWhatTheServiceSays) {
    EXPECT_EQ(ask(R"({"messageId":"a3","status":{}})"),
              Frames{R"({"messageId":"a3","status":{"health":{"status":"ok"},"versions":{"host":"1.2.3",)"
                     R"("wire":"1.1.0"},"disk":{"free":1000,"total":2000},"newest":{},"now":1700000000000}})"});
}

TEST_F(QueriesTest, ManyEventsAreNotSentWhenTheBacklogIsFull) {
    const std::string value(50000, 'x');
    const std::string first = event("deviceName", value);
    const std::string second = event("deviceName", value);
    const Frames busy{refusal("busy", Clients::tooMuchQueued().message)};
    ClientBacklog unread(backlog, [] { ADD_FAILURE() << "dropped"; });
    EXPECT_EQ(resume(0), (Frames{first, second, complete(2)}));
    EXPECT_EQ(history(), historyReply(first + "," + second));
    unread.push(std::make_shared<const std::string>(350000, 'x'));
    EXPECT_EQ(resume(0), busy);
    EXPECT_EQ(history(), busy);
    EXPECT_EQ(resume(1), (Frames{second, complete(2)})) << "small ones always go";
    EXPECT_EQ(history(R"("limit":1)"), historyReply(second));
    EXPECT_EQ(resume(3), Frames{missed(2)});
    unread.clear();
    EXPECT_EQ(resume(0).size(), 3U);
}

TEST_F(QueriesTest, ManySmallEventsCountWithTheirPlaceInTheBacklog) {
    for (int number = 0; number < 600; ++number) {
        event();
    }
    ClientBacklog unread(backlog, [] { ADD_FAILURE() << "dropped"; });
    // Room for the texts, but not for what the backlog keeps of each.
    unread.push(std::make_shared<const std::string>(250000, 'x'));
    EXPECT_EQ(resume(0).size(), 1U);
    EXPECT_EQ(history().at(0).substr(0, 30), R"({"messageId":"y1","history":{")");
}

using QueriesAfterBatches = HubFixture;

TEST_F(QueriesAfterBatches, ABatchThatIsNotStoredLeavesItsNoticeAlone) {
    hub->use(transactions);
    const auto batch = [](const std::string& value) {
        return R"({"batch":[)" + silentSet("deviceName", value) + "," + silentSet("timezone", value) + "]}";
    };
    handled(batch("Den"));
    transactions->fails = true;
    handled(batch("Attic"));
    const std::string events = event(1, "deviceName", "TV", "Den").substr(4) + "," +
                               event(2, "timezone", "America/Vancouver", "Den").substr(4);
    EXPECT_EQ(handled(R"({"messageId":"y","history":{}})"),
              Lines{R"(asker {"messageId":"y","history":{"events":[)" + events + "]}}"});
    const std::string hello = handled(R"({"messageId":"h","hello":{}})").at(0);
    const std::string start = R"(asker {"messageId":"h","hello":{"version":"1.1.0","run":")";
    const std::string ownRun = hello.substr(start.size(), run.size());
    EXPECT_EQ(hello, start + ownRun + R"(","sequence":2}})");
    EXPECT_EQ(handled(R"({"messageId":"h","hello":{"resume":{"run":")" + ownRun + R"(","sequence":1}}})"),
              (Lines{"asker" + event(2, "timezone", "America/Vancouver", "Den").substr(3),
                     start + ownRun + R"(","sequence":2,"missed":false,"reread":["deviceName","timezone"]}})"}));
}

}  // namespace SettingsHandlerKit
