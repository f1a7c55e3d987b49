#pragma once

#include <functional>
#include <optional>

#include "SettingsClient/Client.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"

namespace SettingsBridge {

/// The connection to the host. The client reconnects automatically. When the host refuses what an observer reads,
/// because it is busy, everything is read again after a pause, until it is not refused.
class HostSource : public Source {
public:
    /// `readEverything` is what the observer of a new connection does, too; it may throw the errors of requests.
    HostSource(SettingsClient::Client& settingsClient, const Log& programLog, std::function<void()> readEverything);

    Wanted wanted() override;
    /// Calls the observers. Errors: `InvalidSocketPath`, those of observers that are none of requests.
    void process(short events) override;
    /// Calls `readEverything`, again if need be. For other times than those of observers.
    void read();

private:
    void attempt(const std::function<void()>& action);
    void readLater(const char* reason);

    SettingsClient::Client& client;
    const Log& log;
    const std::function<void()> readAll;
    /// When to read everything again.
    std::optional<Time> due;
};

}  // namespace SettingsBridge
