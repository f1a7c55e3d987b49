#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using DeviceNotifications = HandlerTest;

TEST_F(DeviceNotifications, ASingleLocaleReplacesTheList) {
    sdk->locales = {"en-US", "es-US"};
    handler->notifyLocaleChange(std::string("fr-FR"));
    expectJournal((Entries{"log 1 SettingsHandler:notifyLocaleChange: Notified of locale change. New value: fr-FR",
                           "sdk.getLocales()", "sdk.setLocales(fr-FR)"}));
}

TEST_F(DeviceNotifications, TheSamePrimaryLocaleChangesNothing) {
    sdk->locales = {"en-US", "es-US"};
    handler->notifyLocaleChange(std::string("en-US"));
    expectJournal((Entries{
        "log 1 SettingsHandler:notifyLocaleChange: Notified of locale change. New value: en-US", "sdk.getLocales()",
        R"(log 1 SettingsHandler:notifyLocaleChange: Incoming primary locale (en-US) is identical to )"
        R"(current primary locale (["en-US","es-US"]))"}));
}

TEST_F(DeviceNotifications, ASecondaryLocaleOrOtherLetterCaseIsAChange) {
    for (const auto* locale : {"es-US", "EN-US", "en-us", "en-US "}) {
        sdk->locales = {"en-US", "es-US"};
        handler->notifyLocaleChange(std::string(locale));
        EXPECT_EQ(journal.take().back(), std::string("sdk.setLocales(") + locale + ")");
        EXPECT_EQ(sdk->locales, Entries{locale});
    }
}

TEST_F(DeviceNotifications, ALocaleForAnEmptyListIsSet) {
    sdk->locales = {};
    handler->notifyLocaleChange(std::string("fr-FR"));
    expectJournal(
        (Entries{"log 1 SettingsHandler:notifyLocaleChange: Notified of locale change. New value: fr-FR",
                 "sdk.getLocales()", "log 1 SettingsHandler:Current locale is empty", "sdk.setLocales(fr-FR)"}));
}

TEST_F(DeviceNotifications, AListIsPassedOnUnchecked) {
    handler->notifyLocaleChange(std::vector<std::string>{"en-US"});
    handler->notifyLocaleChange(std::vector<std::string>{});
    expectJournal(
        (Entries{R"(log 1 SettingsHandler:Notified of locale change. New value: ["en-US"])", "sdk.setLocales(en-US)",
                 "log 1 SettingsHandler:Notified of locale change. New value: []", "sdk.setLocales()"}));
}

TEST_F(DeviceNotifications, LocalesTouchNeitherCacheNorObservers) {
    handler->addOrliaLocaleObserver(std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal));
    cache("orliaLocale", "old");
    handler->notifyLocaleChange(std::string("fr-FR"));
    EXPECT_EQ(journal.take().size(), 3U);
}

TEST_F(DeviceNotifications, ATimezoneIsPassedOnWithoutALogLine) {
    handler->notifyTimezoneChange("Europe/Paris");
    expectJournal(Entries{"sdk.setTimezone(Europe/Paris)"});
}

TEST_F(DeviceNotifications, OtherNotificationsAreIgnored) {
    handler->notifyNetworkConnectionChanged("x");
    handler->notifyMicrophoneAvailabilityChanged("x");
    handler->notifyAudioGuidanceChanged(true);
    handler->notifyDeviceModeChanged("x");
    expectJournal(Entries{});
}

TEST_F(DeviceNotifications, ASystemSettingIsWritten) {
    handler->notifySystemSettingChanged("deviceName", "Den");
    expectJournal(Entries{"log 1 SettingsHandler:Notified of system setting changing: deviceName. New value: Den"} +
                  writeOf("deviceName") +
                  Entries{"storage.setValue(deviceName, Den)", "log 1 SettingsHandler:deviceName new value: 'Den'"} +
                  changed("deviceName", "", "Den"));
}

TEST_F(DeviceNotifications, HandsFreeIsWrittenFromBothBases) {
    handler->notifyHandsfreeStateChanged(true);
    DeviceAbstractionLayer::HandsfreeStateObserverInterface& secondBase = *handler;
    const Entries on =
        Entries{"log 1 SettingsHandler:Notified of HandsFreeState changing. New value: true"} +
        writeOf("handsFreeEnabled") +
        Entries{"sdk.setHandsFreeEnabled(true)", "log 1 SettingsHandler:handsFreeEnabled changed from '' to 'true'"} +
        changed("handsFreeEnabled", "", "true");
    expectJournal(on);
    secondBase.notifyHandsfreeStateChanged(false);
    const Entries off = Entries{"log 1 SettingsHandler:Notified of HandsFreeState changing. New value: false"} +
                        writeOf("handsFreeEnabled") +
                        Entries{"sdk.setHandsFreeEnabled(false)",
                                "log 1 SettingsHandler:handsFreeEnabled changed from 'true' to 'false'"} +
                        changed("handsFreeEnabled", "true", "false");
    expectJournal(off);
}

TEST_F(DeviceNotifications, WritesGoThroughTheInterface) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        Entries written;
        bool setSetting(const std::string& name, const std::string& value) override {
            written.push_back(name + "=" + value);
            return false;
        }
    };
    const auto derived = make<Derived>();
    derived->notifySystemSettingChanged("a", "b");
    derived->notifyHandsfreeStateChanged(false);
    EXPECT_EQ(derived->written, (Entries{"a=b", "handsFreeEnabled=false"}));
}

}  // namespace SettingsHandlerTests
