#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "SettingsClient/Client.h"
#include "bridge/HostSource.h"
#include "bridge/Log.h"

namespace SettingsDbus {

/// The values of the host's settings, kept up to date.
///
/// **What is told.** Every event once and in order, as long as there is one connection to one run of the host. After
/// that, and at the start, the newest event of each setting that the host remembers, in order, and each value that
/// differs without one.
class Settings {
public:
    using Event = SettingsClient::Event;
    /// `event.sequence` is 0 for a value that was read after it had changed without an event. `isFirst`: the value
    /// before is not known, since all values were read for the first time.
    using Observer = std::function<void(const Event& event, bool isFirst)>;

    /// `changeObserver` is called within `process` of the client, `tellChanges` and `repeat`.
    Settings(SettingsClient::Client& host, const SettingsBridge::Log& log, Observer changeObserver);

    /// By key, without those that have none. Known as soon as the host was reached once, also while it is away.
    /// Errors: `ConnectionError` before.
    const std::map<std::string, std::string>& all() const;

    /// Is there a connection to the host?
    bool isServed() const { return isConnected && client.isConnected(); }
    /// For requests. Errors: `ConnectionError` while there is no connection to the host; nothing is waited for.
    SettingsClient::Client& host();

    /// For the loop.
    SettingsBridge::Source& hostSource() { return source; }
    /// Tells what has arrived.
    void tellChanges() { source.process(0); }
    /// Tells the newest event of each setting again, now or as soon as there is a connection.
    void repeat();

private:
    void take(const Event& event);
    void takeReread(const SettingsClient::Reread& reread);
    void takeConnection();
    void takeLoss(const std::string& reason);
    /// Errors of this and `readAgain`: those of requests; then `source` or the next connection has all values read.
    void refresh();
    void readAgain(const std::vector<std::string>& keys);
    /// Takes the value of `now` over. Returns: the difference.
    Event adopt(const std::string& key, const std::map<std::string, std::string>& now);

    SettingsClient::Client& client;
    const SettingsBridge::Log& log;
    const Observer observer;
    std::map<std::string, std::string> values;
    bool known = false;
    bool isConnected = false;
    std::string lossReason = "not connected to the host yet";
    /// The last event of this run of the host that was told.
    std::uint64_t lastSequence = 0;
    SettingsBridge::HostSource source{client, log, [this] { refresh(); }};
};

}  // namespace SettingsDbus
