#include <utility>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "Utils/Rapidjson.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"
#include "support/Json.h"

namespace SettingsHandlerKit {

namespace {

using TestSupport::parsed;

std::string codeOf(const std::vector<std::string>& frames) {
    return frames.size() == 1 && parsed(frames[0]).HasMember("error") ? parsed(frames[0])["error"]["code"].GetString()
                                                                      : "no refusal";
}

}  // namespace

class MessageHubTest : public ::testing::Test {
protected:
    MessageHubTest() {
        hub.connected(requester);
        hub.connected(other);
        for (const int type : {7, 24}) {
            hub.registerMessageHandler(type, [this](const std::string& text) {
                delivered.push_back(text);
                if (onDelivery) {
                    onDelivery();
                }
            });
        }
    }

    std::string sendEvent(const std::string& key) {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("settingDBId", rapidjson::Value(key, payload.GetAllocator()), payload.GetAllocator());
        return hub.sendMessage(25, payload);
    }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<TrafficRecording> traffic = std::make_shared<TrafficRecording>();
    std::chrono::system_clock::time_point time{std::chrono::milliseconds(1700000000000)};
    MessageHub hub{traffic, std::make_shared<RequestContext>(), std::make_shared<Backlog>(),
                   Environment{[this] { return time; }, randomBytes}};
    std::shared_ptr<SettingsHandlerTesting::FakeClient> requester =
        std::make_shared<SettingsHandlerTesting::FakeClient>();
    std::shared_ptr<SettingsHandlerTesting::FakeClient> other = std::make_shared<SettingsHandlerTesting::FakeClient>();
    std::vector<std::string> delivered;
    std::function<void()> onDelivery;
};

TEST_F(MessageHubTest, DeliversTheWholeTextToTheHandlerOfItsType) {
    const std::string text = R"( {"type":7, "extra": [1] } )";
    hub.received(requester, text);
    EXPECT_EQ(delivered, std::vector<std::string>{text});
    EXPECT_TRUE(requester->take().empty());
}

TEST_F(MessageHubTest, RefusesToTheSenderAloneAndStaysUsable) {
    const std::vector<std::pair<std::string, std::string>> refusals{
        {"x", "not-json"},
        {"{\"a\":\"\xff\"}", "not-json"},
        {"[]", "not-an-object"},
        {"{}", "unknown-type"},
        {R"({"type":25})", "unknown-type"},
        {R"({"type":"7"})", "unknown-type"},
        {R"({"type":7,"a":)" + std::string(32, '[') + std::string(32, ']') + "}", "too-deep"}};
    for (const auto& [frame, code] : refusals) {
        hub.received(requester, frame);
        EXPECT_EQ(codeOf(requester->take()), code) << frame;
    }
    hub.oversized(requester);
    EXPECT_EQ(codeOf(requester->take()), "too-large");
    EXPECT_TRUE(other->take().empty());
    EXPECT_TRUE(delivered.empty());
    hub.received(requester, R"({"type":7})");
    EXPECT_EQ(delivered.size(), 1U);
}

TEST_F(MessageHubTest, RepliesToTheRequesterAlone) {
    onDelivery = [&] {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("settings", rapidjson::Value(rapidjson::kObjectType), payload.GetAllocator());
        hub.sendResponse("m1", payload);
    };
    hub.received(requester, R"({"type":7})");
    EXPECT_EQ(requester->take(), std::vector<std::string>{R"({"type":7,"messageId":"m1","payload":{"settings":{}}})"});
    EXPECT_TRUE(other->take().empty());
}

TEST_F(MessageHubTest, ALargeReplyIsNotMadeWhenTheBacklogIsFull) {
    constexpr std::size_t limit = 500000;
    const auto backlog = std::make_shared<Backlog>(limit);
    ClientBacklog unread(backlog, [] { ADD_FAILURE() << "dropped"; });
    MessageHub limited(traffic, std::make_shared<RequestContext>(), backlog);
    std::string value;
    limited.registerMessageHandler(7, [&](const std::string&) {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("v", rapidjson::Value(value, payload.GetAllocator()), payload.GetAllocator());
        limited.sendResponse("m", payload);
    });
    const auto ask = [&](std::size_t size, char byte = 'v') {
        value = std::string(size, byte);
        limited.received(requester, R"({"type":7})");
        EXPECT_EQ(requester->frames.size(), 1U);
        return requester->take();
    };
    EXPECT_EQ(ask(390000)[0], R"({"type":7,"messageId":"m","payload":{"v":")" + std::string(390000, 'v') + "\"}}");
    EXPECT_EQ(codeOf(ask(limit)), "busy");
    EXPECT_EQ(codeOf(ask(limit / 6, '\0')), "busy") << "a NUL takes six bytes";
    unread.push(std::make_shared<const std::string>(250000, 'x'));
    EXPECT_EQ(codeOf(ask(200000)), "busy");
    EXPECT_EQ(codeOf(ask(100000)), "no refusal");
    unread.push(std::make_shared<const std::string>(100000, 'x'));
    EXPECT_EQ(codeOf(ask(100000)), "busy");
    EXPECT_EQ(ask(60000)[0].size(), 60045U) << "small ones always go";
    unread.clear();
    EXPECT_EQ(codeOf(ask(100000)), "no refusal") << "it was read";
}

TEST_F(MessageHubTest, KeepsNoClientWhoseRequestIsOver) {
    hub.received(requester, R"({"type":7})");
    rapidjson::Document payload(rapidjson::kObjectType);
    hub.sendResponse("late", payload);
    EXPECT_TRUE(requester->take().empty());
    onDelivery = [] { throw std::runtime_error("collaborator"); };
    hub.received(requester, R"({"type":7})");
    hub.sendResponse("late", payload);
    EXPECT_TRUE(requester->take().empty());
    const std::weak_ptr<SettingsHandlerTesting::FakeClient> gone = requester;
    hub.disconnected(std::exchange(requester, nullptr), DisconnectReason::CLOSED);
    EXPECT_TRUE(gone.expired());
}

TEST_F(MessageHubTest, TheRequestContextHoldsAKeyOfBoundedLength) {
    const auto context = std::make_shared<RequestContext>();
    MessageHub logging(traffic, context);
    std::vector<std::string> names;
    const auto note = [&](const std::string&) {
        names.push_back(context->current() ? context->current()->setting : "?");
    };
    logging.registerMessageHandler(24, note);
    logging.registerMessageHandler(7, note);
    const auto handle = [&](int type, const std::string& key) {
        logging.received(requester,
                         "{\"type\":" + std::to_string(type) + R"(,"payload":{"settingDBId":")" + key + "\"}}");
    };
    handle(24, "deviceName");
    handle(24, std::string(256, 'k'));
    handle(24, std::string(60000, 'k'));
    // Cut within a character, which is replaced then.
    handle(24, std::string(255, 'k') + "\xC3\xA9");
    handle(7, "deviceName");
    EXPECT_EQ(names, (std::vector<std::string>{"deviceName", std::string(256, 'k'), std::string(256, 'k'),
                                               std::string(255, 'k') + "\xEF\xBF\xBD", ""}));
    EXPECT_FALSE(context->current());
}

TEST_F(MessageHubTest, EventsAreNumberedEvenWithoutClients) {
    hub.disconnected(requester, DisconnectReason::CLOSED);
    sendEvent("deviceName");
    hub.disconnected(other, DisconnectReason::CLOSED);
    sendEvent("deviceName");
    sendEvent("deviceName");
    hub.connected(requester);
    sendEvent("deviceName");
    ASSERT_EQ(requester->frames.size(), 1U);
    EXPECT_EQ(parsed(requester->take()[0])["sequence"].GetInt(), 4);
    EXPECT_EQ(parsed(other->take().at(0))["sequence"].GetInt(), 1);
}

TEST_F(MessageHubTest, AReplyWithoutARequestIsNotSent) {
    rapidjson::Document payload(rapidjson::kObjectType);
    hub.sendResponse("m1", payload);
    EXPECT_TRUE(requester->take().empty());
}

TEST_F(MessageHubTest, EventsGoToEveryClientAsOneSharedFrame) {
    onDelivery = [&] {
        EXPECT_EQ(sendEvent("deviceName"), "host-1700000000000-1");
        time += std::chrono::milliseconds(5);
        EXPECT_EQ(sendEvent("timezone"), "host-1700000000000-2");
    };
    hub.received(requester, R"({"type":24})");
    ASSERT_EQ(requester->frames.size(), 2U);
    EXPECT_EQ(requester->frames[0].get(), other->frames[0].get());
    const std::vector<std::string> events{
        R"({"type":25,"messageId":"host-1700000000000-1","timestamp":1700000000000,"sequence":1,"origin":"socket",)"
        R"("payload":{"settingDBId":"deviceName"}})",
        R"({"type":25,"messageId":"host-1700000000000-2","timestamp":1700000000005,"sequence":2,"origin":"socket",)"
        R"("payload":{"settingDBId":"timezone"}})"};
    EXPECT_EQ(requester->take(), events);
    EXPECT_EQ(other->take(), events);
}

TEST_F(MessageHubTest, EventsHoldTheOriginOfTheChange) {
    const auto page = std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::PAGE);
    onDelivery = [&] { sendEvent("deviceName"); };
    hub.received(page, R"({"type":24})");
    hub.perform(Origin::DEVICE, onDelivery);
    const auto frames = other->take();
    EXPECT_STREQ(parsed(frames[0])["origin"].GetString(), "page");
    EXPECT_STREQ(parsed(frames[1])["origin"].GetString(), "device");
}

TEST_F(MessageHubTest, ANoticeFollowsTheEventsForChangesWithoutOne) {
    onDelivery = [&] {
        hub.valueChanged("timezone");
        hub.valueChanged("deviceName");
        hub.valueChanged("captionsEnabled");
        hub.valueChanged("timezone");
        sendEvent("deviceName");
    };
    hub.received(requester, R"({"type":24})");
    const auto frames = other->take();
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(parsed(frames[0])["type"].GetInt(), 25);
    EXPECT_EQ(frames[1], R"({"notice":{"reread":["captionsEnabled","timezone"]}})");
    // The next dispatch starts anew.
    onDelivery = [&] { hub.valueChanged("deviceName"); };
    hub.received(requester, R"({"type":24})");
    EXPECT_EQ(other->take(), std::vector<std::string>{R"({"notice":{"reread":["deviceName"]}})"});
}

TEST_F(MessageHubTest, NoNoticeWhenEveryChangeHadAnEvent) {
    onDelivery = [&] {
        hub.valueChanged("friendlyName");
        sendEvent("friendlyName");
    };
    hub.received(requester, R"({"type":24})");
    EXPECT_EQ(other->take().size(), 1U);
}

TEST_F(MessageHubTest, AnExceptionOfADeliveryIsLoggedAndTheNextIsServed) {
    onDelivery = [&] {
        hub.valueChanged("timezone");
        throw std::runtime_error("collaborator");
    };
    hub.received(requester, R"({"type":24})");
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 settings-host:a request of type 24 failed: collaborator"});
    EXPECT_EQ(other->take(), std::vector<std::string>{R"({"notice":{"reread":["timezone"]}})"});
    onDelivery = nullptr;
    hub.received(requester, R"({"type":24})");
    EXPECT_EQ(delivered.size(), 2U);
}

TEST_F(MessageHubTest, FramesAreValidUtf8WhateverTheValues) {
    onDelivery = [&] {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("v", rapidjson::Value(std::string("\xff\0x", 3), payload.GetAllocator()),
                          payload.GetAllocator());
        hub.sendResponse("m\xff", payload);
    };
    hub.received(requester, R"({"type":7})");
    EXPECT_EQ(requester->take(),
              std::vector<std::string>{
                  "{\"type\":7,\"messageId\":\"m\xEF\xBF\xBD\",\"payload\":{\"v\":\"\xEF\xBF\xBD\\u0000x\"}}"});
}

TEST_F(MessageHubTest, AClientThatLeftIsSentNothing) {
    hub.disconnected(other, DisconnectReason::CLOSED);
    onDelivery = [&] { sendEvent("deviceName"); };
    hub.received(requester, R"({"type":24})");
    EXPECT_TRUE(other->take().empty());
    EXPECT_EQ(requester->take().size(), 1U);
}

TEST_F(MessageHubTest, NotifiesTheTrafficObserverInOrder) {
    onDelivery = [&] {
        hub.valueChanged("timezone");
        rapidjson::Document payload(rapidjson::kObjectType);
        hub.sendResponse("m1", payload);
    };
    hub.received(requester, R"({"type":7})");
    hub.received(requester, "x");
    hub.oversized(other);
    hub.disconnected(other, DisconnectReason::TOO_SLOW);
    const std::string notJson = R"({"error":{"code":"not-json","message":"the frame is not JSON"}})";
    const std::string tooLargeText = *other->frames.back();
    EXPECT_EQ(
        traffic->take(),
        (std::vector<std::string>{"connected socket", "connected socket", R"(received {"type":7})",
                                  R"(sent to one {"type":7,"messageId":"m1","payload":{}})",
                                  R"(sent to all {"notice":{"reread":["timezone"]}})", "handled 7 ANSWERED",
                                  "received x", "sent to one " + notJson, "refused not-json",
                                  "sent to one " + tooLargeText, "refused too-large", "disconnected socket TOO_SLOW"}));
}

TEST_F(MessageHubTest, ReportsTheOutcomeOfEachRequest) {
    traffic->take();
    const auto outcomeOf = [&](std::function<void()> action) {
        onDelivery = std::move(action);
        hub.received(requester, R"({"type":24})");
        return traffic->take().back();
    };
    EXPECT_EQ(outcomeOf([&] { sendEvent("deviceName"); }), "handled 24 CHANGED");
    EXPECT_EQ(outcomeOf([] {}), "handled 24 SILENT");
    EXPECT_EQ(outcomeOf([] { throw std::runtime_error("x"); }), "handled 24 FAILED");
    EXPECT_EQ(outcomeOf([] {}), "handled 24 SILENT");
}

}  // namespace SettingsHandlerKit
