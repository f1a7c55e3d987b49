#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/protocol/MessageHub.h"

namespace SettingsHandlerKit {

/// The hub with a real handler, whose outcomes it reports.
class HubAndHandlerTest : public ::testing::Test {
protected:
    HubAndHandlerTest() {
        hub->watch(handler);
        hub->connected(client);
        traffic->take();
    }

    SettingsHostTests::LogRecording log;
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<TrafficRecording> traffic = std::make_shared<TrafficRecording>();
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(traffic);
    std::shared_ptr<CheckedSettingsHandler> handler =
        CheckedSettingsHandler::create(hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal),
                                       std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal),
                                       std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal),
                                       std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal),
                                       {[](std::size_t bytes) { return bytes < 100000; }});
    std::shared_ptr<SettingsHandlerTesting::FakeClient> client = std::make_shared<SettingsHandlerTesting::FakeClient>();
};

TEST_F(HubAndHandlerTest, ARejectedRequestIsReportedAndGetsNoReply) {
    log.take();
    const std::string frame = R"({"type":24,"timestamp":1,"payload":{"settingDBId":"orliaLocale","to":"{}"}})";
    hub->received(client, frame);
    EXPECT_TRUE(client->take().empty());
    EXPECT_EQ(log.take(), std::vector<std::string>{
                              "3 settings-host:rejected orliaLocale: must be a JSON array of at most 32 levels"});
    EXPECT_EQ(traffic->take(), (std::vector<std::string>{"received " + frame, "handled 24 REJECTED"}));
    // The guard is for writes alone.
    hub->received(client,
                  R"({"type":7,"messageId":"m","payload":{"settings":[],"settingDBId":"orliaLocale","to":"{}"}})");
    EXPECT_EQ(traffic->take().back(), "handled 7 ANSWERED");
}

TEST_F(HubAndHandlerTest, ARequestForMoreThanThereIsMemoryForIsRefused) {
    storage.values["large"] = std::string(70000, 'v');
    log.take();
    const std::string frame = R"({"type":7,"messageId":"m","payload":{"settings":["large"]}})";
    hub->received(client, frame);
    const auto answer = client->take();
    ASSERT_EQ(answer.size(), 1U);
    EXPECT_EQ(answer[0],
              R"({"error":{"code":"busy","message":"too much data is queued for clients that do not read; try again )"
              R"(later or request fewer settings"}})");
    EXPECT_EQ(traffic->take(), (std::vector<std::string>{"received " + frame, "sent to one " + answer[0],
                                                         "refused busy", "handled 7 ANSWERED"}));
    // The next request is judged by its own outcome.
    hub->received(client, R"({"type":7,"messageId":"m","payload":{"settings":["deviceName"]}})");
    EXPECT_EQ(traffic->take().back(), "handled 7 ANSWERED");
    EXPECT_EQ(client->take().size(), 1U);
}

TEST_F(HubAndHandlerTest, AHandlerThatIsGoneIsNotAsked) {
    handler.reset();
    hub->registerMessageHandler(24, [](const std::string&) {});
    traffic->take();
    hub->received(client, R"({"type":24})");
    EXPECT_EQ(traffic->take(), (std::vector<std::string>{R"(received {"type":24})", "handled 24 SILENT"}));
}

}  // namespace SettingsHandlerKit
