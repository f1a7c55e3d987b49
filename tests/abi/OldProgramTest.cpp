#include <cstdint>

#include <gtest/gtest.h>

#include "OldCollaborators.h"

// A program as it was compiled against version 1.0: it includes no current header except the configuration of the JSON
// library, and calls the current library by the vtable indices and names of version 1.0.

namespace AbiTests {

using Handler = ::SettingsHandler::SettingsHandler;
using HandlerInterface = ::SettingsHandler::SettingsHandlerInterface;
using Values = std::map<std::string, std::string>;

class OldProgram : public ::testing::Test {
protected:
    template <typename Kind>
    std::shared_ptr<Kind> make() {
        return std::make_shared<Kind>(transport, storage, metrics, bridge, launcher, info);
    }

    void expectCalls(const Calls& expected, int line = __builtin_LINE()) {
        EXPECT_EQ(calls, expected) << "expected at line " << line;
        calls.clear();
    }

    Calls calls;
    OldStorage storage{calls};
    std::shared_ptr<OldTransport> transport = std::make_shared<OldTransport>(calls);
    std::shared_ptr<OldMetrics> metrics = std::make_shared<OldMetrics>(calls);
    std::shared_ptr<OldBridge> bridge = std::make_shared<OldBridge>(calls);
    std::shared_ptr<OldLauncher> launcher = std::make_shared<OldLauncher>(calls);
    std::shared_ptr<OldDeviceInfo> info = std::make_shared<OldDeviceInfo>(calls);
};

/// The calls that report each change: the event, then the metrics.
Calls change(const std::string& key, const std::string& from, const std::string& to) {
    return {R"(send 25 {"settingDBId":")" + key + R"(","from":")" + from + R"(","to":")" + to + "\"}",
            "count " + key + "_" + to + " 0 1 1.000000", "event app_events AUTO with 1"};
}

Calls operator+(Calls first, const Calls& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(OldProgram, CallsTheOperationsOfAHandlerByTheirPlaces) {
    const std::shared_ptr<HandlerInterface> handler =
        Handler::create(transport, storage, metrics, bridge, launcher, info);
    const auto observer = std::make_shared<OldObserver>(calls);
    handler->initializeSettings();
    expectCalls({"hands-free true", "apply handsFreeAlwaysOnEnabled=false", "apply pttAlwaysOnEnabled=false"});

    handler->addFriendlyNameObserver(observer);
    EXPECT_TRUE(handler->setSetting("friendlyName", "Kitchen"));
    expectCalls(Calls{"apply friendlyName=Kitchen", "observer: name Kitchen"} +
                change("friendlyName", "TV", "Kitchen"));
    handler->removeFriendlyNameObserver(observer);

    handler->addEntitlementStatusObserver(observer);
    EXPECT_TRUE(handler->setSetting("tovanEntitlementStatus", "full"));
    expectCalls(Calls{"store tovanEntitlementStatus=full", "observer: entitlement full"} +
                change("tovanEntitlementStatus", "", "full"));
    handler->removeEntitlementStatusObserver(observer);
    EXPECT_TRUE(handler->setSetting("tovanEntitlementStatus", "none"));
    expectCalls(Calls{"store tovanEntitlementStatus=none"} + change("tovanEntitlementStatus", "full", "none"));

    handler->addOrliaLocaleObserver(observer);
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"(["en-US","es-US"])"));
    expectCalls({"locales 2 en-US",
                 R"(send 25 {"settingDBId":"orliaLocale","from":"[\"fr-FR\"]","to":"[\"en-US\",\"es-US\"]"})",
                 R"(count orliaLocale_["en-US","es-US"] 0 1 1.000000)", "event app_events AUTO with 1",
                 "observer: locale en-US"});

    EXPECT_EQ(handler->getSettings({"timezone", "friendlyName"}),
              (Values{{"timezone", "Europe/Paris"}, {"friendlyName", "TV"}}));
    EXPECT_EQ(handler->getCurrentSettingsMap().at("captionsEnabled"), "true");
    std::string key = "timezone";
    EXPECT_TRUE(handler->isRequestValid(key, 2));
    EXPECT_FALSE(handler->isRequestValid(key, 1));
    storage.values["timezone"] = "Asia/Tokyo";
    handler->migrateExistingDeviceSettings();
    expectCalls(Calls{"time zone Asia/Tokyo"} + change("timezone", "Europe/Paris", "Asia/Tokyo") +
                Calls{"remove timezone"});
}

TEST_F(OldProgram, NotifiesAHandlerThroughBothObserverInterfaces) {
    const auto handler = Handler::create(transport, storage, metrics, bridge, launcher, info);
    DeviceAbstractionLayer::DeviceInfoObserverInterface& device = *handler;
    device.notifyLocaleChange("de-DE");
    device.notifyLocaleChange(std::vector<std::string>{"it-IT", "de-DE"});
    device.notifyTimezoneChange("Asia/Tokyo");
    device.notifyNetworkConnectionChanged("up");
    device.notifyMicrophoneAvailabilityChanged("yes");
    device.notifyAudioGuidanceChanged(true);
    device.notifyDeviceModeChanged("store");
    expectCalls({"locales 1 de-DE", "locales 2 it-IT", "time zone Asia/Tokyo"});
    device.notifySystemSettingChanged("deviceName", "Den");
    expectCalls(Calls{"store deviceName=Den"} + change("deviceName", "", "Den"));
    DeviceAbstractionLayer::HandsfreeStateObserverInterface& switchObserver = *handler;
    switchObserver.notifyHandsfreeStateChanged(true);
    expectCalls(Calls{"hands-free true"} + change("handsFreeEnabled", "", "true"));
}

TEST_F(OldProgram, IsCalledByTheTransportsRequestsAndFindsItsOwnNamesInThem) {
    const auto handler = Handler::create(transport, storage, metrics, bridge, launcher, info);
    using CommunicationHandler::MessageType;
    transport->handlers.at(MessageType::GET_SETTINGS)(R"({"id":"7","body":{"settings":["timezone"]}})");
    transport->handlers.at(MessageType::IS_ORLIA_SELECTED_VA)(R"({"id":"8"})");
    transport->handlers.at(MessageType::OPEN_VA_SETTINGS)("{}");
    transport->handlers.at(MessageType::SET_SETTINGS)(R"({"at":1,"body":{"settingDBId":"deviceName","to":"Den"}})");
    expectCalls(Calls{R"(answer 7 {"settings":{"timezone":"Europe/Paris"}})",
                      R"(answer 8 {"isOrliaSelectedAsVA":true})", "launch with ''", "store deviceName=Den"} +
                change("deviceName", "", "Den"));
    transport->handlers.at(MessageType::LOG_OUT)("{}");
    expectCalls(
        {"apply handsFreeAlwaysOnEnabled=false", "apply pttAlwaysOnEnabled=false", "hands-free false", "clear"});
}

/// Refuses every request, and has its own members after those of the base class.
class OldDerivedHandler : public Handler {
public:
    using Handler::getSDKSetting;
    using Handler::Handler;
    using Handler::isSDKSetting;
    using Handler::stringifyVector;
    bool isRequestValid(std::string& settingDBId, long timestamp) override {
        asked = settingDBId + " " + std::to_string(timestamp);
        return false;
    }
    std::string asked;
    std::uint64_t last = 0x5e77'1965'0000'0001;
};

TEST_F(OldProgram, DerivesAHandlerThatTheLibraryCallsWithoutOverwritingIt) {
    const auto handler = make<OldDerivedHandler>();
    EXPECT_FALSE(handler->handleSetSettingRequest(R"({"at":5,"body":{"settingDBId":"deviceName","to":"Den"}})"));
    EXPECT_EQ(handler->asked, "deviceName 5");
    EXPECT_EQ(handler->last, 0x5e77'1965'0000'0001U);
    expectCalls({});
    EXPECT_EQ(handler->stringifyVector({"a", "b"}), R"(["a","b"])");
    EXPECT_EQ(handler->getSDKSetting(::SettingsHandler::TIMEZONE), "Europe/Paris");
    EXPECT_TRUE(OldDerivedHandler::isSDKSetting(::SettingsHandler::TIMEZONE));
}

TEST_F(OldProgram, FindsThatAHandlerFillsItsOldSizeAndNoMore) {
    struct Room {
        alignas(Handler) unsigned char handler[sizeof(Handler)];
        unsigned char behind[64];
    } room;
    for (auto& byte : room.behind) {
        byte = 0xa5;
    }
    auto* const handler = new (room.handler) Handler(transport, storage, metrics, bridge, launcher, info);
    handler->initializeSettings();
    handler->~Handler();
    for (const auto byte : room.behind) {
        EXPECT_EQ(byte, 0xa5);
    }
}

TEST_F(OldProgram, FindsTheTablesAndTheLookUps) {
    EXPECT_EQ(::SettingsHandler::stringToSettingsNamesTypeMapping.at("timezone"), ::SettingsHandler::TIMEZONE);
    EXPECT_EQ(::SettingsHandler::SettingsNamesTypeToStringMapping.at(::SettingsHandler::DEVICE_NAME), "deviceName");
    EXPECT_EQ(::SettingsHandler::SettingsNamesTypeToDefaultValuesMapping.at(::SettingsHandler::FRIENDLY_NAME), "TV");
    EXPECT_EQ(::SettingsHandler::settingNameFromType(::SettingsHandler::ORLIA_LOCALE), "orliaLocale");
    EXPECT_EQ(::SettingsHandler::settingTypeFromName("captionsStyles"), ::SettingsHandler::CAPTIONS_STYLES);
    EXPECT_EQ(::SettingsHandler::defaultValueForSetting(::SettingsHandler::FRIENDLY_NAME), "TV");
}

}  // namespace AbiTests
