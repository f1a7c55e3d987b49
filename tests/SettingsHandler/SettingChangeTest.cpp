#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using SettingChange = HandlerTest;

TEST_F(SettingChange, SendsTheEventThenCountsThenRecords) {
    std::string old = "false";
    handler->settingChanged("doNotDisturbEnabled", old, "true");
    expectJournal(
        (Entries{R"(transport.sendMessage(25, {"settingDBId":"doNotDisturbEnabled","from":"false","to":"true"}))",
                 "metrics.recordCounter(doNotDisturbEnabled_true, 0, 1, 1)",
                 "metrics.recordEvent(app_events, AUTO, interaction_name=doNotDisturbEnabled_true)"}));
    EXPECT_EQ(old, "false");
}

TEST_F(SettingChange, TheCacheHasTheNewValueWhenTheEventIsSent) {
    std::string seen;
    journal.at("transport.sendMessage", [&] { seen = handler->getCurrentSettingsMap().at("deviceName"); });
    std::string old = "Den";
    handler->settingChanged("deviceName", old, "Attic");
    EXPECT_EQ(seen, "Attic");
}

/// Moves messages away, to read them later.
class TransportThatKeeps : public SettingsHandlerTesting::FakeTransport {
public:
    using FakeTransport::FakeTransport;
    std::string sendMessage(int /*messageType*/, rapidjson::Document& payload) override {
        kept.push_back(std::move(payload));
        return "";
    }
    void sendResponse(const std::string& /*messageId*/, rapidjson::Document& payload) override {
        kept.push_back(std::move(payload));
    }

    std::vector<rapidjson::Document> kept;
};

TEST_F(SettingChange, MessagesOwnTheirMemory) {
    const auto keeping = std::make_shared<TransportThatKeeps>(journal);
    OpenHandler talking(keeping, storage, metrics, sdk, app, device);
    std::string old = "a name that fits into no small buffer";
    talking.settingChanged("deviceName", old, "another name that fits into no small buffer");
    storage.values["deviceName"] = old;
    talking.handleGetSettingsRequest(R"({"messageId":"m1","payload":{"settings":["deviceName"]}})");
    talking.handleIsOrliaSelectedVARequest(R"({"messageId":"m1"})");
    ASSERT_EQ(keeping->kept.size(), 3U);
    using SettingsHandlerTesting::jsonText;
    EXPECT_EQ(jsonText(keeping->kept[0]),
              R"({"settingDBId":"deviceName","from":"a name that fits into no small buffer",)"
              R"("to":"another name that fits into no small buffer"})");
    EXPECT_EQ(jsonText(keeping->kept[1]), R"({"settings":{"deviceName":"a name that fits into no small buffer"}})");
    EXPECT_EQ(jsonText(keeping->kept[2]), R"({"isOrliaSelectedAsVA":true})");
}

TEST_F(SettingChange, EqualValuesAreCachedAndReportedToo) {
    std::string old = "x";
    handler->settingChanged("deviceName", old, "x");
    expectJournal(changed("deviceName", "x", "x"));
    EXPECT_EQ(cached("deviceName"), "x");
}

TEST_F(SettingChange, AnEmptyValueLeavesTheSeparatorAtTheEnd) {
    handler->emitSettingMetric("deviceName", "");
    expectJournal((Entries{"metrics.recordCounter(deviceName_, 0, 1, 1)",
                           "metrics.recordEvent(app_events, AUTO, interaction_name=deviceName_)"}));
}

TEST_F(SettingChange, AMetricContainsALongValueInFull) {
    const std::string value(50000, 'v');
    handler->emitSettingMetric("k", value);
    handler->emitSettingMetric("k", value);
    EXPECT_EQ(journal.take().size(), 4U) << "nothing is left out";
}

TEST_F(SettingChange, RendersListsAsCompactJson) {
    EXPECT_EQ(handler->stringifyVector({}), "[]");
    EXPECT_EQ(handler->stringifyVector({"en-US"}), R"(["en-US"])");
    EXPECT_EQ(handler->stringifyVector({"en-US", "", "a\"b\\"}), R"(["en-US","","a\"b\\"])");
    EXPECT_EQ(handler->stringifyVector({std::string("a\0b", 3), "é"}), "[\"a\\u0000b\",\"é\"]");
}

}  // namespace SettingsHandlerTests
