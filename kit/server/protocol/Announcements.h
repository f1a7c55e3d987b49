#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/Environment.h"
#include "Utils/Rapidjson.h"
#include "server/protocol/Clients.h"
#include "server/protocol/History.h"
#include "server/protocol/SettingObservers.h"

namespace SettingsHandlerKit {

/// Who causes what is announced.
struct Cause {
    Origin origin = Origin::DEVICE;
    /// The name of the client; empty when it has none.
    std::string client;
};

/// Events and notices: to all clients, to the history and to the observers in this process. One thread only.
///
/// What changes settings runs inside `perform`. When that is over, the keys that were reported to `valueChanged` and
/// for which there was no event go to every client as one notice; then the observers are called.
class Announcements {
public:
    /// Both outlive it.
    Announcements(Clients& allClients, History& itsHistory, Environment itsEnvironment);

    /// Runs `action` with events of `cause`. May be nested: the outermost announces.
    void perform(Cause cause, const std::function<void()>& action);

    /// Sends the event with this payload. Returns: its message id.
    std::string sendEvent(int type, const rapidjson::Value& payload);
    /// The value of a setting changed at its owner. Outside of `perform` it is announced at once.
    void valueChanged(const std::string& settingDBId);
    /// At the end of `perform` there is a notice of these keys, whatever was announced before.
    void reread(const std::set<std::string>& keys);

    /// The number of the newest event.
    unsigned long newest() const { return sequence; }
    /// A log-out begins: the history is emptied.
    void forget() { history.clear(); }
    SettingObservers& observers() { return settingObservers; }
    /// From now on no observer is called, until `callObservers`. An observer that makes a request of its own must not
    /// reply to the client of the one before.
    void holdObservers() { observersHeld = true; }
    void callObservers();

    /// From now on the history learns nothing, until `commitBatch`. Frames and observers are held besides.
    void beginBatch();
    void commitBatch();
    /// As if nothing had been announced since `beginBatch`. Returns: the keys of the events.
    std::set<std::string> rollBackBatch();

private:
    struct Batch {
        unsigned long sequence;
        std::size_t observations;
        std::vector<Announcement> announcements;
    };

    std::int64_t now() const;
    void announce(Announcement announcement);
    void performed(Cause before);
    void sendNotice();
    void tellObservers();

    Clients& clients;
    History& history;
    Environment environment;
    std::string messageIdPrefix;
    SettingObservers settingObservers;
    bool observersHeld = false;
    unsigned long sequence = 0;
    std::optional<Batch> batch;

    // What is being done.
    unsigned performing = 0;
    Cause current;
    std::set<std::string> changedKeys;
    std::set<std::string> announcedKeys;
};

}  // namespace SettingsHandlerKit
