#include <gtest/gtest.h>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "Utils/Rapidjson.h"
#include "Wire/Frames.h"
#include "kit/support/LogRecording.h"
#include "simulation/ClientsWithFaults.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;
using SettingsHandlerTesting::FakeClient;
using Texts = std::vector<std::string>;

namespace {

/// What the server is told, and the clients as it knows them.
class Server : public ClientListener {
public:
    void connected(const std::shared_ptr<Client>& client) override {
        clients.push_back(client);
        told.push_back("connected " + std::string(originName(client->origin())));
    }
    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override {
        told.push_back("disconnected " + std::to_string(numberOf(client)) +
                       (reason == DisconnectReason::TOO_SLOW ? " too slow" : ""));
    }
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override {
        told.push_back("received " + std::to_string(numberOf(client)) + " " + frame);
        if (onReceived) {
            onReceived(*client);
        }
    }
    void oversized(const std::shared_ptr<Client>& client) override {
        told.push_back("oversized " + std::to_string(numberOf(client)));
    }
    void refused(Origin origin) override { told.push_back("refused " + std::string(originName(origin))); }

    void sendToAll(const std::string& frame) {
        const auto shared = std::make_shared<const std::string>(frame);
        for (const auto& client : clients) {
            client->send(shared);
        }
    }

    Texts take() { return std::exchange(told, {}); }

    std::vector<std::shared_ptr<Client>> clients;
    std::function<void(Client&)> onReceived;

private:
    long numberOf(const std::shared_ptr<Client>& client) {
        return std::find(clients.begin(), clients.end(), client) - clients.begin();
    }

    Texts told;
};

std::string event(unsigned long sequence) {
    rapidjson::Document payload(rapidjson::kObjectType);
    const std::string id = "e";
    return Wire::eventFrame({25, id, 1, sequence, "socket"}, payload);
}

const std::string notice = Wire::noticeFrame({"timezone"});
const std::string reply = R"({"type":7,"messageId":"m","payload":{}})";
const std::string resume = R"({"messageId":"h","hello":{"resume":{"run":"r","sequence":0}}})";

}  // namespace

class ClientsWithFaultsTest : public ::testing::Test {
protected:
    struct Waiting {
        long milliseconds;
        std::function<void()> action;
    };

    ClientsWithFaultsTest() {
        between.connected(one);
        between.connected(two);
        server->take();
    }

    /// The time of the next delayed action is over.
    void pass() {
        const auto next = std::move(waiting.front());
        waiting.erase(waiting.begin());
        next.action();
    }

    std::vector<long> delays() const {
        std::vector<long> times;
        for (const auto& later : waiting) {
            times.push_back(later.milliseconds);
        }
        return times;
    }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    std::shared_ptr<Server> server = std::make_shared<Server>();
    std::vector<Waiting> waiting;
    std::vector<const Client*> cut;
    ClientsWithFaults between{server, faults,
                              [this](std::chrono::milliseconds time, std::function<void()> action) {
                                  waiting.push_back({time.count(), std::move(action)});
                              },
                              [this](const Client& client) { cut.push_back(&client); }};
    std::shared_ptr<FakeClient> one = std::make_shared<FakeClient>();
    std::shared_ptr<FakeClient> two = std::make_shared<FakeClient>(Origin::PAGE, ListenerKind::WEB);
};

TEST_F(ClientsWithFaultsTest, PassEverythingOnWithoutFaults) {
    between.received(one, "frame");
    between.oversized(two);
    between.refused(Origin::PAGE);
    EXPECT_EQ(server->clients[1]->origin(), Origin::PAGE);
    EXPECT_EQ(server->clients[1]->listenerKind(), ListenerKind::WEB);
    server->sendToAll(event(1));
    EXPECT_EQ(one->take(), Texts{event(1)});
    EXPECT_EQ(two->take(), Texts{event(1)});
    between.disconnected(one, DisconnectReason::CLOSED);
    between.disconnected(two, DisconnectReason::TOO_SLOW);
    EXPECT_EQ(server->take(),
              (Texts{"received 0 frame", "oversized 1", "refused page", "disconnected 0", "disconnected 1 too slow"}));
    EXPECT_FALSE(one->isClosed);
    EXPECT_TRUE(waiting.empty());
}

TEST_F(ClientsWithFaultsTest, SendLateInTheSameOrder) {
    faults->switchOn(Fault::REPLIES_LATE, 100);
    server->sendToAll(event(1));
    server->clients[0]->send(std::make_shared<const std::string>(reply));
    EXPECT_EQ(delays(), (std::vector<long>{100, 100, 100}));
    EXPECT_EQ(one->take(), Texts{});
    pass();
    pass();
    EXPECT_EQ(one->take(), Texts{event(1)});
    EXPECT_EQ(two->take(), Texts{event(1)});
    pass();
    EXPECT_EQ(one->take(), Texts{reply});
}

TEST_F(ClientsWithFaultsTest, ThatAreLateNoMoreGetWhatWaitsAtOnce) {
    faults->switchOn(Fault::REPLIES_LATE, 100);
    server->sendToAll(event(1));
    faults->switchOff(Fault::REPLIES_LATE);
    server->sendToAll(event(2));
    EXPECT_EQ(one->take(), (Texts{event(1), event(2)}));
    faults->switchOn(Fault::REPLIES_LATE, 200);
    server->sendToAll(event(3));
    pass();
    pass();
    EXPECT_EQ(one->take(), Texts{}) << "these times were those of the first event";
    pass();
    pass();
    EXPECT_EQ(one->take(), Texts{event(3)});
}

TEST_F(ClientsWithFaultsTest, StayLateWhenAnotherFaultIsSwitched) {
    faults->define(Fault::SDK_CHANGES, [](const std::string&) { return true; });
    faults->switchOn(Fault::REPLIES_LATE, 100);
    server->sendToAll(event(1));
    faults->switchOn(Fault::STORAGE_FULL);
    faults->switchOn(Fault::SDK_CHANGES);
    faults->switchOff(Fault::STORAGE_FULL);
    EXPECT_EQ(one->take(), Texts{});
    pass();
    EXPECT_EQ(one->take(), Texts{event(1)});
}

TEST_F(ClientsWithFaultsTest, ThatAreGoneGetNothingLate) {
    faults->switchOn(Fault::REPLIES_LATE, 100);
    server->sendToAll(event(1));
    between.disconnected(one, DisconnectReason::CLOSED);
    server->clients.clear();
    one->take();
    pass();
    pass();
    EXPECT_EQ(one->take(), Texts{});
}

TEST_F(ClientsWithFaultsTest, WithTooMuchThatWaitsAreCut) {
    faults->switchOn(Fault::REPLIES_LATE, 100);
    for (int count = 0; count < 16; ++count) {
        server->clients[0]->send(std::make_shared<const std::string>(65536, 'x'));
    }
    EXPECT_FALSE(one->isClosed);
    server->clients[0]->send(std::make_shared<const std::string>("x"));
    EXPECT_TRUE(one->isClosed);
    EXPECT_FALSE(two->isClosed);
    while (!waiting.empty()) {
        pass();
    }
    EXPECT_EQ(one->take(), Texts{});
}

TEST_F(ClientsWithFaultsTest, AreCutInPlaceOfANewEvent) {
    faults->switchOn(Fault::EVENTS_DROPPED);
    server->sendToAll(notice);
    server->clients[0]->send(std::make_shared<const std::string>(reply));
    EXPECT_EQ(one->take(), (Texts{notice, reply}));
    server->sendToAll(event(1));
    server->sendToAll(notice);
    EXPECT_EQ(cut, (std::vector<const Client*>{server->clients[0].get(), server->clients[1].get()}));
    for (const auto& client : {one, two}) {
        EXPECT_TRUE(client->isClosed);
        EXPECT_EQ(client->take().size(), client == one ? 0U : 1U) << "what came before";
    }
}

TEST_F(ClientsWithFaultsTest, GetTheEventsOfAResume) {
    faults->switchOn(Fault::EVENTS_DROPPED);
    server->onReceived = [](Client& client) { client.send(std::make_shared<const std::string>(event(1))); };
    between.received(one, resume);
    EXPECT_EQ(one->take(), Texts{event(1)});
    EXPECT_FALSE(one->isClosed);
    // A request's own event is a new one.
    between.received(one, R"({"type":24,"hello":{}})");
    EXPECT_TRUE(one->isClosed);
    between.received(two, R"({"batch":[],"hello":{}})");
    EXPECT_TRUE(two->isClosed);
}

TEST_F(ClientsWithFaultsTest, ThatTheServerClosesAreClosed) {
    server->clients[0]->close();
    EXPECT_TRUE(one->isClosed);
}

}  // namespace SettingsHost
