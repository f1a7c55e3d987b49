#include <set>

#include <fnmatch.h>

#include "HandlerFixture.h"

namespace SettingsHandlerTests {

/// All log lines of the library with their levels; `*` is a value. Operators search for these texts, so a change here
/// is a change of an interface.
const Entries allForms{
    "0 SettingsHandler:Initialized Settings Handler",
    "0 SettingsHandler:SettingDBId: *",
    "0 SettingsHandler:getSettings",
    "0 SettingsHandler:orliaLocale was not changed, oldValue is the same as newValue: oldValue(*), newValue(*)",
    "0 SettingsHandler:orliaTimezone was not changed, oldValue is the same as newValue: oldValue(*), newValue(*)",
    "0 SettingsHandler:setSetting",
    "1 SettingsHandler:* changed from '*' to '*'",
    "1 SettingsHandler:* migrated successfully",
    "1 SettingsHandler:* new value: '*'",
    "1 SettingsHandler:* was not updated. New value: '*' was not saved.",
    "1 SettingsHandler:* was not updated: new value: '*' is the same",
    "1 SettingsHandler:Current locale is empty",
    "1 SettingsHandler:Default value retrieved for *",
    "1 SettingsHandler:Handling GetSettings request",
    "1 SettingsHandler:Handling SetSettings request",
    "1 SettingsHandler:No value retrieved for *",
    "1 SettingsHandler:Notified of HandsFreeState changing. New value: *",
    "1 SettingsHandler:Notified of locale change. New value: *",
    "1 SettingsHandler:Notified of system setting changing: *. New value: *",
    "1 SettingsHandler:OrliaLocale changed from '*' to '*'",
    "1 SettingsHandler:OrliaTimezone changed from '*' to '*'",
    "1 SettingsHandler:getCurrentSettingsMap",
    "1 SettingsHandler:isRequestValid",
    "1 SettingsHandler:migrateExistingDeviceSettings",
    "1 SettingsHandler:notifyLocaleChange: Incoming primary locale (*) is identical to current primary locale (*)",
    "1 SettingsHandler:notifyLocaleChange: Notified of locale change. New value: *",
    "1 SettingsHandler:onEntitlementStatusChanged: *",
    // Intended: these three show the format before its value is inserted.
    "1 Setting initial PTT always on status value %s:*",
    "1 Setting initial hands free always on status value %s:*",
    "1 Setting initial hands free status value %s:*",
    "2 SettingsHandler:addEntitlementStatusObserver: Given observer is null",
    "2 SettingsHandler:addFriendlyNameObserver: Given observer is null",
    "2 SettingsHandler:addOrliaLocaleObserver: Given observer is null",
    "2 SettingsHandler:removeEntitlementStatusObserver: Given observer is null",
    "2 SettingsHandler:removeFriendlyNameObserver: Given observer is null",
    "3 SettingsHandler:* new value: '*' value was not written properly",
    "3 SettingsHandler:* was not migrated successfully",
    "3 SettingsHandler:Default value was not found for *",
    "3 SettingsHandler:Error clearing storage on logout",
    "3 SettingsHandler:GetSettings Message Id not found or has incorrect format",
    "3 SettingsHandler:GetSettings settings field not found in payload or has incorrect format",
    "3 SettingsHandler:Invalid Request: SettingsDBId is invalid or request is older than current request",
    "3 SettingsHandler:Invalid SDK SettingDBId: *",
    "3 SettingsHandler:Message ID has incorrect format",
    "3 SettingsHandler:Message ID not found",
    "3 SettingsHandler:Payload was not parsed successfully",
    "3 SettingsHandler:SetSetting Message payload not found",
    "3 SettingsHandler:SetSetting Message timestamp not found",
    "3 SettingsHandler:SetSetting settingId not found in payload or has incorrect format",
    "3 SettingsHandler:orliaLocale is empty or not in the correct format",
    "3 SettingsHandler:orliaLocale is not in the proper format",
    "3 SettingsHandler:to value field in payload not found or has incorrect format",
};

/// The longest form that matches `line`; empty when none does.
std::string formOf(const std::string& line) {
    std::string best;
    for (const auto& form : allForms) {
        if (form.size() > best.size() && fnmatch(form.c_str(), line.c_str(), 0) == 0) {
            best = form;
        }
    }
    return best;
}

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
        // With its own transport, because it is destroyed at once and the fixture's transport would deliver to it.
        SettingsHandler::SettingsHandler::create(std::make_shared<SettingsHandlerTesting::FakeTransport>(journal),
                                                 storage, metrics, sdk, app, device);
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

TEST_F(LogLines, AreExactlyTheListedOnes) {
    start();
    sdk->timezone = "start";
    sdk->locales = {"en-US"};
    writeAndNotify();
    request();

    std::set<std::string> seen;
    for (const auto& entry : journal.take()) {
        if (entry.rfind("log ", 0) == 0) {
            const std::string line = entry.substr(4);
            EXPECT_NE(formOf(line), "") << "not listed: " << line;
            seen.insert(formOf(line));
        }
    }
    for (const auto& form : allForms) {
        EXPECT_EQ(seen.count(form), 1U) << "never logged: " << form;
    }
}

}  // namespace SettingsHandlerTests
