#pragma once

#include <functional>
#include <string>
#include <utility>

#include "SettingsHandlerTesting/Journal.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "VessaNativeCommon/OrliaLocaleObserverInterface.h"
#include "teskVessa/NativeBridgeInterface.h"

namespace SettingsHandlerTesting {

/// Observers of the three kinds that record their notifications.
///
/// Option: `reaction`, which runs when an observer is notified; nothing by default. `AdversarialObservers.h` has the
/// usual ways to misbehave:
///
///     auto caller = std::make_shared<FakeFriendlyNameObserver>(journal);
///     caller->reaction = [&] { handler->getCurrentSettingsMap(); };
///
/// Threads: they record on any. Set the reaction before the observer is added; it must be safe on the notifying thread.
///
/// They hold the journal by reference: it must outlive the handler, which keeps locale observers until it is destroyed.
using Reaction = std::function<void()>;

/// What the three kinds share. `Interface`: the kind of observer.
template <typename Interface>
class FakeObserver : public Interface {
public:
    /// Records into `recorder`, which must outlive it; entries begin with `ownName`.
    explicit FakeObserver(Journal& recorder, std::string ownName = "observer")
        : journal(recorder), name(std::move(ownName)) {}

    /// Runs when the observer is notified, after the entry.
    Reaction reaction;

protected:
    /// Records a notification, then runs the reaction.
    void record(const std::string& notification) {
        journal.add(name + "." + notification);
        if (reaction) {
            reaction();
        }
    }

private:
    Journal& journal;
    std::string name;
};

/// Entry: `observer.orliaLocale(en-US)`.
class FakeLocaleObserver : public FakeObserver<VessaNativeCommon::OrliaLocaleObserverInterface> {
public:
    using FakeObserver::FakeObserver;

    void notifyOrliaLocaleChanged(const std::string& locale) override { record("orliaLocale(" + locale + ")"); }
};

/// Entry: `observer.friendlyName(Den)`.
class FakeFriendlyNameObserver : public FakeObserver<VessaNativeCommon::FriendlyNameObserverInterface> {
public:
    using FakeObserver::FakeObserver;

    void notifyFriendlyNameChanged(const std::string& friendlyName) override {
        record("friendlyName(" + friendlyName + ")");
    }
};

/// Entry: `observer.entitlementStatus(active)`.
class FakeEntitlementObserver : public FakeObserver<teskVessa::NativeBridgeInterface> {
public:
    using FakeObserver::FakeObserver;

    void notifyEntitlementStatusChanged(const std::string& status) override {
        record("entitlementStatus(" + status + ")");
    }
};

}  // namespace SettingsHandlerTesting
