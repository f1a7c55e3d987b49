#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/Answer.h"
#include "SettingsClient/Setting.h"

namespace SettingsMqtt {

/// The connection to a host. Operations and errors are those of `SettingsClient::Client`.
class Host {
public:
    virtual ~Host() = default;
    virtual std::vector<SettingsClient::Setting> catalogue() = 0;
    virtual std::map<std::string, std::string> get(const std::vector<std::string>& keys) = 0;
    virtual SettingsClient::Answer set(const std::string& key, const std::string& value,
                                       std::optional<std::int64_t> timestamp) = 0;
};

}  // namespace SettingsMqtt
