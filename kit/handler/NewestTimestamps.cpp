#include "handler/NewestTimestamps.h"

#include "SettingsHandler/SettingsNames.h"

namespace SettingsHandlerKit {

namespace {

const std::string& sharedKey(const std::string& settingDBId) {
    static const std::string unknown;
    return SettingsHandler::settingTypeFromName(settingDBId) == SettingsHandler::INVALID_SETTING ? unknown
                                                                                                 : settingDBId;
}

}  // namespace

/// Compares a few texts, which costs less than to look the key up in the catalogue.
std::size_t NewestTimestamps::indexOf(const std::string& settingDBId) const {
    for (std::size_t index = 0; index < timestamps.size(); ++index) {
        if (timestamps[index].first == settingDBId) {
            return index;
        }
    }
    return none;
}

void NewestTimestamps::record(const std::string& settingDBId, long timestamp) {
    std::size_t index = indexOf(settingDBId);
    if (index == none) {
        const std::string& key = sharedKey(settingDBId);
        index = indexOf(key);
        if (index == none) {
            timestamps.emplace_back(key, timestamp);
            return;
        }
    }
    timestamps[index].second = timestamp;
}

std::optional<long> NewestTimestamps::find(const std::string& settingDBId) const {
    const std::size_t index = indexOf(sharedKey(settingDBId));
    return index == none ? std::nullopt : std::optional<long>(timestamps[index].second);
}

}  // namespace SettingsHandlerKit
