#include <algorithm>
#include <stdexcept>

#include "HubFixture.h"

namespace SettingsHandlerKit {

namespace {

std::string batchOf(const std::vector<std::string>& requests) {
    std::string elements;
    for (const auto& request : requests) {
        elements += (elements.empty() ? "" : ",") + request;
    }
    return R"({"batch":[)" + elements + "]}";
}

std::string getSettings(const std::string& messageId, const std::string& keys = R"("deviceName")") {
    return R"({"type":7,"messageId":")" + messageId + R"(","payload":{"settings":[)" + keys + "]}}";
}

std::string values(const std::string& messageId, const std::string& settings) {
    return R"(asker {"type":7,"messageId":")" + messageId + R"(","payload":{"settings":{)" + settings + "}}}";
}

const std::string badBatch = R"(asker {"error":{"code":"bad-batch","message":)"
                             R"("\"batch\" must be an array of 1 to 64 requests of the types 7, 18 and 24"}})";
const std::string notStored = R"("outcome":"refused","reason":"not-stored","message":"the batch could not be stored",)";

}  // namespace

class BatchesTest : public HubFixture {
protected:
    BatchesTest() { hub->use(transactions); }

    static std::string answered(const std::string& key, const std::string& value, const std::string& messageId = "m",
                                long timestamp = 5) {
        return set(key, value, R"("messageId":")" + messageId + R"(","answer":true,)", timestamp);
    }

    /// The history, as a client sees it.
    std::string events() {
        hub->received(asker, R"({"messageId":"y","history":{}})");
        return taken().at(0);
    }
};

TEST_F(BatchesTest, AreStoredBeforeAnyFrameThatTellsOfThem) {
    const std::string frame = batchOf(
        {answered("deviceName", "Den"), getSettings("g1"), silentSet("timezone", "UTC"),
         R"({"type":18,"messageId":"s"})", answered("deviceName", "Den", "m4"),
         set("deviceName", "Attic", R"("answer":true,)"), silentSet("captionsEnabled", "true"),
         answered("deviceName", "Attic", "m7", 4), set("deviceName", "Attic", R"("client":"\n",)"),
         set("deviceName", "Attic", R"("client":"remote",)"), getSettings("g10", R"("deviceName","timezone")")});
    const auto lines = handled(frame);
    EXPECT_EQ(lines, (Lines{"begin", "storage.setValue(deviceName, Den)", "sdk.setTimezone(UTC)",
                            "storage.setValue(deviceName, Attic)", "commit", event(1, "deviceName", "TV", "Den"),
                            answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")"),
                            values("g1", R"("deviceName":"Den")"), event(2, "timezone", "America/Vancouver", "UTC"),
                            R"(asker {"type":18,"messageId":"s","payload":{"isOrliaSelectedAsVA":true}})",
                            answer(R"("outcome":"unchanged","settingDBId":"deviceName","value":"Den")", "m4"),
                            refusal("no-message-id", noMessageId, 5),
                            answer(R"("outcome":"refused","reason":"stale",)"
                                   R"("message":"a request with the newer time stamp 5 was accepted",)"
                                   R"("settingDBId":"deviceName","value":"Den","newest":5)",
                                   "m7"),
                            refusal("bad-request", badClient, 8),
                            event(3, "deviceName", "Den", "Attic", R"("origin":"socket","client":"remote")"),
                            values("g10", R"("deviceName":"Attic","timezone":"UTC")")}));
    EXPECT_EQ(events(),
              R"(asker {"messageId":"y","history":{"events":[)" + event(1, "deviceName", "TV", "Den").substr(4) + "," +
                  event(2, "timezone", "America/Vancouver", "UTC").substr(4) + "," +
                  event(3, "deviceName", "Den", "Attic", R"("origin":"socket","client":"remote")").substr(4) + "]}}");
}

TEST_F(BatchesTest, AreReportedToTheObserversOfTheTrafficAsTheyAreSent) {
    const std::string frame = batchOf({silentSet("deviceName", "Den"), set("timezone", "UTC", R"("answer":true,)"),
                                       R"({"type":18,"messageId":"s"})", silentSet("captionsEnabled", "true")});
    journal.at("commit", [&] {
        EXPECT_EQ(traffic->take(),
                  (Lines{"received " + frame, "handled 24 CHANGED", "handled 18 ANSWERED", "handled 24 SILENT"}));
    });
    hub->received(asker, frame);
    EXPECT_EQ(traffic->take(),
              (Lines{"sent to " + event(1, "deviceName", "TV", "Den"),
                     "sent to one" + refusal("no-message-id", noMessageId, 1).substr(5), "refused no-message-id",
                     R"(sent to one {"type":18,"messageId":"s","payload":{"isOrliaSelectedAsVA":true}})"}));
}

TEST_F(BatchesTest, ARequestReachesTheHandlerAsCompactTextWithAllItsMembers) {
    Lines delivered;
    for (const int type : {7, 18, 24}) {
        hub->registerMessageHandler(type, [&](const std::string& text) { delivered.push_back(text); });
    }
    hub->received(
        asker,
        "{ \"batch\" : [ { \"type\" : 24 , \"type\":22, \"a\" : [ 1 , -2.5 , null ] ,\n\"a\":\"\\u00e4\\n\\u0000\" },"
        "{\"payload\":{},\"type\":7,\"batch\":[]} , {\"type\":18,\"timestamp\":9223372036854775807}]}");
    EXPECT_EQ(delivered,
              (Lines{"{\"type\":24,\"type\":22,\"a\":[1,-2.5,null],\"a\":\"\xc3\xa4\\n\\u0000\"}",
                     R"({"payload":{},"type":7,"batch":[]})", R"({"type":18,"timestamp":9223372036854775807})"}));
}

TEST_F(BatchesTest, WhatIsNoBatchIsRefusedAndNothingIsDone) {
    const std::string good = silentSet("deviceName", "Den");
    for (const auto& batch :
         {std::string("[]"), std::string("{}"), std::string("null"), std::string("1"), std::string("\"x\""), good,
          "[" + good + ",1]", "[" + good + ",[]]", "[" + good + ",null]", "[" + good + ",{}]",
          "[" + good + R"(,{"type":"24"}])", "[" + good + R"(,{"type":24.0}])", "[" + good + R"(,{"type":19}])",
          "[" + good + R"(,{"type":22}])", "[" + good + R"(,{"type":25}])", "[" + good + R"(,{"type":22,"type":24}])",
          "[" + good + R"(,{"batch":[]}])", "[" + good + R"(,{"messageId":"h","hello":{}}])"}) {
        EXPECT_EQ(handled(R"({"messageId":"b","batch":)" + batch + "}"), Lines{badBatch}) << batch;
        EXPECT_EQ(traffic->take().back(), "refused bad-batch") << "not handled";
    }
    EXPECT_TRUE(log.take().empty()) << "the handler was not called";
    EXPECT_EQ(handled(R"({"batch":[],"batch":[)" + good + "]}"), Lines{badBatch}) << "the first one counts";
    EXPECT_EQ(handled(R"({"type":25,"batch":[)" + good + "]}").at(0).substr(0, 38),
              R"(asker {"error":{"code":"unknown-type",)")
        << "a request, whatever else it has";
}

TEST_F(BatchesTest, HaveOneTo64Requests) {
    std::vector<std::string> requests(64, R"({"type":18,"messageId":"s"})");
    EXPECT_EQ(handled(batchOf(requests)).size(), 2U + 64U);
    requests.push_back(requests[0]);
    EXPECT_EQ(handled(batchOf(requests)), Lines{badBatch});
    EXPECT_EQ(handled(batchOf({requests[0]})).size(), 2U + 1U);
}

TEST_F(BatchesTest, ANoticeComesAfterTheRequestThatCausedIt) {
    journal.at("storage.setValue(deviceName", [&] { hub->valueChanged("captionsEnabled"); });
    journal.at("sdk.setTimezone", [&] { hub->valueChanged("timezone"); });
    const auto watching = hub->observers().add(std::nullopt, recorder());
    EXPECT_EQ(handled(batchOf({silentSet("deviceName", "Den"), silentSet("timezone", "UTC"), getSettings("g")})),
              (Lines{"begin", "storage.setValue(deviceName, Den)", "sdk.setTimezone(UTC)", "commit",
                     event(1, "deviceName", "TV", "Den"), R"(all {"notice":{"reread":["captionsEnabled"]}})",
                     event(2, "timezone", "America/Vancouver", "UTC"), values("g", R"("deviceName":"Den")"),
                     "observer deviceName 'TV' -> 'Den' 1 socket ''", "observer captionsEnabled notice",
                     "observer timezone 'America/Vancouver' -> 'UTC' 2 socket ''"}));
}

TEST_F(BatchesTest, AnExceptionOfTheHandlerEndsItsRequestAlone) {
    journal.at("storage.setValue(deviceName", [] { throw std::runtime_error("disk"); });
    EXPECT_EQ(handled(batchOf({answered("deviceName", "Den"), answered("timezone", "UTC")})),
              (Lines{"begin", "storage.setValue(deviceName, Den)", "sdk.setTimezone(UTC)", "commit",
                     answer(R"("outcome":"refused","reason":"not-stored",)"
                            R"("message":"the service failed while it handled this",)"
                            R"("settingDBId":"deviceName","value":"TV")"),
                     event(1, "timezone", "America/Vancouver", "UTC"),
                     answer(R"("outcome":"changed","settingDBId":"timezone","value":"UTC")")}));
    Lines errors;
    for (const auto& line : log.take()) {
        if (line[0] == '3') {
            errors.push_back(line);
        }
    }
    EXPECT_EQ(errors, Lines{"3 settings-host:a request of type 24 failed: disk"});
}

TEST_F(BatchesTest, WithoutTransactionsTheRequestsAreHandledOneAfterTheOther) {
    hub->use(nullptr);
    EXPECT_EQ(handled(batchOf({answered("deviceName", "Den"), getSettings("g")})),
              (Lines{"storage.setValue(deviceName, Den)", event(1, "deviceName", "TV", "Den"),
                     answer(R"("outcome":"changed","settingDBId":"deviceName","value":"Den")"),
                     values("g", R"("deviceName":"Den")")}));
}

TEST_F(BatchesTest, RepliesThatWouldMakeTheirClientTooSlowAreNotMade) {
    storage.values["large"] = std::string(400000, 'v');
    storage.values["small"] = std::string(60000, 'v');
    const auto lines = handled(
        batchOf({getSettings("g0", R"("large")"), getSettings("g1", R"("large")"), getSettings("g2", R"("large")"),
                 getSettings("g3", R"("small")"), set("small", "x", R"("messageId":"m","answer":true,)"),
                 getSettings("g5", R"("large")"), getSettings("g6"), getSettings("g7", R"("large")")}));
    Lines heads;
    for (const auto& line : lines) {
        heads.push_back(line.substr(0, 32));
    }
    EXPECT_EQ(heads, (Lines{"begin", "storage.setValue(small, x)", "commit", R"(asker {"type":7,"messageId":"g0")",
                            R"(asker {"type":7,"messageId":"g1")", R"(asker {"error":{"code":"busy","m)",
                            R"(asker {"type":7,"messageId":"g3")", R"(all {"type":25,"messageId":"host)",
                            R"(asker {"type":24,"messageId":"m")", R"(asker {"error":{"code":"busy","m)",
                            R"(asker {"type":7,"messageId":"g6")", R"(asker {"error":{"code":"busy","m)"}));
    EXPECT_EQ(lines.at(5), refusal("busy", noRoom, 2));
    EXPECT_EQ(lines.back(), refusal("busy", noRoom, 7));
    // Nothing is left of it.
    EXPECT_EQ(handled(getSettings("g", R"("large")")).at(0).substr(0, 31), R"(asker {"type":7,"messageId":"g")");
}

TEST_F(BatchesTest, ThatCannotBeStoredLeaveNothingBehind) {
    hub->received(asker, answered("timezone", "UTC", "m", 1));
    taken();
    traffic->take();
    const std::string before = events();
    const auto watching = hub->observers().add(std::nullopt, recorder());
    transactions->fails = true;
    transactions->onRestore = [this] { handler->initializeSettings(); };
    const std::string frame =
        batchOf({getSettings("g0"), answered("deviceName", "Den", "m1"), silentSet("companionDevice", "Phone"),
                 getSettings("g3"), set("captionsStyles", "x", R"("answer":true,)"), R"({"type":18,"messageId":"s5"})",
                 answered("deviceName", "TV", "m6", 4), set("deviceName", "Attic", R"("client":7,)"),
                 R"({"type":24,"messageId":"m8","answer":true,"timestamp":1,"payload":{"settingDBId":7,"to":"x"}})"});
    traffic->take();
    EXPECT_EQ(handled(frame), (Lines{"begin",
                                     "storage.setValue(deviceName, Den)",
                                     "storage.setValue(companionDevice, Phone)",
                                     "commit",
                                     "restore companionDevice deviceName",
                                     "sdk.setHandsFreeEnabled(false)",
                                     "sdk.applySetting(handsFreeAlwaysOnEnabled, false)",
                                     "sdk.applySetting(pttAlwaysOnEnabled, false)",
                                     values("g0", R"("deviceName":"TV")"),
                                     answer(notStored + R"("settingDBId":"deviceName","value":"TV")", "m1"),
                                     values("g3", R"("deviceName":"TV")"),
                                     refusal("no-message-id", noMessageId, 4),
                                     R"(asker {"type":18,"messageId":"s5","payload":{"isOrliaSelectedAsVA":true}})",
                                     answer(notStored + R"("settingDBId":"deviceName","value":"TV")", "m6"),
                                     refusal("bad-request", badClient, 7),
                                     answer(notStored.substr(0, notStored.size() - 1), "m8"),
                                     R"(all {"notice":{"reread":["captionsStyles","companionDevice","deviceName"]}})",
                                     "observer captionsStyles notice",
                                     "observer companionDevice notice",
                                     "observer deviceName notice"}));
    const auto seen = traffic->take();
    EXPECT_EQ(Lines(seen.begin(), seen.begin() + 8),
              (Lines{"received " + frame, "handled 7 ANSWERED", "handled 24 CHANGED", "handled 24 CHANGED",
                     "handled 7 ANSWERED", "handled 18 ANSWERED", "handled 24 SILENT", "handled 24 SILENT"}))
        << "as they were handled";
    EXPECT_EQ(std::count_if(seen.begin(), seen.end(), [](const auto& line) { return line.rfind("handled", 0) == 0; }),
              7)
        << "each is counted once";
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "refused no-message-id"), 1);
    EXPECT_EQ(events(), before) << "the notice is no event";
    EXPECT_EQ(hub->eventsSent(), 1U);
    // The numbers of events go on without a gap.
    transactions->fails = false;
    EXPECT_EQ(handled(batchOf({silentSet("deviceName", "Attic")})),
              (Lines{"begin", "storage.setValue(deviceName, Attic)", "commit", event(2, "deviceName", "TV", "Attic"),
                     "observer deviceName 'TV' -> 'Attic' 2 socket ''"}));
}

TEST_F(BatchesTest, ThatCannotBeStoredTellWhatHappensMeanwhile) {
    transactions->fails = true;
    transactions->onRestore = [this] {
        handler->setSetting("timezone", "UTC");
        hub->valueChanged("captionsEnabled");
    };
    const auto watching = hub->observers().add(std::nullopt, recorder());
    EXPECT_EQ(handled(batchOf({silentSet("timezone", "Europe/Rome"), getSettings("g", R"("timezone")")})),
              (Lines{"begin", "sdk.setTimezone(Europe/Rome)", "commit", "restore timezone", "sdk.setTimezone(UTC)",
                     event(1, "timezone", "Europe/Rome", "UTC", R"("origin":"device")"),
                     values("g", R"("timezone":"UTC")"), R"(all {"notice":{"reread":["captionsEnabled","timezone"]}})",
                     "observer timezone 'Europe/Rome' -> 'UTC' 1 device ''", "observer captionsEnabled notice",
                     "observer timezone notice"}));
}

TEST_F(BatchesTest, OfQuestionsAloneNeedNoNotice) {
    transactions->fails = true;
    EXPECT_EQ(handled(batchOf({getSettings("g")})),
              (Lines{"begin", "commit", "restore", values("g", R"("deviceName":"TV")")}));
}

TEST_F(BatchesTest, AnswerAlsoWhenTheSettingsCannotBeRestored) {
    transactions->fails = true;
    transactions->onRestore = [] { throw std::runtime_error("database"); };
    EXPECT_EQ(handled(batchOf({answered("deviceName", "Den")})),
              (Lines{"begin", "storage.setValue(deviceName, Den)", "commit", "restore deviceName",
                     answer(notStored + R"("settingDBId":"deviceName","value":"TV")"),
                     R"(all {"notice":{"reread":["deviceName"]}})"}));
    const auto lines = log.take();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "3 settings-host:cannot restore the settings after a failed batch: database"),
              1);
}

TEST_F(BatchesTest, ARequestOfAnObserverComesAfterTheBatch) {
    const auto chained = hub->observers().add(
        "deviceName", [&](const ObservedSetting& /*what*/) { handler->setSetting("timezone", "UTC"); });
    EXPECT_EQ(handled(batchOf({silentSet("deviceName", "Den"), getSettings("g", R"("timezone")")})),
              (Lines{"begin", "storage.setValue(deviceName, Den)", "commit", event(1, "deviceName", "TV", "Den"),
                     values("g", R"("timezone":"America/Vancouver")"), "sdk.setTimezone(UTC)",
                     event(2, "timezone", "America/Vancouver", "UTC", R"("origin":"device")")}));
}

}  // namespace SettingsHandlerKit
