#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/Mocks.h"
// Contracts that this program does not instantiate.
#include "SettingsHandlerTesting/contracts/DeviceInfoContract.h"
#include "SettingsHandlerTesting/contracts/SdkBridgeContract.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"
#include "SettingsHandlerTesting/contracts/TransportContract.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

using namespace SettingsHandlerTesting;
using testing::NiceMock;
using testing::Return;

TEST(OwnTest, AStoredSettingIsWrittenAndEveryStepIsLogged) {
    Journal journal;
    const PlatformRecording recording(journal);
    NiceMock<MockStorage> storage;
    SettingsHandler::SettingsHandler handler(
        std::make_shared<NiceMock<MockTransport>>(), storage, std::make_shared<NiceMock<MockMetrics>>(),
        std::make_shared<NiceMock<MockSdkBridge>>(), std::make_shared<NiceMock<MockAppLaunch>>(),
        std::make_shared<NiceMock<MockDeviceInfo>>());
    EXPECT_CALL(storage, setValue("deviceName", "Kitchen")).WillOnce(Return(true));
    EXPECT_TRUE(handler.setSetting("deviceName", "Kitchen"));
    EXPECT_THAT(journal.take(), testing::Contains(testing::StartsWith("log ")));
}
