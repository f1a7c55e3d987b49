#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "SettingsHandlerTesting/kit/FakeStateStore.h"
#include "Utils/Rapidjson.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/TrafficObservers.h"
#include "simulation/DeviceConsole.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

class DeviceConsoleTest : public ::testing::Test {
protected:
    DeviceConsoleTest() {
        traffic->add(trace);
        traffic->add(recording);
        hub->connected(page);
        console.obey(DeviceCommands(
            device, sdk, std::make_shared<SimulatedAppLaunch>(), [this] { return outcome; }, std::make_shared<Faults>(),
            [](bool) { return std::string("{}"); }));
        console.connected(client);
        console.connected(watcher);
        recording->take();
    }

    std::string answerTo(const std::string& frame) {
        console.received(client, frame);
        const auto frames = client->take();
        EXPECT_EQ(frames.size(), 1U) << frame;
        return frames.empty() ? "" : frames.back();
    }

    void watch(bool enabled) {
        console.received(watcher, std::string(R"({"command":"trace","enabled":)") + (enabled ? "true}" : "false}"));
        EXPECT_EQ(watcher->take(), std::vector<std::string>{R"({"ok":true})"});
    }

    /// What the watcher saw, each as "DIRECTION LISTENER CLIENT TEXT".
    std::vector<std::string> traced() {
        std::vector<std::string> lines;
        for (const auto& text : watcher->take()) {
            rapidjson::Document frame;
            frame.Parse(text.c_str());
            const auto& entry = frame["trace"];
            EXPECT_GT(entry["timestamp"].GetInt64(), 1700000000000);
            EXPECT_EQ(entry.MemberCount(), 5U);
            lines.push_back(std::string(entry["direction"].GetString()) + " " + entry["door"].GetString() + " " +
                            (entry["client"].IsNull() ? "-" : std::to_string(entry["client"].GetInt())) + " " +
                            entry["text"].GetString());
        }
        return lines;
    }

    SettingsHostTests::LogRecording log;
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    SettingsHandlerTesting::FakeStateStore state{journal};
    std::shared_ptr<TrafficObservers> traffic = std::make_shared<TrafficObservers>();
    std::shared_ptr<MessageTrace> trace = std::make_shared<MessageTrace>();
    std::shared_ptr<TrafficRecording> recording = std::make_shared<TrafficRecording>();
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(traffic);
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(state, hub);
    std::shared_ptr<SimulatedSdkBridge> sdk = std::make_shared<SimulatedSdkBridge>(state, storage, device, hub);
    /// Of the handler.
    Outcome outcome;
    std::string address = "http://127.0.0.1:1/?key=k";
    std::optional<std::string> renewed = "http://127.0.0.1:1/?key=new";
    int renewals = 0;
    DeviceConsole console{[this](const auto& action) { hub->perform(Origin::DEVICE, action); }, traffic, trace,
                          PageAddress{[this] { return address; },
                                      [this] {
                                          ++renewals;
                                          return renewed;
                                      }}};
    std::shared_ptr<SettingsHandlerTesting::FakeClient> page =
        std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::PAGE);
    std::shared_ptr<SettingsHandlerTesting::FakeClient> client =
        std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::DEVICE);
    std::shared_ptr<SettingsHandlerTesting::FakeClient> watcher =
        std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::DEVICE);
};

const std::string captionsOn = R"({"command":"captions","enabled":true})";
const std::string captionsNotice = R"({"notice":{"reread":["captionsEnabled"]}})";

TEST_F(DeviceConsoleTest, ExecutesCommandsAndNotifiesSettingsClients) {
    EXPECT_EQ(answerTo(captionsOn), R"({"ok":true})");
    EXPECT_EQ(page->take(), std::vector<std::string>{captionsNotice});
    EXPECT_EQ(recording->take(), (std::vector<std::string>{"received " + captionsOn, "sent to all " + captionsNotice,
                                                           R"(sent to one {"ok":true})"}));
}

TEST_F(DeviceConsoleTest, RefusesInvalidFramesAndStaysUsable) {
    EXPECT_EQ(answerTo("x"), R"({"error":{"code":"not-json","message":"the frame is not JSON"}})");
    EXPECT_EQ(recording->take(),
              (std::vector<std::string>{
                  "received x", R"(sent to one {"error":{"code":"not-json","message":"the frame is not JSON"}})",
                  "refused not-json"}));
    console.oversized(client);
    EXPECT_NE(client->take().at(0).find("too-large"), std::string::npos);
    EXPECT_EQ(recording->take().back(), "refused too-large");
    EXPECT_EQ(answerTo(captionsOn), R"({"ok":true})");
}

TEST_F(DeviceConsoleTest, ASettingThatTheHandlerAcceptsIsDone) {
    struct Handler : DeviceAbstractionLayer::DeviceInfoObserverInterface {
        Handler(MessageHub& messageHub, Outcome& outcomeToSet) : hub(messageHub), outcome(outcomeToSet) {}
        void notifyLocaleChange(std::string) override {}
        void notifyLocaleChange(std::vector<std::string>) override {}
        void notifyTimezoneChange(std::string) override {}
        void notifyNetworkConnectionChanged(std::string) override {}
        void notifyMicrophoneAvailabilityChanged(std::string) override {}
        void notifyAudioGuidanceChanged(bool) override {}
        void notifyDeviceModeChanged(std::string) override {}
        void notifySystemSettingChanged(std::string, std::string value) override {
            rapidjson::Document payload(rapidjson::kObjectType);
            if (value == "new") {
                hub.sendMessage(25, payload);
            }
            outcome.kind = value == "new" ? Outcome::Kind::CHANGED : Outcome::Kind::UNCHANGED;
        }
        MessageHub& hub;
        Outcome& outcome;
    };
    const auto handler = std::make_shared<Handler>(*hub, outcome);
    device->subscribe(handler, {});
    EXPECT_EQ(answerTo(R"({"command":"setting","key":"k","value":"new"})"), R"({"ok":true})");
    EXPECT_EQ(answerTo(R"({"command":"setting","key":"k","value":"old"})"), R"({"ok":true,"changed":false})");
    EXPECT_EQ(page->take().size(), 1U);
}

TEST_F(DeviceConsoleTest, RepliesWithTheAddressOfThePages) {
    EXPECT_EQ(answerTo(R"({"command":"page"})"), R"({"page":{"address":"http://127.0.0.1:1/?key=k"}})");
    EXPECT_EQ(answerTo(R"({"command":"page","newKey":false})"), R"({"page":{"address":"http://127.0.0.1:1/?key=k"}})");
    address.clear();
    const std::string noPages = R"({"error":{"code":"no-pages","message":"the host serves no pages"}})";
    EXPECT_EQ(answerTo(R"({"command":"page"})"), noPages);
    EXPECT_EQ(answerTo(R"({"command":"page","newKey":true})"), noPages);
    EXPECT_EQ(renewals, 0);
}

TEST_F(DeviceConsoleTest, MakesANewKeyOnRequestAndReportsWhenItCannot) {
    EXPECT_EQ(answerTo(R"({"command":"page","newKey":true})"), R"({"page":{"address":"http://127.0.0.1:1/?key=new"}})");
    EXPECT_EQ(renewals, 1);
    EXPECT_EQ(answerTo(R"({"command":"page","newKey":"yes"})"),
              R"({"error":{"code":"bad-argument","message":"\"newKey\" must be true or false"}})");
    EXPECT_EQ(renewals, 1);
    renewed.reset();
    EXPECT_EQ(
        answerTo(R"({"command":"page","newKey":true})"),
        R"({"error":{"code":"not-written","message":"the new key could not be stored: the old key and its cookies stay valid"}})");
}

TEST_F(DeviceConsoleTest, TheKeyOfThePagesIsShownOnTheUnixSocketOnly) {
    const auto pageOfDevice = std::make_shared<SettingsHandlerTesting::FakeClient>(Origin::DEVICE, ListenerKind::WEB);
    watch(true);
    for (const auto* frame : {R"({"command":"page"})", R"({"command":"page","newKey":true})"}) {
        console.received(pageOfDevice, frame);
        EXPECT_EQ(pageOfDevice->take(),
                  std::vector<std::string>{
                      R"({"error":{"code":"not-here","message":"only available at the device socket"}})"});
        answerTo(frame);
    }
    EXPECT_EQ(traced(), std::vector<std::string>{}) << "a page that watches is not sent it";
    EXPECT_EQ(renewals, 1);
}

TEST_F(DeviceConsoleTest, AFailureIsAnswered) {
    state.refusesWrites = true;
    EXPECT_NE(answerTo(captionsOn).find("not-written"), std::string::npos);
}

TEST_F(DeviceConsoleTest, AWatcherSeesEveryFrameInOrder) {
    hub->registerMessageHandler(24, [&](const std::string&) {
        rapidjson::Document payload(rapidjson::kObjectType);
        payload.AddMember("settingDBId", "deviceName", payload.GetAllocator());
        hub->sendMessage(25, payload);
    });
    hub->registerMessageHandler(7, [&](const std::string&) {
        rapidjson::Document payload(rapidjson::kObjectType);
        hub->sendResponse("m1", payload);
    });
    watch(true);
    hub->received(page, R"({"type":24})");
    const std::string event = page->take().at(0);
    hub->received(page, R"({"type":7})");
    hub->received(page, "\xff");
    answerTo(captionsOn);
    EXPECT_EQ(traced(),
              (std::vector<std::string>{
                  R"(in page 1 {"type":24})", "out all - " + event, R"(in page 1 {"type":7})",
                  R"(out page 1 {"type":7,"messageId":"m1","payload":{}})", "in page 1 \xEF\xBF\xBD",
                  R"(out page 1 {"error":{"code":"not-json","message":"the frame is not JSON"}})",
                  "in device 2 " + captionsOn, "out all - " + captionsNotice, R"(out device 2 {"ok":true})"}));
}

TEST_F(DeviceConsoleTest, AWatcherSeesTheBeginningOfAVeryLargeFrame) {
    watch(true);
    const std::string largest(256UL * 1024UL, 'x');
    traffic->frameSent(nullptr, largest);
    traffic->frameSent(nullptr, largest + "y");
    EXPECT_EQ(traced(), (std::vector<std::string>(2, "out all - " + largest)));
}

TEST_F(DeviceConsoleTest, AWatcherThatAsksIsToldTheEndsOfConnections) {
    watch(true);
    hub->disconnected(page, DisconnectReason::CLOSED);
    EXPECT_EQ(traced(), std::vector<std::string>{});
    EXPECT_EQ(answerTo(R"({"command":"trace","enabled":true,"connections":1})"),
              R"({"error":{"code":"bad-argument","message":"\"connections\" must be true or false"}})");
    console.received(watcher, R"({"command":"trace","enabled":true,"connections":true})");
    watcher->take();
    for (const auto& [reason, direction] :
         {std::pair{DisconnectReason::CLOSED, "in"}, {DisconnectReason::TOO_SLOW, "out"}}) {
        hub->connected(page);
        hub->disconnected(page, reason);
        const auto told = watcher->take();
        ASSERT_EQ(told.size(), 1U);
        EXPECT_NE(told[0].find(std::string(R"("direction":")") + direction + R"(","door":"page","client":)"),
                  std::string::npos)
            << told[0];
        EXPECT_NE(told[0].find(R"(,"closed":true}})"), std::string::npos) << told[0];
    }
}

TEST_F(DeviceConsoleTest, NothingIsTracedOfAClientThatWasCut) {
    hub->registerMessageHandler(7, [&](const std::string&) {
        trace->clientCut(*page);
        rapidjson::Document payload(rapidjson::kObjectType);
        hub->sendResponse("m1", payload);
    });
    console.received(watcher, R"({"command":"trace","enabled":true,"connections":true})");
    watcher->take();
    hub->received(page, R"({"type":7})");
    hub->disconnected(page, DisconnectReason::CLOSED);
    const auto told = watcher->take();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_NE(told[1].find(R"("direction":"out","door":"page","client":1,"closed":true)"), std::string::npos);
}

TEST_F(DeviceConsoleTest, ShowAndTraceAreNotTraced) {
    watch(true);
    answerTo(R"({"command":"show"})");
    answerTo(R"({"command":"trace","enabled":false})");
    EXPECT_EQ(traced(), std::vector<std::string>{});
}

TEST_F(DeviceConsoleTest, TracingEndsOnRequestAndWithTheConnection) {
    watch(true);
    watch(false);
    answerTo(captionsOn);
    EXPECT_EQ(traced(), std::vector<std::string>{});
    watch(true);
    console.disconnected(watcher, DisconnectReason::CLOSED);
    EXPECT_EQ(recording->take().back(), "disconnected device CLOSED");
    answerTo(captionsOn);
    EXPECT_EQ(traced(), std::vector<std::string>{});
    EXPECT_EQ(watcher.use_count(), 1);
    EXPECT_NE(answerTo(R"({"command":"trace"})").find("bad-argument"), std::string::npos);
}

}  // namespace SettingsHost
