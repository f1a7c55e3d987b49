#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Bridge.h"
#include "SettingsClient/Notification.h"

namespace Benchmarks {

/// The settings of one television, without a process and without a disk: what a bridge sees of a host.
class SimulatedHost : public SettingsMqtt::Host {
public:
    SimulatedHost();

    std::vector<SettingsClient::Setting> catalogue() override;
    std::map<std::string, std::string> get(const std::vector<std::string>& keys) override;
    SettingsClient::Answer set(const SettingsClient::Assignment& wanted) override;

    /// Somebody at the television changes a setting.
    void change(const std::string& key, const std::string& value) { assign(key, value, "device"); }
    /// The events since the last call, in order.
    std::vector<SettingsClient::Event> takeEvents() { return std::exchange(events, {}); }

private:
    void assign(const std::string& key, const std::string& value, const std::string& origin);

    std::map<std::string, std::string> values;
    std::vector<SettingsClient::Event> events;
    std::uint64_t sequence = 0;
};

}  // namespace Benchmarks
