#pragma once

#include <string>

namespace SettingsHandlerKit {

/// Notified when the value of a setting changed at its owner.
class ValueObserver {
public:
    ValueObserver() = default;
    ValueObserver(const ValueObserver&) = delete;
    ValueObserver& operator=(const ValueObserver&) = delete;
    virtual ~ValueObserver() = default;

    /// `settingDBId`: the key; read the new value from its owner.
    virtual void valueChanged(const std::string& settingDBId) = 0;
};

}  // namespace SettingsHandlerKit
