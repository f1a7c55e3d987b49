#pragma once

#include <functional>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "storage/KeyValueTable.h"
#include "storage/StorageObserver.h"

namespace SettingsHost {

/// The persistent storage of settings. What `setValue` accepted survives a loss of power.
///
/// Limits: keys to 256 bytes, values to 64 KiB, 1,000 keys. Every failure is answered with false (an empty value when
/// reading) and logged at level 3 with its reason. One thread only; the database outlives it.
class SqliteStorage : public SDKWrapper::StorageManagerInterface {
public:
    static constexpr std::size_t maximumKeyLength = 256;
    static constexpr std::size_t maximumValueLength = 65536;
    static constexpr int maximumKeys = 1000;

    /// `onValueRemoved`: told of each key that `clearStorage` removed. `storageObserver` outlives the storage.
    SqliteStorage(Database& database, std::function<void(const std::string& key)> onValueRemoved,
                  StorageObserver& storageObserver);

    void getValue(const std::string& key, std::string& value) override;
    bool setValue(const std::string& key, const std::string& value) override;
    bool removeValue(const std::string& key) override;
    bool clearStorage() override;

    /// Moves the value of `key` to the first free one of `key`.unusable, `key`.unusable.2, …
    /// Returns: the new key; empty when that failed (logged).
    std::string setAside(const std::string& key);

    StorageHealth health();

private:
    bool attempt(StorageOperation operation, const std::function<std::string()>& what,
                 const std::function<void()>& action);
    bool refuse(const std::string& what, const std::string& why);

    KeyValueTable table;
    std::function<void(const std::string& key)> valueRemoved;
    StorageObserver& observer;
    StorageHealth lastHealth;
    /// Grows with each value that is stored, new or not, until the keys are counted again.
    int keysAtMost = maximumKeys;
};

}  // namespace SettingsHost
