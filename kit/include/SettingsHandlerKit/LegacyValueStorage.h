#pragma once

#include <string>

namespace SettingsHandlerKit {

/// A storage that can set a value aside which the handler must not see, such as one of older software.
class LegacyValueStorage {
public:
    LegacyValueStorage() = default;
    LegacyValueStorage(const LegacyValueStorage&) = delete;
    LegacyValueStorage& operator=(const LegacyValueStorage&) = delete;
    virtual ~LegacyValueStorage() = default;

    /// Renames `key` to the first free one of `key`.unusable, `key`.unusable.2, …
    /// - Returns: the new key; empty when that failed.
    virtual std::string setAside(const std::string& key) = 0;
};

}  // namespace SettingsHandlerKit
