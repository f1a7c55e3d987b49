#include <filesystem>
#include <stdexcept>

#include "ClientFixture.h"

using namespace SettingsClient;
using namespace ClientTests;
using namespace std::chrono_literals;

namespace {

class ClientObservation : public ClientFixture {
protected:
    ClientObservation() { recordAll(); }
};

}  // namespace

TEST_F(ClientObservation, BeginsWithAHelloThatNamesTheClient) {
    Peer host = accept();
    EXPECT_EQ(host.receiveLine(), hello());
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(client.socketPath(), path);
    host.sendLine(helloAnswer("r1", 7));
    EXPECT_EQ(told(1), Lines{"connected"});
    EXPECT_EQ(client.wireVersion(), "1.1.0");
}

TEST_F(ClientObservation, TellsWhatAnEventSays) {
    std::optional<Event> told;
    client.onEvent([&](const auto& event) { told = event; });
    const Peer host = greet();
    const std::string frame = event(3, "deviceName", "TV", "Den", R"(,"client":"remote","later":1)");
    host.sendLine(frame);
    processUntil([&] { return told.has_value(); });
    EXPECT_EQ(told->key, "deviceName");
    EXPECT_EQ(told->from, "TV");
    EXPECT_EQ(told->to, "Den");
    EXPECT_EQ(told->timestamp, 1700000000000);
    EXPECT_EQ(told->sequence, 3U);
    EXPECT_EQ(told->origin, "socket");
    EXPECT_EQ(told->client, "remote");
    EXPECT_EQ(told->frame, frame);
}

TEST_F(ClientObservation, TellsEventsAndNoticesInTheirOrder) {
    const Peer host = greet();
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(R"({"notice":{"reread":["b","c"]}})");
    host.sendLine(event(2, "a", "1", "2"));
    host.sendLine(R"({"later":{}})");
    EXPECT_EQ(told(3), (Lines{"a: 0 -> 1 1", "reread b c", "a: 1 -> 2 2"}));
}

TEST_F(ClientObservation, TellsWhatComesBeforeTheFirstAnswerToHello) {
    const Peer host = accept();
    host.sendLine(event(5, "a", "0", "1"));
    host.sendLine(R"({"notice":{"reread":["b"]}})");
    EXPECT_EQ(told(2), (Lines{"a: 0 -> 1 5", "reread b"}));
    host.sendLine(helloAnswer("r1", 5));
    host.sendLine(event(6, "a", "1", "2"));
    EXPECT_EQ(told(2), (Lines{"connected", "a: 1 -> 2 6"}));
}

TEST_F(ClientObservation, ResumesAfterTheLastEvent) {
    const int descriptor = client.fileDescriptor();
    Peer first = greet("r1", 2);
    first.sendLine(event(3, "a", "0", "1"));
    EXPECT_EQ(told(1), Lines{"a: 0 -> 1 3"});
    first.close();
    EXPECT_EQ(told(1), Lines{closed()});
    EXPECT_FALSE(client.isConnected());
    Peer second = accept();
    EXPECT_EQ(second.receiveLine(), hello(resume("r1", 3)));
    second.sendLine(event(4, "a", "1", "2"));
    second.sendLine(event(5, "a", "2", "3"));
    second.sendLine(helloAnswer("r1", 5, R"(,"missed":false,"reread":["b"])"));
    second.sendLine(event(6, "a", "3", "4"));
    EXPECT_EQ(told(5), (Lines{"a: 1 -> 2 4", "a: 2 -> 3 5", "reread b", "connected", "a: 3 -> 4 6"}));
    EXPECT_EQ(client.fileDescriptor(), descriptor);
}

TEST_F(ClientObservation, ResumesAfterTheNewestEventOfHelloWhenNoneCame) {
    greet("r1", 2).close();
    EXPECT_EQ(told(1), Lines{closed()});
    Peer second = accept();
    EXPECT_EQ(second.receiveLine(), hello(resume("r1", 2)));
    second.sendLine(helloAnswer("r1", 2, R"(,"missed":false,"reread":[])"));
    EXPECT_EQ(told(1), Lines{"connected"});
}

TEST_F(ClientObservation, TakesEachSequenceOnceAndInOrderWhenNewEventsComeFirst) {
    greet("r1", 2).close();
    Peer host = accept();
    record.clear();
    host.sendLine(event(5, "a", "2", "3"));
    host.sendLine(R"({"notice":{"reread":["b"]}})");
    host.sendLine(event(3, "a", "0", "1"));
    host.sendLine(event(4, "a", "1", "2"));
    host.sendLine(event(5, "a", "2", "3"));
    host.sendLine(helloAnswer("r1", 5, R"(,"missed":false,"reread":["b"])"));
    host.sendLine(event(5, "a", "2", "3"));
    host.sendLine(event(6, "a", "3", "4"));
    EXPECT_EQ(told(6), (Lines{"a: 0 -> 1 3", "a: 1 -> 2 4", "a: 2 -> 3 5", "reread b", "connected", "a: 3 -> 4 6"}));
}

TEST_F(ClientObservation, AsksToReadEverythingAgainWhenEventsWereMissed) {
    greet("r1", 2).close();
    Peer host = accept();
    record.clear();
    EXPECT_EQ(host.receiveLine(), hello(resume("r1", 2)));
    host.sendLine(event(9, "a", "0", "1"));
    host.sendLine(helloAnswer("r1", 9, R"(,"missed":true)"));
    host.sendLine(event(10, "a", "1", "2"));
    EXPECT_EQ(told(3), (Lines{"missed", "connected", "a: 1 -> 2 10"}));
    host.close();
    EXPECT_EQ(accept().receiveLine(), hello(resume("r1", 10)));
}

TEST_F(ClientObservation, CountsAnewWithARestartedHost) {
    greet("r1", 200).close();
    Peer host = accept();
    record.clear();
    host.sendLine(helloAnswer("r2", 1, R"(,"missed":true)"));
    host.sendLine(event(2, "a", "0", "1"));
    EXPECT_EQ(told(3), (Lines{"missed", "connected", "a: 0 -> 1 2"}));
    host.close();
    EXPECT_EQ(accept().receiveLine(), hello(resume("r2", 2)));
}

TEST_F(ClientObservation, NeedsNoAnswerAboutWhatWasMissedToNoticeIt) {
    greet("r1", 2).close();
    const Peer host = accept();
    record.clear();
    host.sendLine(helloAnswer("r1", 2));
    EXPECT_EQ(told(2), (Lines{"missed", "connected"}));
}

TEST_F(ClientObservation, ResumesAgainWhenTheConnectionIsLostBeforeTheAnswer) {
    greet("r1", 2).close();
    Peer second = accept();
    record.clear();
    second.sendLine(event(3, "a", "0", "1"));
    second.close();
    Peer third = accept();
    EXPECT_EQ(record, Lines{}) << "the loss was told, and an event that will be sent again";
    EXPECT_EQ(third.receiveLine(), hello(resume("r1", 2)));
    third.sendLine(event(3, "a", "0", "1"));
    third.sendLine(helloAnswer("r1", 3, R"(,"missed":false,"reread":[])"));
    EXPECT_EQ(told(2), (Lines{"a: 0 -> 1 3", "connected"}));
}

TEST_F(ClientObservation, ReadsAgainFromAHostThatIsTooBusyToResume) {
    greet("r1", 2).close();
    Peer host = accept();
    record.clear();
    EXPECT_EQ(host.receiveLine(), hello(resume("r1", 2)));
    host.sendLine(refusal("busy"));
    processUntil([&] { return client.isConnected(); });
    host.sendLine(event(8, "a", "0", "1"));
    EXPECT_EQ(told(1), Lines{"a: 0 -> 1 8"});
    EXPECT_EQ(host.receiveLine(), hello());
    host.sendLine(helloAnswer("r1", 8));
    EXPECT_EQ(told(2), (Lines{"missed", "connected"}));
}

TEST_F(ClientObservation, ServesWithAHostOfVersion1) {
    Peer first = accept();
    first.sendLine(refusal("unknown-type"));
    first.sendLine(event(1, "a", "0", "1"));
    EXPECT_EQ(told(2), (Lines{"connected", "a: 0 -> 1 1"}));
    EXPECT_EQ(client.wireVersion(), "1.0.0");
    first.close();
    EXPECT_EQ(told(1), Lines{closed()});
    Peer second = accept();
    EXPECT_EQ(second.receiveLine(), hello());
    second.sendLine(refusal("unknown-type"));
    second.sendLine(event(1, "a", "1", "2"));
    EXPECT_EQ(told(3), (Lines{"missed", "connected", "a: 1 -> 2 1"}));
}

TEST_F(ClientObservation, ReadsAgainWhenTheHostIsNowOfVersion1) {
    greet("r1", 200).close();
    const Peer host = accept();
    record.clear();
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(refusal("unknown-type"));
    host.sendLine(event(2, "a", "1", "2"));
    EXPECT_EQ(told(3), (Lines{"missed", "connected", "a: 1 -> 2 2"}));
}

TEST_F(ClientObservation, TellsOnceThatThereIsNoHostAndConnectsWhenThereIsOne) {
    listener.reset();
    std::filesystem::remove(path);
    const std::string missing =
        "disconnected: cannot reach the host at " + path + ": No such file or directory (is settings-host running?)";
    EXPECT_EQ(told(1), Lines{missing});
    // Two further attempts.
    for (int attempt = 0; attempt < 2; ++attempt) {
        pollfd wanted{client.fileDescriptor(), POLLIN, 0};
        ASSERT_EQ(::poll(&wanted, 1, 20000), 1);
        client.process();
    }
    EXPECT_EQ(record, Lines{});
    listener.emplace(path);
    greet();
}

TEST_F(ClientObservation, TriesAgainWhenTheHostHasNoRoom) {
    Peer first = accept();
    first.sendLine(refusal("too-many-clients"));
    first.close();
    EXPECT_EQ(told(1), Lines{"disconnected: the host has reached its limit of clients; try again later"});
    greet();
}

TEST_F(ClientObservation, TriesAgainWhenTheHostSendsSomethingElse) {
    Peer first = accept();
    first.sendLine("HTTP/1.1 400 Bad Request");
    EXPECT_EQ(told(1), Lines{"disconnected: unexpected response: not a settings-host (not a JSON object)"});
    greet();
}

TEST_F(ClientObservation, LeavesAHostWhoseVersionItDoesNotKnow) {
    const Peer host = accept();
    host.sendLine(R"({"messageId":")" + id(0) + R"(","hello":{"version":"2.0.0","run":"r","sequence":0}})");
    EXPECT_EQ(told(1), Lines{"disconnected: the host at " + path +
                             " speaks version 2.0.0 of the protocol, this client version 1"});
}

TEST_F(ClientObservation, GivesAHostUpThatDoesNotAnswerHello) {
    Client impatient({"kitchen", {{path}}, 10ms});
    std::string reason;
    impatient.onDisconnected([&](const std::string& why) { reason = why; });
    while (reason.empty()) {
        pollfd wanted{impatient.fileDescriptor(), POLLIN, 0};
        ASSERT_EQ(::poll(&wanted, 1, 20000), 1);
        impatient.process();
    }
    EXPECT_EQ(reason, "the host at " + path + " does not reply");
}

TEST_F(ClientObservation, ReportsAPathThatASocketCannotHave) {
    Client wrong({"kitchen", {{""}}});
    EXPECT_THROW(wrong.process(), InvalidSocketPath);
}

TEST_F(ClientObservation, GoesOnWithTheNextNotificationAfterAnException) {
    const Peer host = greet();
    client.onReread([](const auto& reread) { throw std::logic_error(reread.keys.at(0)); });
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(R"({"notice":{"reread":["b"]}})");
    host.sendLine(event(2, "a", "1", "2"));
    EXPECT_THROW(processUntil([] { return false; }), std::logic_error);
    EXPECT_EQ(told(2), (Lines{"a: 0 -> 1 1", "a: 1 -> 2 2"}));
}

TEST_F(ClientObservation, LetsAnObserverReplaceItself) {
    const Peer host = greet();
    client.onEvent([this](const auto& first) {
        client.onEvent([this, key = first.key](const auto& next) { record.push_back(key + " " + next.key); });
        record.push_back(first.key);
    });
    host.sendLine(event(1, "a", "0", "1"));
    host.sendLine(event(2, "b", "0", "1"));
    EXPECT_EQ(told(2), (Lines{"a", "a b"}));
}

TEST_F(ClientObservation, LetsObserversSendRequests) {
    Peer host = greet();
    client.onReread([this](const auto& reread) {
        for (const auto& [key, value] : client.get(reread.keys)) {
            record.push_back(std::string(key).append("=").append(value));
        }
    });
    host.sendLine(R"({"notice":{"reread":["a"]}})");
    host.sendLine(event(1, "b", "0", "1"));
    const auto served = std::async(std::launch::async, [&] {
        EXPECT_EQ(host.receiveLine(), R"({"type":7,"messageId":")" + id(1) + R"(","payload":{"settings":["a"]}})");
        host.sendLine(event(2, "b", "1", "2"));
        host.sendLine(reply(7, 1, R"({"settings":{"a":"x"}})"));
    });
    EXPECT_EQ(told(3), (Lines{"a=x", "b: 0 -> 1 1", "b: 1 -> 2 2"}));
}

TEST_F(ClientObservation, TellsWhatCameDuringARequestAfterIt) {
    Peer host = greet();
    auto values = std::async(std::launch::async, [&] { return client.get({"a"}); });
    host.receiveLine();
    host.sendLine(event(1, "b", "0", "1") + "\n" + reply(7, 1, R"({"settings":{"a":"x"}})") + "\n" +
                  event(2, "b", "1", "2"));
    EXPECT_EQ(values.get().at("a"), "x");
    EXPECT_EQ(record, Lines{}) << "observers were called outside process";
    pollfd wanted{client.fileDescriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&wanted, 1, 20000), 1);
    EXPECT_EQ(told(2), (Lines{"b: 0 -> 1 1", "b: 1 -> 2 2"}));
}

TEST_F(ClientObservation, TellsWhatCameTogetherWithAReply) {
    Peer host = greet();
    auto values = std::async(std::launch::async, [&] { return client.get({"a"}); });
    host.receiveLine();
    host.sendLine(reply(7, 1, R"({"settings":{}})") + "\n" + event(1, "b", "0", "1"));
    values.get();
    pollfd wanted{client.fileDescriptor(), POLLIN, 0};
    ASSERT_EQ(::poll(&wanted, 1, 20000), 1);
    EXPECT_EQ(told(1), Lines{"b: 0 -> 1 1"});
}

TEST_F(ClientObservation, RunsUntilItIsStopped) {
    const Peer host = greet();
    client.onEvent([this](const auto& /*event*/) { client.stop(); });
    for (int number = 1; number <= 2; ++number) {
        host.sendLine(event(number, "a", "0", "1"));
        client.run();
    }
}
