#include <array>
#include <cstdint>
#include <cstring>

#include "HandlerFixture.h"

// Installed binaries call virtual operations by their index in the virtual table. A pointer to a virtual member
// function holds the offset of the entry in bytes. Its lowest bit marks it as virtual; on ARM, where code addresses may
// be odd, the lowest bit of the following adjustment does.

namespace SettingsHandlerTests {

template <typename Member>
long placeOf(Member member) {
    std::array<std::intptr_t, 2> representation{};
    static_assert(sizeof(member) == sizeof(representation));
    std::memcpy(representation.data(), &member, sizeof(representation));
    auto [entry, adjustment] = representation;
#if defined(__aarch64__) || defined(__arm__)
    EXPECT_EQ(adjustment % 2, 1) << "not a virtual operation";
#else
    EXPECT_EQ(entry % 2, 1) << "not a virtual operation";
    static_cast<void>(adjustment);
    --entry;
#endif
    return entry / static_cast<long>(sizeof(void*));
}

using Handler = SettingsHandler::SettingsHandler;
using HandlerInterface = SettingsHandler::SettingsHandlerInterface;
using InfoObserver = DeviceAbstractionLayer::DeviceInfoObserverInterface;
using Locale = void (InfoObserver::*)(std::string);
using Locales = void (InfoObserver::*)(std::vector<std::string>);

TEST(VtablePlaces, DeviceInfoObserver) {
    EXPECT_EQ(placeOf(static_cast<Locale>(&InfoObserver::notifyLocaleChange)), 0);
    EXPECT_EQ(placeOf(static_cast<Locales>(&InfoObserver::notifyLocaleChange)), 1);
    EXPECT_EQ(placeOf(&InfoObserver::notifyTimezoneChange), 2);
    EXPECT_EQ(placeOf(&InfoObserver::notifyNetworkConnectionChanged), 3);
    EXPECT_EQ(placeOf(&InfoObserver::notifyMicrophoneAvailabilityChanged), 4);
    EXPECT_EQ(placeOf(&InfoObserver::notifyAudioGuidanceChanged), 5);
    EXPECT_EQ(placeOf(&InfoObserver::notifyDeviceModeChanged), 6);
    EXPECT_EQ(placeOf(&InfoObserver::notifySystemSettingChanged), 7);
}

TEST(VtablePlaces, HandsfreeStateObserver) {
    EXPECT_EQ(placeOf(&DeviceAbstractionLayer::HandsfreeStateObserverInterface::notifyHandsfreeStateChanged), 0);
}

TEST(VtablePlaces, SettingsHandlerInterface) {
    // Places 8 and 9 are the two forms of the destructor.
    EXPECT_EQ(placeOf(&HandlerInterface::initializeSettings), 10);
    EXPECT_EQ(placeOf(&HandlerInterface::getSettings), 11);
    EXPECT_EQ(placeOf(&HandlerInterface::setSetting), 12);
    EXPECT_EQ(placeOf(&HandlerInterface::isRequestValid), 13);
    EXPECT_EQ(placeOf(&HandlerInterface::getCurrentSettingsMap), 14);
    EXPECT_EQ(placeOf(&HandlerInterface::notifyHandsfreeStateChanged), 15);
    EXPECT_EQ(placeOf(&HandlerInterface::addOrliaLocaleObserver), 16);
    EXPECT_EQ(placeOf(&HandlerInterface::addFriendlyNameObserver), 17);
    EXPECT_EQ(placeOf(&HandlerInterface::removeFriendlyNameObserver), 18);
    EXPECT_EQ(placeOf(&HandlerInterface::addEntitlementStatusObserver), 19);
    EXPECT_EQ(placeOf(&HandlerInterface::removeEntitlementStatusObserver), 20);
    EXPECT_EQ(placeOf(&HandlerInterface::migrateExistingDeviceSettings), 21);
}

TEST(VtablePlaces, TheHandlerHasTheSamePlacesAndNoMore) {
    EXPECT_EQ(placeOf(static_cast<void (Handler::*)(std::string)>(&Handler::notifyLocaleChange)), 0);
    EXPECT_EQ(placeOf(static_cast<void (Handler::*)(std::vector<std::string>)>(&Handler::notifyLocaleChange)), 1);
    EXPECT_EQ(placeOf(&Handler::notifySystemSettingChanged), 7);
    EXPECT_EQ(placeOf(&Handler::initializeSettings), 10);
    EXPECT_EQ(placeOf(&Handler::notifyHandsfreeStateChanged), 15);
    EXPECT_EQ(placeOf(&Handler::migrateExistingDeviceSettings), 21);
    struct Extended : Handler {
        using Handler::Handler;
        virtual void next() {}
    };
    EXPECT_EQ(placeOf(&Extended::next), 22) << "the first place of a derived class";
}

TEST(VtablePlaces, TheDeviceInfoObserverIsThePrimaryBase) {
    alignas(Handler) static char memory[sizeof(Handler)];
    auto* const handler = reinterpret_cast<Handler*>(memory);
    EXPECT_EQ(static_cast<void*>(static_cast<InfoObserver*>(handler)), memory);
    EXPECT_EQ(static_cast<void*>(static_cast<DeviceAbstractionLayer::HandsfreeStateObserverInterface*>(handler)),
              memory + sizeof(void*));
}

TEST(VtablePlaces, Transport) {
    using Transport = CommunicationHandler::CommunicationHandlerInterface;
    EXPECT_EQ(placeOf(&Transport::sendMessage), 5 - 1);
    EXPECT_EQ(placeOf(&Transport::sendResponse), 6 - 1);
    EXPECT_EQ(placeOf(&Transport::registerMessageHandler), 7 - 1);
}

TEST(VtablePlaces, Storage) {
    using Storage = SDKWrapper::StorageManagerInterface;
    EXPECT_EQ(placeOf(&Storage::getValue), 3 - 1);
    EXPECT_EQ(placeOf(&Storage::setValue), 4 - 1);
    EXPECT_EQ(placeOf(&Storage::removeValue), 7 - 1);
    EXPECT_EQ(placeOf(&Storage::clearStorage), 9 - 1);
}

TEST(VtablePlaces, MetricsDelegate) {
    using Delegate = Metrics::MetricsDelegateInterface;
    EXPECT_EQ(placeOf(&Delegate::recordEvent), 4 - 1);
    EXPECT_EQ(placeOf(&Delegate::recordCounter), 5 - 1);
}

TEST(VtablePlaces, SdkBridge) {
    using Bridge = teskVessa::SDKBridgeInterface;
    EXPECT_EQ(placeOf(&Bridge::setHandsFreeEnabled), 1 - 1);
    EXPECT_EQ(placeOf(&Bridge::applySetting), 2 - 1);
    EXPECT_EQ(placeOf(&Bridge::setTimezone), 3 - 1);
    EXPECT_EQ(placeOf(&Bridge::getTimezone), 4 - 1);
    EXPECT_EQ(placeOf(&Bridge::setLocales), 5 - 1);
    EXPECT_EQ(placeOf(&Bridge::getLocales), 6 - 1);
    EXPECT_EQ(placeOf(&Bridge::isCaptionsEnabled), 8 - 1);
    EXPECT_EQ(placeOf(&Bridge::isDoNotDisturbEnabled), 10 - 1);
}

TEST(VtablePlaces, Observers) {
    EXPECT_EQ(placeOf(&teskVessa::NativeBridgeInterface::notifyEntitlementStatusChanged), 3 - 1);
    EXPECT_EQ(placeOf(&VessaNativeCommon::OrliaLocaleObserverInterface::notifyOrliaLocaleChanged), 1 - 1);
    EXPECT_EQ(placeOf(&VessaNativeCommon::FriendlyNameObserverInterface::notifyFriendlyNameChanged), 1 - 1);
}

TEST(VtablePlaces, Device) {
    EXPECT_EQ(placeOf(&DeviceAbstractionLayer::AppLaunch::launchApp), 1 - 1);
    EXPECT_EQ(placeOf(&DeviceAbstractionLayer::OrliaDeviceInfoInterface::getDeviceInfo), 9 - 1);
}

/// The number of virtual operations of `Interface`, with the two forms of the destructor.
template <typename Interface>
long placesOf() {
    struct Extended : Interface {
        virtual void next() {}
    };
    return placeOf(&Extended::next);
}

TEST(VtablePlaces, DestructorsAreLast) {
    EXPECT_EQ(placesOf<InfoObserver>(), 8 + 2);
    EXPECT_EQ(placesOf<DeviceAbstractionLayer::HandsfreeStateObserverInterface>(), 1 + 2);
    EXPECT_EQ(placesOf<CommunicationHandler::CommunicationHandlerInterface>(), 7 + 2);
    EXPECT_EQ(placesOf<SDKWrapper::StorageManagerInterface>(), 9 + 2);
    EXPECT_EQ(placesOf<Metrics::MetricsDelegateInterface>(), 5 + 2);
    EXPECT_EQ(placesOf<teskVessa::SDKBridgeInterface>(), 10 + 2);
    EXPECT_EQ(placesOf<teskVessa::NativeBridgeInterface>(), 3 + 2);
    EXPECT_EQ(placesOf<VessaNativeCommon::OrliaLocaleObserverInterface>(), 1 + 2);
    EXPECT_EQ(placesOf<VessaNativeCommon::FriendlyNameObserverInterface>(), 1 + 2);
    EXPECT_EQ(placesOf<DeviceAbstractionLayer::AppLaunch>(), 1 + 2);
    EXPECT_EQ(placesOf<DeviceAbstractionLayer::OrliaDeviceInfoInterface>(), 9 + 2);
}

}  // namespace SettingsHandlerTests
