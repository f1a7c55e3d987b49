#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Observation.h"

namespace SettingsHandlerKit {

/// The observers of settings in this process. What they are told waits until `deliver`, so that none of them is called
/// from inside the handler, and each sees all in the order in which it happened. Threads: `add` any, otherwise one.
class SettingObservers {
public:
    /// `key`: nothing for all settings.
    Observation add(std::optional<std::string> key, SettingObserver observer);

    /// Is nobody subscribed? Then nothing needs to be told.
    bool empty() const;
    void tell(ObservedSetting what);
    /// How much they have been told that waits.
    std::size_t waitingCount() const { return waiting.size(); }
    /// Only the first `count` of it still hold.
    void forgetAfter(std::size_t count) {
        waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(count), waiting.end());
    }
    /// Calls the observers with everything that waits, also with what is told meanwhile. An exception of an observer is
    /// logged at level 3, and the others are called. From inside an observer it does nothing.
    void deliver();

private:
    using Entries = std::vector<std::shared_ptr<Observation::Entry>>;
    Entries current();
    static void call(Observation::Entry& entry, const ObservedSetting& what);

    mutable std::mutex mutex;
    std::vector<std::weak_ptr<Observation::Entry>> entries;
    std::deque<ObservedSetting> waiting;
    bool delivering = false;
};

}  // namespace SettingsHandlerKit
