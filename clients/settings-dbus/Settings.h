#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/Client.h"
#include "bridge/Log.h"

namespace SettingsDbus {

/// A setting has a new value.
struct Change {
    std::string key;
    /// Nothing: it is not known, since all values were read for the first time.
    std::optional<std::string> from;
    std::string to;
    /// That of the event; 0 when the value was read after it had changed without one, or while nobody listened.
    std::uint64_t sequence = 0;
    std::string origin;
    std::string client;
};

/// The values of the host's settings, kept up to date.
///
/// **What is told.** Every event once and in order, as long as there is one connection to one run of the host. After
/// that, and at the start, the newest event of each setting that the host remembers, in order, and each value that
/// differs without one.
class Settings {
public:
    /// Calls `observer` for each change, within `process` of the client and `repeat`.
    Settings(SettingsClient::Client& host, const SettingsBridge::Log& log,
             std::function<void(const Change&)> changeObserver);

    /// Were the values read? From then on they are known, also while the host is away.
    bool areKnown() const { return known; }
    /// The value; empty when there is none.
    std::string value(const std::string& key) const;
    /// By key, without those that have none.
    const std::map<std::string, std::string>& all() const { return values; }

    /// For requests. Errors: `ConnectionError` while there is no connection to the host; nothing is waited for.
    SettingsClient::Client& host();

    /// Tells what has arrived.
    void tellChanges() { client.process(); }
    /// Tells the newest event of each setting again, now or as soon as there is a connection.
    void repeat();

private:
    void take(const SettingsClient::Event& event);
    void takeReread(const SettingsClient::Reread& reread);
    void takeConnection();
    void takeLoss(const std::string& reason);
    /// Reads everything. A lost connection makes up for it later.
    void refresh();
    void readAll();
    void readAgain(const std::vector<std::string>& keys);
    void adopt(const std::string& key, const std::string& to, bool isTold);

    SettingsClient::Client& client;
    const SettingsBridge::Log& log;
    const std::function<void(const Change&)> observer;
    std::map<std::string, std::string> values;
    bool known = false;
    bool isConnected = false;
    bool mustRefresh = true;
    std::string lossReason = "the host was not reached yet";
    /// The last event of this run of the host that was told.
    std::uint64_t lastSequence = 0;
};

}  // namespace SettingsDbus
