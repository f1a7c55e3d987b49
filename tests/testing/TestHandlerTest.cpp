#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/TestHandler.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

namespace SettingsHandlerTesting {

using Entries = std::vector<std::string>;

TEST(TestHandlerTest, StartsInitialisedWithAnEmptyJournal) {
    TestHandler handler;
    EXPECT_EQ(handler.journal.take(), Entries{});
    EXPECT_EQ(handler.sdkBridge->applied.size(), 3U) << "initialisation tells the SDK the three modes";
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "TV");
}

TEST(TestHandlerTest, AnswersRequestsAndAnnouncesChanges) {
    TestHandler handler;
    handler.transport->request(CommunicationHandler::SET_SETTINGS, changePayload("deviceName", "Den"));
    EXPECT_EQ(handler.transport->request(CommunicationHandler::GET_SETTINGS, settingsPayload({"deviceName"})),
              R"({"settings":{"deviceName":"Den"}})");
    EXPECT_EQ(handler.transport->takeEvents(),
              (std::vector<SentMessage>{{25, "event-1", R"({"settingDBId":"deviceName","from":"TV","to":"Den"})"}}));
}

TEST(TestHandlerTest, GivesBackWhatTheSdkIsTold) {
    TestHandler handler;
    for (const std::string key : {"handsFreeEnabled", "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        EXPECT_EQ(handler->getSettings({key}).at(key), "false");
        EXPECT_TRUE(handler->setSetting(key, "true"));
        EXPECT_EQ(handler->getSettings({key}).at(key), "true");
    }
    EXPECT_TRUE(handler->setSetting("friendlyName", "Den"));
    EXPECT_EQ(handler->getSettings({"friendlyName"}).at("friendlyName"), "Den");
}

TEST(TestHandlerTest, IsMadeInTheSurroundingsThatAreArranged) {
    Journal ownJournal;
    FakeStorage ownStorage(ownJournal);
    ownStorage.put("deviceName", "Own");
    TestHandler handler([&](TestHandler& around) {
        around.storage.put("deviceName", "Fake");
        around.deviceInfo->switchMode(handsFreeMode, true);
        around.used.storage = &ownStorage;
    });
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "Own");
    EXPECT_EQ(handler.sdkBridge->applied.at("handsFreeEnabled"), "true");
}

TEST(TestHandlerTest, IsSubscribedToTheDeviceLayer) {
    TestHandler handler;
    auto& layer = handler.deviceLayer;
    layer.changeLocale("fr-FR");
    layer.changeLocales({"es-US", "en-US"});
    layer.changeTimezone("Europe/Paris");
    layer.changeNetworkConnection("wired");
    layer.changeMicrophoneAvailability("available");
    layer.changeAudioGuidance(true);
    layer.changeDeviceMode("store");
    EXPECT_EQ(handler.journal.take(), (Entries{"sdk.getLocales()", "sdk.setLocales(fr-FR)",
                                               "sdk.setLocales(es-US|en-US)", "sdk.setTimezone(Europe/Paris)"}));
    layer.changeSystemSetting("deviceName", "Den");
    EXPECT_EQ(handler.storage.stored("deviceName"), "Den");
    layer.switchHandsFree(true);
    EXPECT_EQ(handler.sdkBridge->applied.at("handsFreeEnabled"), "true");
    EXPECT_EQ(handler->getSettings({"handsFreeEnabled"}).at("handsFreeEnabled"), "true");
}

TEST(FakeDeviceLayerTest, SkipsDestroyedObservers) {
    Journal journal;
    const auto info = std::make_shared<FakeDeviceInfo>(journal);
    FakeDeviceLayer layer(info);
    auto handler = std::make_unique<TestHandler>();
    layer.subscribe(handler->handler, handler->handler);
    handler.reset();
    layer.changeLocale("fr-FR");
    layer.switchHandsFree(true);
    EXPECT_EQ(info->getDeviceInfo().at(handsFreeMode), "on");
}

/// Accepts every request, however old.
class AcceptingHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::SettingsHandler;
    bool isRequestValid(std::string& /*settingDBId*/, long /*timestamp*/) override { return true; }
};

TEST(TestHandlerTest, MakesDerivedHandlers) {
    BasicTestHandler<AcceptingHandler> handler;
    const auto deliver = [&](int time, const std::string& value) {
        handler.transport->deliver(CommunicationHandler::SET_SETTINGS,
                                   requestText(*handler.transport, CommunicationHandler::SET_SETTINGS, "m", time,
                                               changePayload("deviceName", value)));
    };
    deliver(2, "newer");
    deliver(1, "older");
    EXPECT_EQ(handler.storage.stored("deviceName"), "older");
}

TEST(RecordingLogTest, KeepsLevelsAndTextsWhileItLives) {
    TestHandler handler;
    handler->addFriendlyNameObserver(nullptr);
    RecordingLog log;
    EXPECT_EQ(log.take(), std::vector<LogLine>{});
    handler->addFriendlyNameObserver(nullptr);
    EXPECT_EQ(log.take(),
              (std::vector<LogLine>{{2, "SettingsHandler:addFriendlyNameObserver: Given observer is null"}}));
    handler->setSetting("captionsEnabled", "true");
    EXPECT_EQ(log.take(VessaLogger::ERROR),
              (std::vector<LogLine>{{3, "SettingsHandler:Invalid SDK SettingDBId: captionsEnabled"}}));
    EXPECT_EQ(log.take(), std::vector<LogLine>{}) << "the traces went with it";
}

TEST(PlatformRecordingTest, RecordsLinesAndMetricsCacheInOrderWithTheRest) {
    TestHandler handler;
    handler->setSetting("orliaLocale", R"(["fr-FR"])");
    handler.journal.take();
    const PlatformRecording recording(handler.journal);
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"(["es-US"])"));
    const auto entries = handler.journal.take();
    ASSERT_GT(entries.size(), 2U);
    EXPECT_EQ(entries.front(), "log 0 SettingsHandler:setSetting");
    EXPECT_EQ(entries.back(), "metricsCache.setOrliaLocale(es-US)");
}

}  // namespace SettingsHandlerTesting
