#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using SettingsHandlerTesting::FakeEntitlementObserver;
using SettingsHandlerTesting::FakeFriendlyNameObserver;
using SettingsHandlerTesting::FakeLocaleObserver;

class Observers : public HandlerTest {
protected:
    std::shared_ptr<FakeFriendlyNameObserver> friendly(const std::string& name = "observer") {
        return std::make_shared<FakeFriendlyNameObserver>(journal, name);
    }
};

TEST_F(Observers, NullObserversAreLoggedEachWithItsOwnText) {
    handler->addOrliaLocaleObserver(nullptr);
    handler->addFriendlyNameObserver(nullptr);
    handler->removeFriendlyNameObserver(nullptr);
    handler->addEntitlementStatusObserver(nullptr);
    handler->removeEntitlementStatusObserver(nullptr);
    expectJournal((Entries{"log 2 SettingsHandler:addOrliaLocaleObserver: Given observer is null",
                           "log 2 SettingsHandler:addFriendlyNameObserver: Given observer is null",
                           "log 2 SettingsHandler:removeFriendlyNameObserver: Given observer is null",
                           "log 2 SettingsHandler:addEntitlementStatusObserver: Given observer is null",
                           "log 2 SettingsHandler:removeEntitlementStatusObserver: Given observer is null"}));
    handler->onFriendlyNameChanged("x");
    expectJournal(Entries{});
}

TEST_F(Observers, AddingAndRemovingNeitherLogsNorNotifies) {
    const auto observer = friendly();
    handler->addFriendlyNameObserver(observer);
    handler->removeFriendlyNameObserver(observer);
    expectJournal(Entries{});
}

TEST_F(Observers, TheSameObjectIsHeldOnce) {
    const auto observer = friendly();
    // Another shared pointer to the same object, with its own count.
    const std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> second(observer.get(), [](auto*) {});
    handler->addFriendlyNameObserver(observer);
    handler->addFriendlyNameObserver(observer);
    handler->addFriendlyNameObserver(second);
    handler->onFriendlyNameChanged("Den");
    expectJournal(Entries{"observer.friendlyName(Den)"});
    handler->removeFriendlyNameObserver(second);
    handler->onFriendlyNameChanged("Den");
    expectJournal(Entries{});
}

TEST_F(Observers, RemovingAnUnknownObserverDoesNothing) {
    const auto observer = friendly();
    handler->removeFriendlyNameObserver(observer);
    handler->addFriendlyNameObserver(observer);
    handler->removeFriendlyNameObserver(observer);
    handler->removeFriendlyNameObserver(observer);
    const auto entitlement = std::make_shared<FakeEntitlementObserver>(journal);
    handler->removeEntitlementStatusObserver(entitlement);
    expectJournal(Entries{});
    EXPECT_EQ(observer.use_count(), 1);
}

TEST_F(Observers, TheRegistryKeepsObserversAliveUntilTheyAreRemovedOrTheHandlerIsDestroyed) {
    auto removed = friendly();
    auto locale = std::make_shared<FakeLocaleObserver>(journal);
    auto entitlement = std::make_shared<FakeEntitlementObserver>(journal);
    handler->addFriendlyNameObserver(removed);
    handler->addOrliaLocaleObserver(locale);
    handler->addEntitlementStatusObserver(entitlement);
    EXPECT_EQ(removed.use_count(), 2);
    handler->removeFriendlyNameObserver(removed);
    EXPECT_EQ(removed.use_count(), 1);
    handler->removeEntitlementStatusObserver(entitlement);
    EXPECT_EQ(entitlement.use_count(), 1);
    EXPECT_EQ(locale.use_count(), 2);
    handler.reset();
    EXPECT_EQ(locale.use_count(), 1);
}

TEST_F(Observers, EachRegistryNotifiesItsOwnObservers) {
    handler->addOrliaLocaleObserver(std::make_shared<FakeLocaleObserver>(journal));
    handler->addFriendlyNameObserver(friendly());
    handler->addEntitlementStatusObserver(std::make_shared<FakeEntitlementObserver>(journal));
    handler->onOrliaLocaleChange({"en-US", "fr-FR"});
    expectJournal((Entries{"metricsCache.setOrliaLocale(en-US)", "observer.orliaLocale(en-US)"}));
    handler->onFriendlyNameChanged("Den");
    expectJournal(Entries{"observer.friendlyName(Den)"});
    handler->onEntitlementStatusChanged("active");
    expectJournal(
        (Entries{"log 1 SettingsHandler:onEntitlementStatusChanged: active", "observer.entitlementStatus(active)"}));
}

TEST_F(Observers, WithoutObserversTheRestStillHappens) {
    handler->onEntitlementStatusChanged("active");
    handler->onOrliaLocaleChange({"en-US"});
    handler->onFriendlyNameChanged("Den");
    expectJournal(
        (Entries{"log 1 SettingsHandler:onEntitlementStatusChanged: active", "metricsCache.setOrliaLocale(en-US)"}));
}

TEST_F(Observers, ManyObserversAreAllNotifiedOnce) {
    std::vector<std::shared_ptr<FakeFriendlyNameObserver>> observers;
    Entries expected;
    for (int index = 0; index < 100; ++index) {
        const std::string name = "observer" + std::to_string(1000 + index);
        observers.push_back(friendly(name));
        handler->addFriendlyNameObserver(observers.back());
        expected.push_back(name + ".friendlyName(Den)");
    }
    handler->onFriendlyNameChanged("Den");
    Entries told = journal.take();
    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, expected);
}

TEST_F(Observers, AnObserverReleasedDuringANotificationLivesUntilItEnds) {
    auto observer = friendly();
    const std::weak_ptr<FakeFriendlyNameObserver> watched = observer;
    observer->reaction = [&] {
        handler->removeFriendlyNameObserver(watched.lock());
        observer.reset();
        EXPECT_FALSE(watched.expired());
    };
    handler->addFriendlyNameObserver(observer);
    handler->onFriendlyNameChanged("x");
    EXPECT_TRUE(watched.expired());
}

}  // namespace SettingsHandlerTests
