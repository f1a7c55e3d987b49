// Must stand before every include of the JSON library.
#define RAPIDJSON_ASSERT(condition) static_cast<void>(0)

#include <gtest/gtest.h>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"

namespace SettingsHandlerTests {

/// This program's copy of the JSON library continues after a failed precondition, and the program exports it to every
/// library that it loads. The handler must use its own copy.
class JsonIsolationDeathTest : public ::testing::Test {
protected:
    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandler::SettingsHandler> handler = SettingsHandler::SettingsHandler::create(
        std::make_shared<SettingsHandlerTesting::FakeTransport>(journal), storage,
        std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal),
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal),
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal),
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal));
};

TEST_F(JsonIsolationDeathTest, TheCopyOfThisProgramContinues) {
    rapidjson::Document document(rapidjson::kObjectType);
    EXPECT_EQ(document.GetArray().Size(), 0U);
}

TEST_F(JsonIsolationDeathTest, TheCopyOfTheLibraryEndsTheProcess) {
    EXPECT_DEATH(handler->setSetting("orliaLocale", "{}"), "JSON precondition failed: IsArray");
}

}  // namespace SettingsHandlerTests
