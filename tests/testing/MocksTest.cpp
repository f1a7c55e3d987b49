#include <memory>
#include <string>
#include <vector>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/MockSettingsHandler.h"
#include "SettingsHandlerTesting/Mocks.h"

namespace SettingsHandlerTesting {

using ::testing::_;
using ::testing::InSequence;
using ::testing::Matcher;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::StrEq;
using ::testing::StrictMock;

TEST(MocksTest, StandAroundAWholeHandler) {
    const auto transport = std::make_shared<NiceMock<MockTransport>>();
    NiceMock<MockStorage> storage;
    const auto metrics = std::make_shared<StrictMock<MockMetrics>>();
    const auto sdk = std::make_shared<NiceMock<MockSdkBridge>>();
    const auto app = std::make_shared<StrictMock<MockAppLaunch>>();
    const auto device = std::make_shared<NiceMock<MockDeviceInfo>>();
    EXPECT_CALL(*transport, registerMessageHandler(_, _)).Times(5);
    const auto handler = SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, app, device);

    ON_CALL(storage, setValue).WillByDefault(Return(true));
    ON_CALL(storage, getValue("deviceName", _)).WillByDefault(SetArgReferee<1>("Den"));
    EXPECT_EQ(handler->getSettings({"deviceName"}).at("deviceName"), "Den");
    const InSequence inSequence;
    EXPECT_CALL(storage, setValue("deviceName", "Attic"));
    EXPECT_CALL(*transport, sendMessage(25, _));
    EXPECT_CALL(*metrics, recordCounter("deviceName_Attic", 0, 1, 1));
    EXPECT_CALL(*metrics, recordEvent("app_events", "AUTO", _));
    EXPECT_TRUE(handler->setSetting("deviceName", "Attic"));

    EXPECT_CALL(*sdk, applySetting("handsFreeAlwaysOnEnabled", "false"));
    EXPECT_CALL(*sdk, applySetting("pttAlwaysOnEnabled", "false"));
    EXPECT_CALL(*sdk, setHandsFreeEnabled(false));
    EXPECT_CALL(storage, clearStorage()).WillOnce(Return(true));
    EXPECT_CALL(*device, getDeviceInfo()).Times(3);
    handler->handleLogOutRequest();
    EXPECT_CALL(*app, launchApp("settings-app", ""));
    handler->handleOpenVASettingsRequest("{}");
}

TEST(MocksTest, ObserveAHandler) {
    const auto locale = std::make_shared<StrictMock<MockLocaleObserver>>();
    const auto name = std::make_shared<StrictMock<MockFriendlyNameObserver>>();
    const auto entitlement = std::make_shared<StrictMock<MockEntitlementObserver>>();
    NiceMock<MockStorage> storage;
    ON_CALL(storage, setValue).WillByDefault(Return(true));
    const auto handler = SettingsHandler::SettingsHandler::create(
        std::make_shared<NiceMock<MockTransport>>(), storage, std::make_shared<NiceMock<MockMetrics>>(),
        std::make_shared<NiceMock<MockSdkBridge>>(), std::make_shared<NiceMock<MockAppLaunch>>(),
        std::make_shared<NiceMock<MockDeviceInfo>>());
    handler->addOrliaLocaleObserver(locale);
    handler->addFriendlyNameObserver(name);
    handler->addEntitlementStatusObserver(entitlement);
    EXPECT_CALL(*locale, notifyOrliaLocaleChanged("fr-FR"));
    EXPECT_CALL(*name, notifyFriendlyNameChanged("Den"));
    EXPECT_CALL(*entitlement, notifyEntitlementStatusChanged("active"));
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"(["fr-FR"])"));
    EXPECT_TRUE(handler->setSetting("friendlyName", "Den"));
    EXPECT_TRUE(handler->setSetting("tovanEntitlementStatus", "active"));
}

TEST(MocksTest, StandForTheHandlerInFrontOfADevice) {
    StrictMock<MockSettingsHandler> handler;
    StrictMock<MockDeviceInfoObserver> observer;
    StrictMock<MockHandsfreeStateObserver> handsfree;
    for (DeviceAbstractionLayer::DeviceInfoObserverInterface* const told :
         std::initializer_list<DeviceAbstractionLayer::DeviceInfoObserverInterface*>{&handler, &observer}) {
        const InSequence inSequence;
        const auto expect = [&](auto& mock) {
            EXPECT_CALL(mock, notifyLocaleChange(Matcher<std::string>("fr-FR")));
            EXPECT_CALL(mock, notifyLocaleChange(
                                  Matcher<std::vector<std::string>>(std::vector<std::string>{"fr-FR", "en-US"})));
            EXPECT_CALL(mock, notifyTimezoneChange("Europe/Paris"));
            EXPECT_CALL(mock, notifyNetworkConnectionChanged("wired"));
            EXPECT_CALL(mock, notifyMicrophoneAvailabilityChanged("available"));
            EXPECT_CALL(mock, notifyAudioGuidanceChanged(true));
            EXPECT_CALL(mock, notifyDeviceModeChanged("store"));
            EXPECT_CALL(mock, notifySystemSettingChanged("name", "value"));
        };
        told == &observer ? expect(observer) : expect(handler);
        told->notifyLocaleChange("fr-FR");
        told->notifyLocaleChange(std::vector<std::string>{"fr-FR", "en-US"});
        told->notifyTimezoneChange("Europe/Paris");
        told->notifyNetworkConnectionChanged("wired");
        told->notifyMicrophoneAvailabilityChanged("available");
        told->notifyAudioGuidanceChanged(true);
        told->notifyDeviceModeChanged("store");
        told->notifySystemSettingChanged("name", "value");
    }
    EXPECT_CALL(handler, notifyHandsfreeStateChanged(true));
    EXPECT_CALL(handsfree, notifyHandsfreeStateChanged(false));
    static_cast<DeviceAbstractionLayer::HandsfreeStateObserverInterface&>(handler).notifyHandsfreeStateChanged(true);
    handsfree.notifyHandsfreeStateChanged(false);
}

TEST(MocksTest, StandForTheHandlerInFrontOfAService) {
    StrictMock<MockSettingsHandler> mock;
    SettingsHandler::SettingsHandlerInterface& handler = mock;
    const MockSettingsHandler::Settings settings{{"deviceName", "Den"}};
    const auto locale = std::make_shared<MockLocaleObserver>();
    const auto name = std::make_shared<MockFriendlyNameObserver>();
    const auto entitlement = std::make_shared<MockEntitlementObserver>();
    std::string key = "deviceName";
    const InSequence inSequence;
    EXPECT_CALL(mock, initializeSettings());
    EXPECT_CALL(mock, getSettings(std::vector<std::string>{"deviceName"})).WillOnce(Return(settings));
    EXPECT_CALL(mock, setSetting("deviceName", "Den")).WillOnce(Return(true));
    EXPECT_CALL(mock, isRequestValid(StrEq("deviceName"), 5)).WillOnce(Return(true));
    EXPECT_CALL(mock, getCurrentSettingsMap()).WillOnce(Return(settings));
    EXPECT_CALL(mock, addOrliaLocaleObserver(_));
    EXPECT_CALL(mock, addFriendlyNameObserver(_));
    EXPECT_CALL(mock, removeFriendlyNameObserver(_));
    EXPECT_CALL(mock, addEntitlementStatusObserver(_));
    EXPECT_CALL(mock, removeEntitlementStatusObserver(_));
    EXPECT_CALL(mock, migrateExistingDeviceSettings());
    handler.initializeSettings();
    EXPECT_EQ(handler.getSettings({"deviceName"}), settings);
    EXPECT_TRUE(handler.setSetting("deviceName", "Den"));
    EXPECT_TRUE(handler.isRequestValid(key, 5));
    EXPECT_EQ(handler.getCurrentSettingsMap(), settings);
    handler.addOrliaLocaleObserver(locale);
    handler.addFriendlyNameObserver(name);
    handler.removeFriendlyNameObserver(name);
    handler.addEntitlementStatusObserver(entitlement);
    handler.removeEntitlementStatusObserver(entitlement);
    handler.migrateExistingDeviceSettings();
}

}  // namespace SettingsHandlerTesting
