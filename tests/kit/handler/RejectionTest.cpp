#include "CheckedHandlerFixture.h"

namespace SettingsHandlerKit {

namespace {

using namespace std::string_literals;

const std::string rejection = "log 3 settings-host:rejected orliaLocale: must be a JSON array of at most 32 levels";

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int count = 0; count < times; ++count) {
        all += text;
    }
    return all;
}

std::string request(const std::string& payload) {
    return R"({"timestamp":1,"payload":)" + payload + "}";
}

/// Requests that end the process in the handler.
std::vector<std::string> deadlyRequests() {
    const std::string deadly = request(R"({"settingDBId":"orliaLocale","to":"{}"})");
    const std::string deepObject = repeated(R"({\"a\":)", 1000) + "1" + std::string(1000, '}');
    return {
        deadly,
        request(R"({"settingDBId":"orliaLocale","to":"\"en-US\""})"),
        request(R"({"settingDBId":"orliaLocale","to":"5"})"),
        request(R"({"settingDBId":"orliaLocale","to":"null"})"),
        request(R"({"settingDBId":"orliaLocale","to":" true "})"),
        request(R"({"settingDBId":"\u006frliaLocale","to":"{}"})"),
        request(R"({"\u0073ettingDBId":"orlia\u004Cocale","t\u006f":"\u007b}"})"),
        request(R"({"settingDBId":"orliaLocale","settingDBId":"deviceName","to":"{}","to":"[]"})"),
        R"({"timestamp":1,"payload":{"settingDBId":"orliaLocale","to":"{}"},"payload":{"settingDBId":"x","to":"y"}})",
        deadly + "\0not JSON"s,
        request(R"({"settingDBId":"orliaLocale","to":"{}\u0000["})"),
        request(R"({"settingDBId":"orliaLocale","to":")" + deepObject + R"("})"),
        R"({"deep":)" + std::string(100000, '[') + std::string(100000, ']') + "," + deadly.substr(1),
        "{\"bytes\":\"\xff\xc0\"," + deadly.substr(1),
        request("{\"settingDBId\":\"orliaLocale\",\"to\":\"\\\"\xff\\\"\"}"),
        "\n\t " + deadly + " \r\n",
    };
}

/// Requests that look like those above and do no harm.
std::vector<std::string> harmlessRequests() {
    const std::string deadly = request(R"({"settingDBId":"orliaLocale","to":"{}"})");
    return {
        request(R"({"settingDBId":"orliaLocale","to":"[\"fr-FR\"]"})"),
        request(R"({"settingDBId":"\u006frliaLocale","to":"[\"fr-FR\"]"})"),
        request(R"({"settingDBId":"orliaLocale","to":"[\"fr-FR\"]","to":"{}"})"),
        request(R"({"settingDBId":"deviceName","settingDBId":"orliaLocale","to":"{}"})"),
        request(R"({"settingDBId":"orliaLocale\u0000","to":"{}"})"),
        request(R"({"settingDBId":"OrliaLocale","to":"{}"})"),
        request(R"({"settingDBId":"orliaLocale","to":"[]\u0000{}"})"),
        request(R"({"settingDBId":"orliaLocale","to":""})"),
        request(R"({"settingDBId":"orliaLocale","to":"en-US"})"),
        request(R"({"settingDBId":"orliaLocale","to":{}})"),
        request(R"([{"settingDBId":"orliaLocale","to":"{}"}])"),
        request(R"({"settingDBId":"deviceName","to":"C:\\Locale"})"),
        "{}\0"s + deadly,
        "\0"s + deadly,
        deadly + "x",
        "[" + deadly + "]",
        request("{\"settingDBId\":\"orliaLocale\",\"to\":\"[\\\"\xff\\\"]\"}"),
    };
}

/// What happens around a handler of this kind when these requests are delivered.
template <typename Handler>
Entries journalOf(const std::vector<std::string>& requests) {
    SettingsHandlerTesting::BasicTestHandler<Handler> world;
    const SettingsHandlerTesting::PlatformRecording recording(world.journal);
    for (const auto& text : requests) {
        world.transport->deliver(CommunicationHandler::SET_SETTINGS, text);
    }
    return world.journal.take();
}

}  // namespace

using Rejection = CheckedHandler;

TEST_F(Rejection, KeepsEachTextAwayThatEndsTheProcessInThePlainHandler) {
    for (const auto& text : deadlyRequests()) {
        SCOPED_TRACE(text.substr(0, 200));
        EXPECT_EXIT(journalOf<SettingsHandler::SettingsHandler>({text}), ::testing::KilledBySignal(SIGABRT),
                    "JSON precondition failed");
        world.transport->deliver(CommunicationHandler::SET_SETTINGS, text);
        EXPECT_EQ(world.journal.take(), Entries{rejection}) << "nothing is read, sent or counted";
        EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
        EXPECT_FALSE(world->handleSetSettingRequest(text)) << "a direct call";
        EXPECT_EQ(world.journal.take(), Entries{rejection});
    }
}

TEST_F(Rejection, LeavesHarmlessTextsToTheHandler) {
    for (const auto& text : harmlessRequests()) {
        SCOPED_TRACE(text);
        EXPECT_EQ(journalOf<CheckedSettingsHandler>({text}), journalOf<SettingsHandler::SettingsHandler>({text}));
    }
    EXPECT_EQ(journalOf<CheckedSettingsHandler>(harmlessRequests()),
              journalOf<SettingsHandler::SettingsHandler>(harmlessRequests()));
}

TEST_F(Rejection, RecordsNoTimeStamp) {
    set(change("orliaLocale", "{}"), 1000);
    set(change("orliaLocale", R"(["fr-FR"])"), 1);
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "orliaLocale"));
    EXPECT_EQ(world.sdkBridge->locales, Entries{"fr-FR"});
}

TEST_F(Rejection, ComesBeforeEverythingThatTheHandlerChecks) {
    const std::string deadly = change("orliaLocale", "{}");
    world.transport->deliver(CommunicationHandler::SET_SETTINGS, R"({"payload":)" + deadly + "}");
    EXPECT_EQ(world.journal.take(), Entries{rejection});
    EXPECT_EQ(outcome(), rejectedFor(Reason::INCOMPLETE));
    set(change("orliaLocale", R"(["fr-FR"])"), 10);
    world.journal.take();
    set(deadly, 9);
    EXPECT_EQ(world.journal.take(), Entries{rejection});
    EXPECT_EQ(outcome(), rejectedFor(Reason::STALE, 10));
}

TEST_F(Rejection, LimitsTheNestingOfAnArray) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + "\"fr-FR\"" + std::string(depth, ']');
    };
    set(change("orliaLocale", "[\"fr-FR\"," + nested(31) + "]"));
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "orliaLocale"));
    set(change("orliaLocale", "[\"fr-FR\"," + nested(32) + "]"));
    EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
    set(change("orliaLocale", nested(100000)));
    EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
}

TEST_F(Rejection, HoldsForTheOperationsOfTheHandler) {
    for (const auto& value :
         {"{}"s, "\"en-US\""s, "null"s, "{}\0["s, repeated(R"({"a":)", 1000) + "1" + std::string(1000, '}')}) {
        SCOPED_TRACE(value.substr(0, 40));
        SettingsHandlerTesting::TestHandler plain;
        EXPECT_EXIT(plain->setSetting("orliaLocale", value), ::testing::KilledBySignal(SIGABRT), "precondition");
        EXPECT_EXIT(plain.deviceLayer.changeSystemSetting("orliaLocale", value), ::testing::KilledBySignal(SIGABRT),
                    "precondition");
        world.journal.take();
        EXPECT_FALSE(world->setSetting("orliaLocale", value));
        EXPECT_EQ(world.journal.take(), Entries{rejection});
        EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
        set(change("deviceName", value), 1000);
        world.journal.take();
        world.deviceLayer.changeSystemSetting("orliaLocale", value);
        EXPECT_EQ(world.journal.take(), Entries{"log 3 settings-host:rejected orliaLocale from the device: must be a "
                                                "JSON array of at most 32 levels"});
        EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
    }
}

TEST_F(Rejection, HoldsThroughAReferenceToTheBaseClass) {
    SettingsHandler::SettingsHandler& base = *world.handler;
    EXPECT_FALSE(base.handleSetSettingRequest(request(change("orliaLocale", "{}"))));
    EXPECT_EQ(outcome(), rejectedFor(Reason::WRONG_FORM));
    EXPECT_EQ(world.journal.take().back(), rejection);
    EXPECT_EQ(world.sdkBridge->locales, Entries{"en-US"});
}

TEST_F(Rejection, ReadsTheNamesOfTheEnvelopeFromTheTransport) {
    const auto transport =
        std::make_shared<SettingsHandlerTesting::FakeTransport>(world.journal, "id", "ts", "orliaLocale");
    const World other([&](World& around) { around.used.transport = transport; });
    const std::string deadly = R"({"settingDBId":"orliaLocale","to":"{}"})";
    transport->deliver(CommunicationHandler::SET_SETTINGS, R"({"ts":1,"orliaLocale":)" + deadly + "}");
    EXPECT_EQ(other->outcome(), rejectedFor(Reason::WRONG_FORM));
    transport->deliver(CommunicationHandler::SET_SETTINGS, R"({"ts":1,"payload":)" + deadly + "}");
    EXPECT_EQ(other->outcome(), refusedFor(Reason::INCOMPLETE));
    EXPECT_EQ(other->outcome().message, R"("orliaLocale" is missing or not an object)");
}

}  // namespace SettingsHandlerKit
