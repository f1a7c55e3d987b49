#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using AssistantRequests = HandlerTest;

TEST_F(AssistantRequests, TheAssistantIsAlwaysTheSelectedOne) {
    EXPECT_TRUE(handler->isOrliaSelectedAsVA());
    handler->handleIsOrliaSelectedVARequest(R"({"messageId":"abc","payload":5})");
    expectJournal(Entries{R"(transport.sendResponse(abc, {"isOrliaSelectedAsVA":true}))"});
}

TEST_F(AssistantRequests, AQueryWithoutUsableMessageIdIsLoggedAndNotAnswered) {
    for (const auto* text : {"{}", "{", "", R"({"messageid":"x"})"}) {
        handler->handleIsOrliaSelectedVARequest(text);
        expectJournal(Entries{"log 3 SettingsHandler:Message ID not found"});
    }
    for (const auto* text : {R"({"messageId":42})", R"({"messageId":null})", R"({"messageId":["x"]})"}) {
        handler->handleIsOrliaSelectedVARequest(text);
        expectJournal(Entries{"log 3 SettingsHandler:Message ID has incorrect format"});
    }
}

TEST_F(AssistantRequests, OpensTheSettingsApplicationForAnyText) {
    for (const auto* text : {"", "{", "{}"}) {
        handler->handleOpenVASettingsRequest(text);
        expectJournal(Entries{"app.launchApp(settings-app, )"});
    }
}

class AppNameDeathTest : public HandlerTest {
protected:
    // Each runs in its own process, because the name is looked up once per process. A program in an emulator cannot
    // restart itself; there the test runner starts each test alone, and a fork of that process is enough.
    AppNameDeathTest() { ::testing::GTEST_FLAG(death_test_style) = RUN_BY_EMULATOR ? "fast" : "threadsafe"; }

    [[noreturn]] void endWith(const Entries& expected) {
        const Entries entries = journal.take();
        std::exit(entries == expected ? 0 : 1);
    }

    std::unordered_map<DeviceAbstractionLayer::AppName, std::string>& names =
        DeviceAbstractionLayer::AppNameToStringMapping;
};

TEST_F(AppNameDeathTest, WithoutAnEntryTheNameStaysEmpty) {
    EXPECT_EXIT(
        {
            names.clear();
            handler->openVASettings();
            names[DeviceAbstractionLayer::AppName::VA_SETTINGS_APP] = "too late";
            handler->openVASettings();
            endWith({"app.launchApp(, )", "app.launchApp(, )"});
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(AppNameDeathTest, TheNameIsLookedUpByTheFirstCallAndKept) {
    EXPECT_EXIT(
        {
            names[DeviceAbstractionLayer::AppName::VA_SETTINGS_APP] = "first";
            handler->openVASettings();
            names[DeviceAbstractionLayer::AppName::VA_SETTINGS_APP] = "second";
            make<OpenHandler>()->openVASettings();
            auto entries = journal.take();
            std::exit(entries.front() == "app.launchApp(first, )" && entries.back() == "app.launchApp(first, )" ? 0
                                                                                                                : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(AssistantRequests, LogOutResetsClearsAndReloadsInOrder) {
    storage.values = {{"deviceName", "Den"}};
    cache("deviceName", "Den");
    cache("left over", "x");
    handler->handleLogOutRequest();
    expectJournal(Entries{"sdk.applySetting(handsFreeAlwaysOnEnabled, false)",
                          "sdk.applySetting(pttAlwaysOnEnabled, false)", "sdk.setHandsFreeEnabled(false)",
                          "storage.clearStorage()"} +
                  readOfAll());
    EXPECT_EQ(cached("deviceName"), "TV");
    EXPECT_EQ(cached("left over"), "(none)");
    EXPECT_EQ(cached("companionDevice"), R"(["",""])");
}

TEST_F(AssistantRequests, AFailedClearingIsLoggedAndTheRestIsDone) {
    storage.values = {{"deviceName", "Den"}};
    storage.refusesClearing = true;
    sdk->refusesSettings = true;
    deliver(22, "not JSON");
    expectJournal(Entries{"sdk.applySetting(handsFreeAlwaysOnEnabled, false)",
                          "sdk.applySetting(pttAlwaysOnEnabled, false)", "sdk.setHandsFreeEnabled(false)",
                          "storage.clearStorage()", "log 3 SettingsHandler:Error clearing storage on logout"} +
                  readOfAll());
    EXPECT_EQ(cached("deviceName"), "Den");
}

TEST_F(AssistantRequests, LogOutReloadsThroughTheInterface) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) override {
            EXPECT_TRUE(names.empty());
            return {{"only", "this"}};
        }
    };
    const auto derived = make<Derived>();
    std::string old;
    derived->settingChanged("before", old, "x");
    derived->handleLogOutRequest();
    const auto map = derived->getCurrentSettingsMap();
    EXPECT_EQ(map.at("only"), "this");
    EXPECT_EQ(map.size(), 6U);
}

}  // namespace SettingsHandlerTests
