#include <set>

#include "HandlerFixture.h"

namespace SettingsHandlerTests {

/// All log lines of the library with their levels. People who operate devices search for these texts, so a change here
/// is a change of an interface. K, A, B stand for what the steps below pass.
const std::vector<std::string> allLines{
    "0 SettingsHandler:Initialized Settings Handler",
    "0 SettingsHandler:SettingDBId: K",
    "0 SettingsHandler:getSettings",
    R"(0 SettingsHandler:orliaLocale was not changed, oldValue is the same as newValue: oldValue(["en-US"]), newValue(["en-US"]))",
    "0 SettingsHandler:orliaTimezone was not changed, oldValue is the same as newValue: oldValue(A), newValue(A)",
    "0 SettingsHandler:setSetting",
    R"(1 SettingsHandler:Current locale is empty)",
    "1 SettingsHandler:Default value retrieved for deviceName",
    "1 SettingsHandler:Handling GetSettings request",
    "1 SettingsHandler:Handling SetSettings request",
    "1 SettingsHandler:K new value: 'A'",
    "1 SettingsHandler:No value retrieved for orliaLocale",
    "1 SettingsHandler:Notified of HandsFreeState changing. New value: true",
    R"(1 SettingsHandler:Notified of locale change. New value: ["A","B"])",
    "1 SettingsHandler:Notified of system setting changing: K. New value: A",
    R"(1 SettingsHandler:OrliaLocale changed from '["en-US"]' to '["A"]')",
    "1 SettingsHandler:OrliaTimezone changed from 'A' to 'B'",
    "1 SettingsHandler:friendlyName changed from 'TV' to 'A'",
    "1 SettingsHandler:friendlyName was not updated: new value: 'A' is the same",
    "1 SettingsHandler:getCurrentSettingsMap",
    "1 SettingsHandler:isRequestValid",
    "1 SettingsHandler:migrateExistingDeviceSettings",
    R"(1 SettingsHandler:notifyLocaleChange: Incoming primary locale (A) is identical to current primary locale (["A"]))",
    "1 SettingsHandler:notifyLocaleChange: Notified of locale change. New value: A",
    "1 SettingsHandler:onEntitlementStatusChanged: A",
    "1 SettingsHandler:timezone migrated successfully",
    "1 SettingsHandler:tovanEntitlementStatus changed from '' to 'A'",
    "1 SettingsHandler:tovanEntitlementStatus was not updated. New value: 'A' was not saved.",
    "1 Setting initial PTT always on status value %s:false",
    "1 Setting initial hands free always on status value %s:false",
    "1 Setting initial hands free status value %s:false",
    "2 SettingsHandler:addEntitlementStatusObserver: Given observer is null",
    "2 SettingsHandler:addFriendlyNameObserver: Given observer is null",
    "2 SettingsHandler:addOrliaLocaleObserver: Given observer is null",
    "2 SettingsHandler:removeEntitlementStatusObserver: Given observer is null",
    "2 SettingsHandler:removeFriendlyNameObserver: Given observer is null",
    "3 SettingsHandler:Default value was not found for K",
    "3 SettingsHandler:Error clearing storage on logout",
    "3 SettingsHandler:GetSettings Message Id not found or has incorrect format",
    "3 SettingsHandler:GetSettings settings field not found in payload or has incorrect format",
    "3 SettingsHandler:Invalid Request: SettingsDBId is invalid or request is older than current request",
    "3 SettingsHandler:Invalid SDK SettingDBId: captionsEnabled",
    "3 SettingsHandler:K new value: 'B' value was not written properly",
    "3 SettingsHandler:Message ID has incorrect format",
    "3 SettingsHandler:Message ID not found",
    "3 SettingsHandler:Payload was not parsed successfully",
    "3 SettingsHandler:SetSetting Message payload not found",
    "3 SettingsHandler:SetSetting Message timestamp not found",
    "3 SettingsHandler:SetSetting settingId not found in payload or has incorrect format",
    "3 SettingsHandler:orliaLocale is empty or not in the correct format",
    "3 SettingsHandler:orliaLocale is not in the proper format",
    "3 SettingsHandler:timezone was not migrated successfully",
    "3 SettingsHandler:to value field in payload not found or has incorrect format",
};

class LogLines : public HandlerTest {
protected:
    void writeAndNotify() {
        handler->setSetting("K", "A");
        storage.refusesWrites = true;
        handler->setSetting("K", "B");
        storage.refusesWrites = false;
        for (int round = 0; round < 2; ++round) {
            handler->setSetting("friendlyName", "A");
            handler->setSetting("tovanEntitlementStatus", "A");
            handler->setSetting("timezone", "A");
        }
        handler->setSetting("timezone", "B");
        handler->setSetting("captionsEnabled", "true");
        for (const auto* value : {R"(["en-US"])", "", "[]", R"(["A"])"}) {
            handler->setSetting("orliaLocale", value);
        }
        handler->notifyLocaleChange(std::string("A"));
        handler->notifyLocaleChange(std::vector<std::string>{"A", "B"});
        sdk->locales.clear();
        handler->notifyLocaleChange(std::string("A"));
        handler->notifySystemSettingChanged("K", "A");
        handler->notifyHandsfreeStateChanged(true);
        handler->addOrliaLocaleObserver(nullptr);
        handler->addFriendlyNameObserver(nullptr);
        handler->removeFriendlyNameObserver(nullptr);
        handler->addEntitlementStatusObserver(nullptr);
        handler->removeEntitlementStatusObserver(nullptr);
    }

    void request() {
        for (const auto* text :
             {"{", R"({"payload":{}})", R"({"timestamp":5})", R"({"timestamp":5,"payload":{}})",
              R"({"timestamp":5,"payload":{"settingDBId":"K"}})", R"({"timestamp":4,"payload":{"settingDBId":"K"}})"}) {
            deliver(24, text);
        }
        for (const auto* text : {"{", "{}", R"({"messageId":"m","payload":{}})"}) {
            deliver(7, text);
        }
        deliver(18, "{}");
        deliver(18, R"({"messageId":1})");
        storage.refusesClearing = true;
        deliver(22, "");
    }

    void start() {
        // With a transport of its own, because it goes at once and the fixture's would deliver to it.
        SettingsHandler::SettingsHandler::create(std::make_shared<SettingsHandlerTesting::FakeTransport>(journal), storage,
                                                 metrics, sdk, app, device);
        handler->initializeSettings();
        handler->getSettings({"K"});
        handler->getCurrentSettingsMap();
        storage.values["timezone"] = "B";
        handler->migrateExistingDeviceSettings();
        handler->migrateExistingDeviceSettings();
        storage.values["timezone"] = "B";
        handler->migrateExistingDeviceSettings();
    }
};

TEST_F(LogLines, AreTheseAndNoOthers) {
    start();
    sdk->timezone = "start";
    sdk->locales = {"en-US"};
    writeAndNotify();
    request();

    std::set<std::string> seen;
    for (const auto& entry : journal.take()) {
        if (entry.rfind("log ", 0) == 0) {
            seen.insert(entry.substr(4));
        }
    }
    // Lines that differ from a listed one in their arguments only.
    const std::vector<std::string> sameForm{
        "0 SettingsHandler:SettingDBId: ",
        "1 SettingsHandler:Default value retrieved for ",
        "1 SettingsHandler:No value retrieved for ",
        "1 SettingsHandler:OrliaTimezone changed from ",
        "1 SettingsHandler:handsFreeEnabled changed from ",
        "1 SettingsHandler:K new value: ",
        "3 SettingsHandler:Default value was not found for ",
        "0 SettingsHandler:orliaTimezone was not changed, ",
    };
    const std::set<std::string> listed(allLines.begin(), allLines.end());
    for (const auto& line : listed) {
        EXPECT_EQ(seen.count(line), 1U) << "never logged: " << line;
    }
    for (const auto& line : seen) {
        const bool known =
            listed.count(line) > 0 ||
            std::any_of(sameForm.begin(), sameForm.end(), [&](const auto& form) { return line.rfind(form, 0) == 0; });
        EXPECT_TRUE(known) << "not listed: " << line;
    }
}

}  // namespace SettingsHandlerTests
