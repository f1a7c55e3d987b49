#pragma once

#include <functional>
#include <string>
#include <utility>

#include "SettingsHandlerTesting/Journal.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "VessaNativeCommon/OrliaLocaleObserverInterface.h"
#include "teskVessa/NativeBridgeInterface.h"

namespace SettingsHandlerTesting {

/// Observers of the three kinds that record what they are told.
///
/// Knob: `reaction`, what an observer does when it is told: nothing by default. With it an observer can be made
/// hostile; `AdversarialObservers.h` has the usual ways:
///
///     auto caller = std::make_shared<FakeFriendlyNameObserver>(journal);
///     caller->reaction = [&] { handler->getCurrentSettingsMap(); };
///
/// Threads: they record on any; set the reaction before the observer is added, and let it be safe where it runs.
///
/// Unlike real ones they are done when they return, and they hold the journal by reference: it must outlive the
/// handler, which keeps locale observers to its end.
using Reaction = std::function<void()>;

/// Entry: `observer.orliaLocale(en-US)`, with `name` in front when there is one.
class FakeLocaleObserver : public VessaNativeCommon::OrliaLocaleObserverInterface {
public:
    /// Records into `recorder`, which outlives it; `ownName` stands in front.
    explicit FakeLocaleObserver(Journal& recorder, std::string ownName = "observer")
        : journal(recorder), name(std::move(ownName)) {}

    /// Runs when the observer is told, after the entry.
    Reaction reaction;

    void notifyOrliaLocaleChanged(const std::string& locale) override {
        journal.add(name + ".orliaLocale(" + locale + ")");
        if (reaction) {
            reaction();
        }
    }

private:
    Journal& journal;
    std::string name;
};

/// Entry: `observer.friendlyName(Den)`.
class FakeFriendlyNameObserver : public VessaNativeCommon::FriendlyNameObserverInterface {
public:
    /// Records into `recorder`, which outlives it; `ownName` stands in front.
    explicit FakeFriendlyNameObserver(Journal& recorder, std::string ownName = "observer")
        : journal(recorder), name(std::move(ownName)) {}

    /// Runs when the observer is told, after the entry.
    Reaction reaction;

    void notifyFriendlyNameChanged(const std::string& friendlyName) override {
        journal.add(name + ".friendlyName(" + friendlyName + ")");
        if (reaction) {
            reaction();
        }
    }

private:
    Journal& journal;
    std::string name;
};

/// Entry: `observer.entitlementStatus(active)`.
class FakeEntitlementObserver : public teskVessa::NativeBridgeInterface {
public:
    /// Records into `recorder`, which outlives it; `ownName` stands in front.
    explicit FakeEntitlementObserver(Journal& recorder, std::string ownName = "observer")
        : journal(recorder), name(std::move(ownName)) {}

    /// Runs when the observer is told, after the entry.
    Reaction reaction;

    void notifyEntitlementStatusChanged(const std::string& status) override {
        journal.add(name + ".entitlementStatus(" + status + ")");
        if (reaction) {
            reaction();
        }
    }

private:
    Journal& journal;
    std::string name;
};

}  // namespace SettingsHandlerTesting
