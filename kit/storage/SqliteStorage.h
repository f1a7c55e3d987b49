#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "storage/KeyValueTable.h"
#include "storage/StorageObserver.h"
#include "storage/ValueObserver.h"

namespace SettingsHost {

/// The persistent storage of settings. What `setValue` accepted survives a loss of power.
///
/// Limits: keys to 256 bytes, values to 64 KiB, 1,000 keys, keys and values together 1 MiB. What is stored beyond a
/// limit already stays and may shrink. Every failure is answered with false (an empty value when reading) and logged at
/// level 3 with its reason. One thread only; the database outlives it.
class SqliteStorage : public SDKWrapper::StorageManagerInterface {
public:
    static constexpr std::size_t maximumKeyLength = 256;
    static constexpr std::size_t maximumValueLength = 65536;
    static constexpr int maximumKeys = 1000;
    static constexpr std::size_t maximumBytes = std::size_t{1024} * 1024;

    /// `valueObserver` is notified of each key that `clearStorage` removed. `storageObserver` outlives the storage.
    /// `giveBackupUp`: stops a backup of the database that is being made, before what it copied is erased.
    SqliteStorage(
        Database& database, std::shared_ptr<ValueObserver> valueObserver, StorageObserver& storageObserver,
        std::function<void()> giveBackupUp = [] {});

    void getValue(const std::string& key, std::string& value) override;
    bool setValue(const std::string& key, const std::string& value) override;
    bool removeValue(const std::string& key) override;
    /// Leaves nothing of what was stored on the disk, see LogOut.h.
    bool clearStorage() override;

    /// Moves the value of `key` to the first free one of `key`.unusable, `key`.unusable.2, …
    /// Returns: the new key; empty when that failed (logged).
    std::string setAside(const std::string& key);

    StorageHealth health();

private:
    bool attempt(StorageOperation operation, const std::function<std::string()>& what,
                 const std::function<void()>& action);
    bool refuse(const std::string& what, const std::string& why);

    struct Usage {
        int keys;
        std::size_t bytes;
    };
    void put(const std::string& key, const std::string& value);
    Usage count();

    Database& database;
    KeyValueTable table;
    std::shared_ptr<ValueObserver> valueObserver;
    std::function<void()> stopBackup;
    StorageObserver& observer;
    StorageHealth lastHealth;
    /// What is stored. Counting looks at everything, so it waits for the first change, and is done anew after a change
    /// of another kind or one that failed.
    std::optional<Usage> usage;
};

}  // namespace SettingsHost
