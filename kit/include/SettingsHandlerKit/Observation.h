#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

/// A change for which the handler sent an event to the clients.
struct SettingEvent {
    /// The value before.
    std::string from;
    /// The value now.
    std::string to;
    /// The number of the event in this run: 1, 2, 3 …
    unsigned long sequence = 0;
    /// Who asked for the change.
    Origin origin = Origin::DEVICE;
    /// The name of the client that asked for it; empty when it has none, and for changes of the device.
    std::string client;
};

/// What an observer of settings is told.
struct ObservedSetting {
    /// The key.
    std::string settingDBId;
    /// Nothing for a notice: the value changed at its owner, the voice SDK or the device, without an event. Read it
    /// again.
    std::optional<SettingEvent> event;
};

/// Is called for each event and each notice.
using SettingObserver = std::function<void(const ObservedSetting&)>;

/// A subscription to settings, see `Server::observe`. It ends when the object is destroyed, and may outlive the server.
///
/// Threads: any. When the end is requested on another thread than the server's, it waits for a call that is in
/// progress; after it the observer is not called any more. An observer may end its own subscription.
class Observation {
public:
    /// Observes nothing.
    Observation() = default;
    ~Observation();
    /// Takes the subscription over.
    Observation(Observation&& other) noexcept = default;
    /// Ends the subscription that this object held before.
    Observation& operator=(Observation&& other) noexcept;
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    /// Ends the subscription now. Repeated calls do nothing.
    void end();

private:
    friend class SettingObservers;
    struct Entry;
    explicit Observation(std::shared_ptr<Entry> made);

    std::shared_ptr<Entry> entry;
};

}  // namespace SettingsHandlerKit
