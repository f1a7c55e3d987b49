#pragma once

#include <string>

namespace SettingsHandlerKit {

/// A storage that can rename a key: implemented beside `SDKWrapper::StorageManagerInterface`, it lets
/// `CheckedSettingsHandler` keep an unusable value of older software in one step, also when the storage is full. For
/// other storages the handler copies the value first, then removes it.
class LegacyValueStorage {
public:
    LegacyValueStorage() = default;
    LegacyValueStorage(const LegacyValueStorage&) = delete;
    LegacyValueStorage& operator=(const LegacyValueStorage&) = delete;
    virtual ~LegacyValueStorage() = default;

    /// Renames `key` to the first free one of `key`.unusable, `key`.unusable.2, …, all at once: after a loss of power
    /// the value has the old key or the new one. Not refused because of a limit of the storage.
    /// - Returns: the new key; empty when that failed, nothing was changed then.
    virtual std::string setAside(const std::string& key) = 0;
};

}  // namespace SettingsHandlerKit
