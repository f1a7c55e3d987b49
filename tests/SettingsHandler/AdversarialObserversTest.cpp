#include "HandlerFixture.h"
#include "SettingsHandlerTesting/AdversarialObservers.h"

namespace SettingsHandlerTests {

using SettingsHandlerTesting::Adder;
using SettingsHandlerTesting::FakeEntitlementObserver;
using SettingsHandlerTesting::FakeFriendlyNameObserver;
using SettingsHandlerTesting::FakeLocaleObserver;
using SettingsHandlerTesting::OtherRemover;
using SettingsHandlerTesting::SelfRemover;
using SettingsHandlerTesting::Thrower;
using SettingsHandlerTesting::Writer;

/// The differences between the three registries: how observers are notified, and the journal entries.
struct LocaleKind {
    using Fake = FakeLocaleObserver;
    static void announce(OpenHandler& handler, const std::string& value) { handler.onOrliaLocaleChange({value}); }
    static Entries before(const std::string& value) { return {"metricsCache.setOrliaLocale(" + value + ")"}; }
    static std::string told(const std::string& who, const std::string& value) {
        return who + ".orliaLocale(" + value + ")";
    }
};

struct FriendlyNameKind {
    using Fake = FakeFriendlyNameObserver;
    static void announce(OpenHandler& handler, const std::string& value) { handler.onFriendlyNameChanged(value); }
    static Entries before(const std::string& /*value*/) { return {}; }
    static std::string told(const std::string& who, const std::string& value) {
        return who + ".friendlyName(" + value + ")";
    }
};

struct EntitlementKind {
    using Fake = FakeEntitlementObserver;
    static void announce(OpenHandler& handler, const std::string& value) { handler.onEntitlementStatusChanged(value); }
    static Entries before(const std::string& value) {
        return {"log 1 SettingsHandler:onEntitlementStatusChanged: " + value};
    }
    static std::string told(const std::string& who, const std::string& value) {
        return who + ".entitlementStatus(" + value + ")";
    }
};

template <typename Kind>
class AdversarialObservers : public HandlerTest {
protected:
    void add(const std::shared_ptr<typename Kind::Fake>& observer) {
        SettingsHandlerTesting::addObserver(*handler, observer);
    }

    /// Notifies of `value` and expects that exactly the observers `who` are called, in any order.
    void expectTold(const std::string& value, Entries who) {
        Kind::announce(*handler, value);
        Entries entries = journal.take();
        const Entries before = Kind::before(value);
        ASSERT_GE(entries.size(), before.size());
        const auto firstTold = entries.begin() + static_cast<std::ptrdiff_t>(before.size());
        EXPECT_EQ(Entries(entries.begin(), firstTold), before);
        std::sort(firstTold, entries.end());
        std::sort(who.begin(), who.end());
        Entries expected;
        for (const auto& name : who) {
            expected.push_back(Kind::told(name, value));
        }
        EXPECT_EQ(Entries(firstTold, entries.end()), expected);
    }
};

struct KindNames {
    template <typename Kind>
    static std::string GetName(int /*index*/) {
        return std::is_same_v<Kind, LocaleKind>         ? "Locale"
               : std::is_same_v<Kind, FriendlyNameKind> ? "FriendlyName"
                                                        : "Entitlement";
    }
};

using AllKinds = ::testing::Types<LocaleKind, FriendlyNameKind, EntitlementKind>;
TYPED_TEST_SUITE(AdversarialObservers, AllKinds, KindNames);

template <typename Kind>
class RemovableObservers : public AdversarialObservers<Kind> {};
using RemovableKinds = ::testing::Types<FriendlyNameKind, EntitlementKind>;
TYPED_TEST_SUITE(RemovableObservers, RemovableKinds, KindNames);

TYPED_TEST(RemovableObservers, AnObserverThatRemovesItselfIsNotifiedOnce) {
    using Fake = typename TypeParam::Fake;
    this->add(std::make_shared<SelfRemover<Fake>>(this->journal, *this->handler, "remover"));
    this->add(std::make_shared<Fake>(this->journal, "other"));
    this->expectTold("first", {"remover", "other"});
    this->expectTold("second", {"other"});
}

TYPED_TEST(RemovableObservers, AnObserverRemovedDuringANotificationIsStillNotified) {
    using Fake = typename TypeParam::Fake;
    // Whichever comes first removes the other.
    const auto one = std::make_shared<OtherRemover<Fake>>(this->journal, *this->handler, "one");
    const auto two = std::make_shared<OtherRemover<Fake>>(this->journal, *this->handler, "two");
    one->victim = two;
    two->victim = one;
    this->add(one);
    this->add(two);
    this->expectTold("first", {"one", "two"});
    this->expectTold("second", {});
}

TYPED_TEST(AdversarialObservers, AnObserverAddedDuringANotificationIsNotifiedOfTheNextChange) {
    using Fake = typename TypeParam::Fake;
    const auto newcomer = std::make_shared<Fake>(this->journal, "newcomer");
    this->add(std::make_shared<Adder<Fake>>(this->journal, *this->handler, newcomer, "adder"));
    this->expectTold("first", {"adder"});
    this->expectTold("second", {"adder", "newcomer"});
}

TYPED_TEST(AdversarialObservers, ManyObserversAddedDuringANotificationAreNotifiedOfTheNextChange) {
    using Fake = typename TypeParam::Fake;
    // Many, so that the registry is rebuilt several times while the pass goes on.
    const auto adder = std::make_shared<Fake>(this->journal, "adder");
    adder->reaction = [&] {
        for (int count = 0; count < 100; ++count) {
            this->add(std::make_shared<Fake>(this->journal, "newcomer"));
        }
    };
    this->add(adder);
    this->expectTold("first", {"adder"});
    adder->reaction = nullptr;
    Entries everybody(100, "newcomer");
    everybody.emplace_back("adder");
    this->expectTold("second", everybody);
}

TYPED_TEST(AdversarialObservers, AnExceptionSkipsTheOtherObserversAndKeepsTheRegistry) {
    using Fake = typename TypeParam::Fake;
    for (const auto* name : {"one", "two"}) {
        this->add(std::make_shared<Thrower<Fake>>(this->journal, name));
    }
    for (const auto* value : {"first", "second"}) {
        EXPECT_THROW(TypeParam::announce(*this->handler, value), std::runtime_error);
        EXPECT_EQ(this->journal.take().size(), TypeParam::before(value).size() + 1) << "one was told";
    }
}

TYPED_TEST(AdversarialObservers, AnObserverMaySetASettingAndTheChangeIsCompleteWhenItReturns) {
    using Fake = typename TypeParam::Fake;
    this->add(std::make_shared<Writer<Fake>>(this->journal, *this->handler, "deviceName", "Den", "writer"));
    TypeParam::announce(*this->handler, "x");
    this->expectJournal(
        TypeParam::before("x") + Entries{TypeParam::told("writer", "x")} + writeOf("deviceName") +
        Entries{"storage.setValue(deviceName, Den)", "log 1 SettingsHandler:deviceName new value: 'Den'"} +
        HandlerTest::changed("deviceName", "", "Den"));
}

using ReentrantWrites = HandlerTest;

// The inner change is complete before the outer one is reported, so the cache keeps the outer value.
TEST_F(ReentrantWrites, AnObserverThatSetsItsOwnSettingIsNotifiedAgainAndTheOuterChangeIsReportedLast) {
    handler->addFriendlyNameObserver(
        std::make_shared<Writer<FakeFriendlyNameObserver>>(journal, *handler, "friendlyName", "second"));
    EXPECT_TRUE(handler->setSetting("friendlyName", "first"));
    expectJournal(writeOf("friendlyName") +
                  Entries{"sdk.applySetting(friendlyName, first)", "observer.friendlyName(first)"} +
                  writeOf("friendlyName") +
                  Entries{"sdk.applySetting(friendlyName, second)", "observer.friendlyName(second)",
                          "log 1 SettingsHandler:friendlyName changed from '' to 'second'"} +
                  changed("friendlyName", "", "second") +
                  Entries{"log 1 SettingsHandler:friendlyName changed from '' to 'first'"} +
                  changed("friendlyName", "", "first"));
    EXPECT_EQ(cached("friendlyName"), "first");
}

}  // namespace SettingsHandlerTests
