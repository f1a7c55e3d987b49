#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "SettingsHandler/SettingsHandlerInterface.h"
#include "SettingsHandlerTesting/FakeObservers.h"

/// Observers that misbehave when they are notified, for each of the three kinds: `Fake` is `FakeLocaleObserver`,
/// `FakeFriendlyNameObserver` or `FakeEntitlementObserver`. Each records its call like the fake and then misbehaves, on
/// the thread that made the change:
///
///     auto observer = std::make_shared<SelfRemover<FakeFriendlyNameObserver>>(journal, *handler);
///     handler->addFriendlyNameObserver(observer);
///     handler->setSetting("friendlyName", "Den");
///
/// Options: the constructor's arguments. Threads: one change at a time; `Writer` and `OtherRemover` have state without
/// a lock.
///
/// They hold the handler by reference: do not notify them after the handler is destroyed.
namespace SettingsHandlerTesting {

/// The interface that the observers call.
using SettingsHandlerInterface = SettingsHandler::SettingsHandlerInterface;

/// Adds an observer of any of the three kinds.
/// @{
inline void addObserver(SettingsHandlerInterface& handler, std::shared_ptr<FakeLocaleObserver> observer) {
    handler.addOrliaLocaleObserver(std::move(observer));
}
inline void addObserver(SettingsHandlerInterface& handler, std::shared_ptr<FakeFriendlyNameObserver> observer) {
    handler.addFriendlyNameObserver(std::move(observer));
}
inline void addObserver(SettingsHandlerInterface& handler, std::shared_ptr<FakeEntitlementObserver> observer) {
    handler.addEntitlementStatusObserver(std::move(observer));
}
/// @}

/// Removes an observer. Locale observers cannot be removed.
/// @{
inline void removeObserver(SettingsHandlerInterface& handler, std::shared_ptr<FakeFriendlyNameObserver> observer) {
    handler.removeFriendlyNameObserver(std::move(observer));
}
inline void removeObserver(SettingsHandlerInterface& handler, std::shared_ptr<FakeEntitlementObserver> observer) {
    handler.removeEntitlementStatusObserver(std::move(observer));
}
/// @}

/// Removes itself whenever it is notified.
template <typename Fake>
class SelfRemover : public Fake, public std::enable_shared_from_this<SelfRemover<Fake>> {
public:
    /// Records into `recorder` under `ownName`, and calls `handler` back.
    SelfRemover(Journal& recorder, SettingsHandlerInterface& handler, std::string ownName = "observer")
        : Fake(recorder, std::move(ownName)) {
        this->reaction = [this, &handler] { removeObserver(handler, this->shared_from_this()); };
    }
};

/// Removes `victim` whenever it is notified.
template <typename Fake>
class OtherRemover : public Fake {
public:
    /// Records into `recorder` under `ownName`, and calls `handler` back.
    OtherRemover(Journal& recorder, SettingsHandlerInterface& handler, std::string ownName = "observer")
        : Fake(recorder, std::move(ownName)) {
        this->reaction = [this, &handler] { removeObserver(handler, victim.lock()); };
    }

    /// The observer that it removes.
    std::weak_ptr<Fake> victim;
};

/// Adds another observer whenever it is notified.
template <typename Fake>
class Adder : public Fake {
public:
    /// Records into `recorder` under `ownName`, and calls `handler` back.
    Adder(Journal& recorder, SettingsHandlerInterface& handler, std::shared_ptr<Fake> added,
          std::string ownName = "observer")
        : Fake(recorder, std::move(ownName)) {
        this->reaction = [&handler, newcomer = std::move(added)] { addObserver(handler, newcomer); };
    }
};

/// Sets `settingDBId` the first time that it is notified. Only once, because a change that notifies it again would not
/// end.
template <typename Fake>
class Writer : public Fake {
public:
    /// Records into `recorder` under `ownName`, and calls `handler` back.
    Writer(Journal& recorder, SettingsHandlerInterface& handler, std::string settingDBId, std::string newValue,
           std::string ownName = "observer")
        : Fake(recorder, std::move(ownName)) {
        this->reaction = [this, &handler, key = std::move(settingDBId), value = std::move(newValue)] {
            if (!std::exchange(hasWritten, true)) {
                handler.setSetting(key, value);
            }
        };
    }

private:
    bool hasWritten = false;
};

/// Throws `std::runtime_error` whenever it is notified.
template <typename Fake>
class Thrower : public Fake {
public:
    /// Records into `recorder` under `ownName`.
    explicit Thrower(Journal& recorder, std::string ownName = "observer") : Fake(recorder, std::move(ownName)) {
        this->reaction = [] { throw std::runtime_error("thrown by an observer"); };
    }
};

}  // namespace SettingsHandlerTesting
