#include <stdexcept>

#include "HubFixture.h"

namespace SettingsHandlerKit {

using AnswersTest = HubFixture;

TEST_F(AnswersTest, AChangeIsAnsweredAfterItsEvent) {
    const std::string frame = set("deviceName", "Den");
    EXPECT_EQ(handled(frame), (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den"),
                                     answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")")}));
    EXPECT_EQ(traffic->take(), (Lines{"received " + frame, "sent to " + event(1, "deviceName", "TV", "Den"),
                                      R"(sent to one {"type":24,"messageId":"m","payload":)"
                                      R"({"outcome":"changed","settingDBId":"deviceName","value":"Den"}})",
                                      "handled 24 CHANGED"}));
}

TEST_F(AnswersTest, TheSameValueIsUnchanged) {
    const std::string frame = set("deviceName", "TV");
    const std::string expected = answer(R"("outcome":"unchanged","settingDBId":"deviceName","value":"TV")");
    EXPECT_EQ(handled(frame), Lines{expected});
    EXPECT_EQ(traffic->take(), (Lines{"received " + frame, "sent to one " + expected.substr(6), "handled 24 SILENT"}))
        << "an answer is not counted";
}

TEST_F(AnswersTest, ARequestThatDoesNotAskIsNotAnswered) {
    for (const auto* const more :
         {"", R"("messageId":"m",)", R"("messageId":"m","answer":false,)", R"("messageId":"m","answer":"true",)",
          R"("messageId":"m","answer":1,)", R"("messageId":"m","answer":null,)",
          R"("messageId":"m","answer":false,"answer":true,)", R"("answer":0,)"}) {
        EXPECT_EQ(handled(set("deviceName", "TV", more)), Lines()) << more;
        EXPECT_EQ(handled(set("deviceName", "Den", more, 4)), Lines()) << more;
    }
    EXPECT_EQ(handled(silentSet("deviceName", "Den")),
              (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den")}));
    for (const auto* const frame : {R"({"type":22})", R"({"type":19,"messageId":"m"})"}) {
        hub->received(asker, frame);
        for (const auto& line : taken()) {
            EXPECT_EQ(line.find("asker"), std::string::npos) << line;
        }
    }
}

TEST_F(AnswersTest, RepliesHaveNoAnswerBesides) {
    EXPECT_EQ(handled(R"({"type":7,"messageId":"g","answer":true,"payload":{"settings":["deviceName"]}})"),
              Lines{R"(asker {"type":7,"messageId":"g","payload":{"settings":{"deviceName":"TV"}}})"});
    const auto selected = handled(R"({"type":18,"messageId":"s","answer":true})");
    ASSERT_EQ(selected.size(), 1U);
    EXPECT_EQ(selected[0].rfind(R"(asker {"type":18,"messageId":"s","payload":)", 0), 0U) << selected[0];
    // Nor do they need a message id that is a string.
    hub->received(asker, R"({"type":18,"answer":true})");
    hub->received(asker, R"({"type":7,"answer":true})");
    for (const auto& line : taken()) {
        EXPECT_EQ(line.find("no-message-id"), std::string::npos) << line;
    }
}

TEST_F(AnswersTest, WithoutAMessageIdNothingIsDone) {
    for (const auto* const more :
         {R"("answer":true,)", R"("answer":true,"messageId":7,)", R"("answer":true,"messageId":null,)",
          R"("answer":true,"messageId":7,"messageId":"m",)"}) {
        EXPECT_EQ(handled(set("deviceName", "Den", more)), Lines{refusal("no-message-id", noMessageId)}) << more;
        EXPECT_EQ(traffic->take().back(), "refused no-message-id") << "not handled";
    }
    EXPECT_EQ(handled(R"({"type":22,"answer":true})"), Lines{refusal("no-message-id", noMessageId)});
    EXPECT_EQ(handled(R"({"type":19,"answer":true})"), Lines{refusal("no-message-id", noMessageId)});
    EXPECT_EQ(storage.values["deviceName"], "TV");
    EXPECT_TRUE(log.take().empty()) << "the handler was not called";
    EXPECT_EQ(handled(set("deviceName", "TV", R"("answer":true,"messageId":"",)")),
              Lines{R"(asker {"type":24,"messageId":"","payload":)"
                    R"({"outcome":"unchanged","settingDBId":"deviceName","value":"TV"}})"});
}

TEST_F(AnswersTest, EveryReason) {
    sdk->timezone = "UTC";
    const std::vector<std::pair<std::string, std::string>> refusals{
        {R"({"type":24,"messageId":"m","answer":true,"payload":{"settingDBId":"deviceName","to":"Den"}})",
         R"("outcome":"refused","reason":"incomplete","message":"\"timestamp\" is missing or not an integer",)"
         R"("settingDBId":"deviceName","value":"TV")"},
        {R"({"type":24,"messageId":"m","answer":true})",
         R"("outcome":"refused","reason":"incomplete","message":"\"timestamp\" is missing or not an integer")"},
        {R"({"type":24,"messageId":"m","answer":true,"timestamp":1,"payload":{"settingDBId":7,"to":"Den"}})",
         R"("outcome":"refused","reason":"incomplete","message":"\"settingDBId\" is missing or not a string")"},
        {set("timezone", "Europe/Rome", R"("messageId":"m","answer":true,)", 4),
         R"("outcome":"refused","reason":"stale","message":"a request with the newer time stamp 5 was accepted",)"
         R"("settingDBId":"timezone","value":"UTC","newest":5)"},
        {set("captionsEnabled", "true"),
         R"("outcome":"refused","reason":"read-only","message":"only the device changes this setting",)"
         R"("settingDBId":"captionsEnabled","value":"false")"},
        {set("orliaLocale", "en"),
         R"("outcome":"refused","reason":"wrong-form","message":"must be a JSON array with at least one locale",)"
         R"("settingDBId":"orliaLocale","value":"[\"en-US\"]")"},
        {set("orliaLocale", "{}"),
         R"("outcome":"refused","reason":"wrong-form","message":"must be a JSON array of at most 32 levels",)"
         R"("settingDBId":"orliaLocale","value":"[\"en-US\"]")"}};
    hub->received(asker, set("timezone", "UTC"));
    taken();
    for (const auto& [frame, payload] : refusals) {
        EXPECT_EQ(handled(frame), Lines{answer(payload)}) << frame;
    }
    storage.refusesWrites = true;
    for (const auto* const key : {"deviceName", "tovanEntitlementStatus"}) {
        const std::string name(key);
        const std::string value = name == "deviceName" ? R"(,"value":"TV")" : "";
        EXPECT_EQ(handled(set(name, "Den")),
                  (Lines{"storage.setValue(" + name + ", Den)",
                         answer(std::string(R"("outcome":"refused","reason":"not-stored",)"
                                            R"("message":"the value could not be stored","settingDBId":")")
                                    .append(name)
                                    .append("\"")
                                    .append(value))}));
    }
}

TEST_F(AnswersTest, ATimeStampThatWasSeenIsTheNewest) {
    hub->received(asker, set("deviceName", "Den", "", 9223372036854775807));
    taken();
    EXPECT_EQ(handled(set("deviceName", "TV", R"("messageId":"m","answer":true,)", -1)),
              Lines{answer(R"("outcome":"refused","reason":"stale","message":)"
                           R"("a request with the newer time stamp 9223372036854775807 was accepted",)"
                           R"("settingDBId":"deviceName","value":"Den","newest":9223372036854775807)")});
}

TEST_F(AnswersTest, TheValueIsWhatGetSettingsReports) {
    // The storage takes anything, but an empty value reads as the default.
    EXPECT_EQ(handled(set("captionsFontSize", "FONT_LARGE")).back(),
              answer(R"("outcome":"changed","settingDBId":"captionsFontSize","value":"FONT_LARGE")"));
    EXPECT_EQ(handled(set("captionsFontSize", "")).back(),
              answer(R"("outcome":"changed","settingDBId":"captionsFontSize","value":"FONT_MEDIUM")"));
    EXPECT_EQ(handled(set("a key", "v")).back(), answer(R"("outcome":"changed","settingDBId":"a key","value":"v")"));
    EXPECT_EQ(handled(set("a key", "")).back(), answer(R"("outcome":"changed","settingDBId":"a key")"));
    EXPECT_EQ(handled(set("", "v")).back(), answer(R"("outcome":"changed","settingDBId":"","value":"v")"));
    // Its owner has another value than the one that was announced.
    EXPECT_EQ(handled(set("handsFreeEnabled", "true")).back(),
              answer(R"("outcome":"changed","settingDBId":"handsFreeEnabled","value":"false")"));
    EXPECT_EQ(handled(set("orliaLocale", R"([ \"fr-FR\" ])")).back(),
              answer(R"("outcome":"changed","settingDBId":"orliaLocale","value":"[\"fr-FR\"]")"));
    EXPECT_EQ(handled(set("friendlyName", "Den")).back(),
              answer(R"("outcome":"changed","settingDBId":"friendlyName","value":"TV")"))
        << "this voice SDK does not store it";
}

TEST_F(AnswersTest, AValueThatTheVoiceSdkRefusedWasNotApplied) {
    sdk->refusesSettings = true;
    storage.values["friendlyName"] = "Attic";
    EXPECT_EQ(handled(set("friendlyName", "Den")),
              (Lines{"sdk.applySetting(friendlyName, Den)", event(1, "friendlyName", "TV", "Den"),
                     answer(R"("outcome":"changed","settingDBId":"friendlyName","value":"Attic","applied":false)")}));
}

TEST_F(AnswersTest, AnAnswerComesAfterTheNotice) {
    journal.at("storage.setValue(deviceName", [&] { hub->valueChanged("timezone"); });
    const auto watching = hub->observers().add(std::nullopt, recorder());
    EXPECT_EQ(handled(set("deviceName", "Den")),
              (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den"),
                     R"(all {"notice":{"reread":["timezone"]}})",
                     answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")"),
                     "observer deviceName 'TV' -> 'Den' 1 socket ''", "observer timezone notice"}));
}

TEST_F(AnswersTest, TheSettingsApplicationIsAnsweredForToo) {
    EXPECT_EQ(handled(R"({"type":19,"messageId":"o","answer":true})").back(),
              R"(asker {"type":19,"messageId":"o","payload":{"outcome":"done"}})");
    log.take();
    journal.at("app.launchApp", [] { throw std::runtime_error("launcher"); });
    EXPECT_EQ(handled(R"({"type":19,"messageId":"o","answer":true})").back(),
              R"(asker {"type":19,"messageId":"o","payload":{"outcome":"refused","reason":"not-stored",)"
              R"("message":"the service failed while it handled this"}})");
    EXPECT_EQ(log.take().back(), "3 settings-host:a request of type 19 failed: launcher");
    EXPECT_EQ(traffic->take().back(), "handled 19 FAILED");
}

TEST_F(AnswersTest, ALogOutIsAnsweredForToo) {
    EXPECT_EQ(handled(R"({"type":22,"messageId":"l","answer":true,"payload":{"settingDBId":"deviceName"}})").back(),
              R"(asker {"type":22,"messageId":"l","payload":{"outcome":"done"}})");
    storage.refusesClearing = true;
    EXPECT_EQ(handled(R"({"type":22,"messageId":"l","answer":true})").back(),
              R"(asker {"type":22,"messageId":"l","payload":{"outcome":"refused","reason":"not-stored",)"
              R"("message":"the storage could not be cleared"}})");
}

TEST_F(AnswersTest, AnExceptionOfACollaboratorIsAnsweredFor) {
    journal.at("storage.setValue(deviceName", [] { throw std::runtime_error("disk"); });
    EXPECT_EQ(
        handled(set("deviceName", "Den")).back(),
        answer(R"("outcome":"refused","reason":"not-stored","message":"the service failed while it handled this",)"
               R"("settingDBId":"deviceName","value":"TV")"));
    // The owner had taken the value, and the event was sent.
    journal.at("metrics.recordCounter", [] { throw std::runtime_error("metrics"); });
    EXPECT_EQ(handled(set("deviceName", "Den")).back(),
              answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")"));
    EXPECT_EQ(log.take().back(), "3 settings-host:a request of type 24 failed: metrics");
    EXPECT_EQ(traffic->take().back(), "handled 24 FAILED");
}

TEST_F(AnswersTest, AValueThatCannotBeReadIsAbsent) {
    journal.at("sdk.getTimezone",
               [&] { journal.at("sdk.getTimezone", [] { throw std::runtime_error("voice SDK"); }); });
    EXPECT_EQ(handled(set("timezone", "UTC")).back(), answer(R"("outcome":"changed","settingDBId":"timezone")"));
    EXPECT_EQ(log.take().back(), "3 settings-host:cannot read a value for an answer: voice SDK");
    EXPECT_TRUE(journal.allActionsRun());
}

TEST_F(AnswersTest, TellOfTheRequestAndNotOfWhatObserversOfTheHandlerDoMeanwhile) {
    journal.at("metrics.recordCounter", [&] {
        handler->setSetting("deviceName", "Attic");
        handler->setSetting("timezone", "UTC");
        handler->setSetting("captionsEnabled", "true");
    });
    EXPECT_EQ(handled(set("deviceName", "Den")).back(),
              answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Attic")"))
        << "the newest value";
    EXPECT_TRUE(journal.allActionsRun());
}

TEST_F(AnswersTest, ARequestOfAnObserverInTheProcessIsNotAnsweredToTheClient) {
    const auto asking = hub->observers().add("deviceName", [&](const ObservedSetting& /*what*/) {
        journal.add("observer");
        handler->handleSetSettingRequest(set("timezone", "UTC", R"("messageId":"own","answer":true,)"));
        handler->handleGetSettingsRequest(R"({"type":7,"messageId":"own","payload":{"settings":["deviceName"]}})");
    });
    EXPECT_EQ(
        handled(set("deviceName", "Den")),
        (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den"),
               answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")"), "observer",
               "sdk.setTimezone(UTC)", event(2, "timezone", "America/Vancouver", "UTC", R"("origin":"device")")}));
}

TEST_F(AnswersTest, ALargeAnswerIsNotMadeWhenTheBacklogIsFull) {
    const auto full = std::make_shared<Backlog>(200000);
    hub = std::make_shared<MessageHub>(traffic, std::make_shared<RequestContext>(), full);
    handler = CheckedSettingsHandler::create(
        hub, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal), sdk, launcher,
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal));
    hub->watch(handler);
    storage.values["legacy"] = std::string(250000, 'v');
    handler->initializeSettings();
    taken();
    EXPECT_EQ(handled(set("legacy", "v", R"("messageId":"m","answer":true,)", 1)).back(),
              answer(R"("outcome":"changed","settingDBId":"legacy","value":"v")"));
    storage.values["legacy"] = std::string(250000, 'v');
    EXPECT_EQ(handled(set("legacy", "w", R"("messageId":"m","answer":true,)", 0)), Lines{refusal("busy", noRoom)});
    storage.values["legacy"] = std::string(100000, 'v');
    EXPECT_GT(handled(set("legacy", "w", R"("messageId":"m","answer":true,)", 0)).at(0).size(), 100000U);
}

TEST_F(AnswersTest, AHubThatKnowsNoOutcomesDoesNotAnswer) {
    hub->watch({});
    EXPECT_EQ(handled(set("deviceName", "Den")),
              (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den")}));
    EXPECT_EQ(handled(set("deviceName", "TV", R"("answer":true,)")),
              (Lines{"storage.setValue(deviceName, TV)", event(2, "deviceName", "Den", "TV")}));
}

}  // namespace SettingsHandlerKit
