#include <map>

#include "CheckedHandlerFixture.h"
#include "SettingsHandlerKit/SettingDescriptions.h"

namespace SettingsHandlerKit {

namespace {

struct Thrown {};

/// A value that the setting does not have.
std::string newValueOf(const SettingDescription& setting) {
    return setting.kind == SettingKind::LOCALES ? R"(["fr-FR"])" : "new";
}

std::string malformedOf(const SettingDescription& setting) {
    return setting.kind == SettingKind::LOCALES ? R"(["fr-FR")" : "new";
}

bool isStored(const SettingDescription& setting) {
    return setting.owner == SettingOwner::STORAGE && setting.key != "friendlyName";
}

}  // namespace

using Outcomes = CheckedHandler;

TEST_F(Outcomes, ATableOfAllSettingsAndAllReasons) {
    for (const auto& setting : settingDescriptions()) {
        for (int reasons = 0; reasons < 16; ++reasons) {
            const bool incomplete = (reasons & 1) != 0;
            const bool stale = (reasons & 2) != 0;
            const bool malformed = (reasons & 4) != 0;
            const bool full = (reasons & 8) != 0;
            SCOPED_TRACE(setting.key + ", reasons " + std::to_string(reasons));
            World one;
            const auto deliver = [&](long timestamp, const std::string& payload) {
                one.transport->deliver(
                    CommunicationHandler::SET_SETTINGS,
                    R"({"timestamp":)" + std::to_string(timestamp) + R"(,"payload":)" + payload + "}");
            };
            deliver(10, R"({"settingDBId":")" + setting.key + R"(","to":5})");
            one.storage.refusesWrites = full;
            const std::string value = malformed ? malformedOf(setting) : newValueOf(setting);
            const std::string key = R"({"settingDBId":")" + setting.key + "\"";
            deliver(stale ? 9 : 11, incomplete ? key + "}" : change(setting.key, value));
            const auto expected = [&] {
                if (incomplete) {
                    return refusedFor(Reason::INCOMPLETE, setting.key);
                }
                if (stale) {
                    return refusedFor(Reason::STALE, setting.key, 10);
                }
                if (setting.setBy == SetBy::DEVICE) {
                    return refusedFor(Reason::READ_ONLY, setting.key);
                }
                if (malformed && setting.kind == SettingKind::LOCALES) {
                    return refusedFor(Reason::WRONG_FORM, setting.key);
                }
                return full && isStored(setting) ? refusedFor(Reason::NOT_STORED, setting.key)
                                                 : outcomeOf(Kind::CHANGED, setting.key);
            }();
            EXPECT_EQ(one->outcome(), expected);
            EXPECT_EQ(one->outcome().message.empty(), expected.kind != Kind::REFUSED);
            EXPECT_EQ(one.transport->takeEvents().empty(), expected.kind != Kind::CHANGED);
        }
    }
}

TEST_F(Outcomes, TheSameValueIsUnchangedUnlessItIsReadOnly) {
    for (const auto& setting : settingDescriptions()) {
        SCOPED_TRACE(setting.key);
        set(change(setting.key, newValueOf(setting)));
        world.transport->takeEvents();
        set(change(setting.key, newValueOf(setting)));
        EXPECT_EQ(outcome(), setting.setBy == SetBy::DEVICE ? refusedFor(Reason::READ_ONLY, setting.key)
                                                            : outcomeOf(Kind::UNCHANGED, setting.key));
        EXPECT_TRUE(world.transport->takeEvents().empty());
        EXPECT_FALSE(world->setSetting(setting.key, newValueOf(setting)));
        EXPECT_EQ(outcome().kind, setting.setBy == SetBy::DEVICE ? Kind::REFUSED : Kind::UNCHANGED);
    }
    set(change("captionsEnabled", "false"));
    EXPECT_EQ(outcome(), refusedFor(Reason::READ_ONLY, "captionsEnabled")) << "the value that it has";
}

TEST_F(Outcomes, AnIncompleteRequestSaysWhatIsMissing) {
    const std::vector<std::pair<std::string, std::string>> texts{
        {"", "the request is not JSON"},
        {"[]", R"("timestamp" is missing or not an integer)"},
        {R"({"timestamp":"1","payload":{"settingDBId":"deviceName","to":"Den"}})",
         R"("timestamp" is missing or not an integer)"},
        {R"({"timestamp":1})", R"("payload" is missing or not an object)"},
        {R"({"timestamp":1,"payload":{"settingDBId":5,"to":"Den"}})", R"("settingDBId" is missing or not a string)"},
        {R"({"timestamp":1,"payload":{"settingDBId":"deviceName","to":true}})", R"("to" is missing or not a string)"}};
    for (const auto& [text, message] : texts) {
        world.transport->deliver(CommunicationHandler::SET_SETTINGS, text);
        const bool named = text.find("deviceName") != std::string::npos;
        EXPECT_EQ(outcome(), refusedFor(Reason::INCOMPLETE, named ? "deviceName" : "")) << text;
        EXPECT_EQ(outcome().message, message);
    }
}

TEST_F(Outcomes, UnknownKeysShareOneTimeStamp) {
    set(change("one", "1"), 100);
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "one"));
    set(change("another", "1"), 50);
    EXPECT_EQ(outcome(), refusedFor(Reason::STALE, "another", 100));
    set(change("deviceName", "Den"), 5);
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "deviceName"));
    set(change("another", ""), 100);
    EXPECT_EQ(outcome(), outcomeOf(Kind::UNCHANGED, "another"));
    world->setSetting("another", "2");
    set(change("another", "3"), 99);
    EXPECT_EQ(outcome(), refusedFor(Reason::STALE, "another", 100)) << "a direct setSetting records none";
    set(change("timezone", "Europe/Rome"), -5);
    set(change("timezone", "Europe/Paris"), -6);
    EXPECT_EQ(outcome(), refusedFor(Reason::STALE, "timezone", -5));
}

TEST_F(Outcomes, TheNewestAcceptedTimeStampOfEachSettingIsTold) {
    using TimeStamps = std::map<std::string, long>;
    EXPECT_EQ(world->newestTimestamps(), TimeStamps());
    set(change("deviceName", "Den"), 5);
    set(change("deviceName", "Attic"), 4);
    set(change("timezone", "Europe/Paris"), -1);
    set(change("captionsEnabled", "true"), 3);
    set(change("unknown", "x"), 8);
    set(change("unknown too", "y"), 9);
    EXPECT_EQ(world->newestTimestamps(),
              (TimeStamps{{"", 9}, {"captionsEnabled", 3}, {"deviceName", 5}, {"timezone", -1}}));
}

TEST_F(Outcomes, ARefusedEntitlementStatusIsNotStoredAlthoughTheHandlerIsSilent) {
    world.storage.refusesWrites = true;
    EXPECT_TRUE(world->setSetting("tovanEntitlementStatus", "active"));
    EXPECT_EQ(outcome(), refusedFor(Reason::NOT_STORED, "tovanEntitlementStatus"));
    set(change("tovanEntitlementStatus", "active"));
    EXPECT_EQ(outcome(), refusedFor(Reason::NOT_STORED, "tovanEntitlementStatus"));
    world.storage.refusesWrites = false;
    set(change("tovanEntitlementStatus", "active"));
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "tovanEntitlementStatus"));
}

TEST_F(Outcomes, TellWhetherTheVoiceSdkAppliedAValue) {
    world.sdkBridge->refusesSettings = true;
    for (const auto* key : {"friendlyName", "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        set(change(key, "new"));
        Outcome expected = outcomeOf(Kind::CHANGED, key);
        expected.applied = false;
        EXPECT_EQ(outcome(), expected);
    }
    world.sdkBridge->refusesSettings = false;
    EXPECT_TRUE(world->setSetting("friendlyName", "Den"));
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "friendlyName")) << "nothing is left of the last one";
}

TEST_F(Outcomes, OfOtherRequests) {
    const auto& transport = *world.transport;
    EXPECT_EQ(outcome(), Outcome()) << "nothing was handled";
    world.transport->deliver(7, SettingsHandlerTesting::requestText(transport, 7, "m", 1, R"({"settings":[]})"));
    EXPECT_EQ(outcome(), Outcome());
    world->handleGetSettingsRequest(R"({"payload":{"settings":[]}})");
    EXPECT_EQ(outcome(), refusedFor(Reason::INCOMPLETE));
    world->handleIsOrliaSelectedVARequest(R"({"messageId":"m"})");
    EXPECT_EQ(outcome(), Outcome());
    world.transport->deliver(18, "{");
    EXPECT_EQ(outcome(), refusedFor(Reason::INCOMPLETE));
    world->handleOpenVASettingsRequest("");
    EXPECT_EQ(outcome(), Outcome());
    world.storage.refusesClearing = true;
    world.transport->deliver(22, "");
    EXPECT_EQ(outcome(), refusedFor(Reason::NOT_STORED));
    world.storage.refusesClearing = false;
    world->handleLogOutRequest();
    EXPECT_EQ(outcome(), Outcome());
}

TEST_F(Outcomes, AfterAnExceptionOfACollaborator) {
    struct Case {
        int type;
        std::string text;
        std::string at;
        Outcome expected;
    };
    const auto request = [](const std::string& key, const std::string& value) {
        return R"({"timestamp":1,"payload":)" + change(key, value) + "}";
    };
    const std::vector<Case> cases{
        {24, request("deviceName", "1"), "storage.setValue", refusedFor(Reason::NOT_STORED, "deviceName")},
        {24, request("deviceName", "2"), "transport.sendMessage", outcomeOf(Kind::CHANGED, "deviceName")},
        {24, request("timezone", "3"), "sdk.getTimezone", refusedFor(Reason::NOT_STORED, "timezone")},
        {24, request("timezone", "4"), "sdk.setTimezone", refusedFor(Reason::NOT_STORED, "timezone")},
        {24, request("timezone", "5"), "metrics.", outcomeOf(Kind::CHANGED, "timezone")},
        {24, request("orliaLocale", R"(["fr-FR"])"), "metricsCache.", outcomeOf(Kind::CHANGED, "orliaLocale")},
        {24, request("handsFreeEnabled", "6"), "transport.", outcomeOf(Kind::CHANGED, "handsFreeEnabled")},
        {24, request("deviceName", "7"), "log 1 SettingsHandler:isRequestValid",
         refusedFor(Reason::NOT_STORED, "deviceName")},
        {24, "[]", "log 3", refusedFor(Reason::INCOMPLETE)},
        {24, request("orliaLocale", "{}"), "log 3", rejectedFor(Reason::WRONG_FORM)},
        {7, R"({"messageId":"m","payload":{"settings":["deviceName"]}})", "storage.getValue", refusedFor(Reason::NONE)},
        {7, R"({"messageId":"m","payload":{"settings":["deviceName"]}})", "transport.sendResponse",
         refusedFor(Reason::NONE)},
        {19, "", "app.", refusedFor(Reason::NONE)},
        {22, "", "sdk.applySetting", refusedFor(Reason::NOT_STORED)},
        {22, "", "storage.getValue", Outcome()},
    };
    for (const auto& [type, text, at, expected] : cases) {
        SCOPED_TRACE(std::string(text).append(" at ").append(at));
        world->setSetting("companionDevice", at + text);
        world.journal.at(at, [] { throw Thrown(); });
        EXPECT_THROW(world.transport->deliver(type, text), Thrown);
        EXPECT_TRUE(world.journal.allActionsRun());
        EXPECT_EQ(outcome(), expected);
    }
    world.journal.at("storage.setValue", [] { throw Thrown(); });
    EXPECT_THROW(world->setSetting("deviceName", "8"), Thrown);
    EXPECT_EQ(outcome(), refusedFor(Reason::NOT_STORED, "deviceName"));
}

TEST_F(Outcomes, WritesOfObserversAndCollaboratorsDoNotCount) {
    const auto observer = std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(world.journal);
    observer->reaction = [this] {
        world->setSetting("captionsEnabled", "true");
        world.storage.refusesWrites = true;
        world->setSetting("deviceName", "Den");
        set(change("companionDevice", "x"));
        EXPECT_EQ(world.transport->request(7, SettingsHandlerTesting::settingsPayload({"friendlyName"})).empty(),
                  false);
    };
    world->addFriendlyNameObserver(observer);
    set(change("friendlyName", "Den"));
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "friendlyName"));
    world.journal.at("app.", [this] { world->setSetting("deviceName", "Attic"); });
    world.transport->deliver(CommunicationHandler::OPEN_VA_SETTINGS, "");
    EXPECT_EQ(outcome(), Outcome());
}

namespace {

/// Refuses on its own.
class Strict : public CheckedSettingsHandler {
public:
    using CheckedSettingsHandler::CheckedSettingsHandler;

    bool setSetting(const std::string& name, const std::string& value) override {
        return name != "deviceName" && CheckedSettingsHandler::setSetting(name, value);
    }
    bool isRequestValid(std::string& settingDBId, long timestamp) override {
        return timestamp > 0 && CheckedSettingsHandler::isRequestValid(settingDBId, timestamp);
    }
};

}  // namespace

TEST(OutcomesOfADerivedHandler, RefusalsOfItsOwnHaveNoReason) {
    SettingsHandlerTesting::BasicTestHandler<Strict> world;
    const auto set = [&](const std::string& key, long timestamp) {
        world.transport->deliver(CommunicationHandler::SET_SETTINGS,
                                 R"({"timestamp":)" + std::to_string(timestamp) + R"(,"payload":)" +
                                     SettingsHandlerTesting::changePayload(key, "new") + "}");
        return world->outcome();
    };
    EXPECT_EQ(set("deviceName", 5), refusedFor(Reason::NONE, "deviceName"));
    EXPECT_EQ(set("timezone", 0), refusedFor(Reason::NONE, "timezone"));
    EXPECT_EQ(set("timezone", 5), outcomeOf(Kind::CHANGED, "timezone"));
    EXPECT_EQ(set("deviceName", 4), refusedFor(Reason::STALE, "deviceName", 5));
}

}  // namespace SettingsHandlerKit
