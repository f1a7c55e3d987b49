#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerKit/StorageObserver.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "storage/KeyValueTable.h"

namespace SettingsHandlerKit {

/// The persistent storage of settings. A value that `setValue` accepted survives a loss of power.
///
/// Limits: 256 bytes per key, 64 KiB per value, 1,000 keys, 1 MiB for all keys and values. Values beyond a limit that
/// are stored already stay and may shrink. A failed operation returns false (an empty value when reading) and logs the
/// reason at level 3. Threads: one. The database outlives it.
class SqliteStorage : public SDKWrapper::StorageManagerInterface {
public:
    static constexpr std::size_t maximumKeyLength = 256;
    static constexpr std::size_t maximumValueLength = 65536;
    static constexpr int maximumKeys = 1000;
    static constexpr std::size_t maximumBytes = std::size_t{1024} * 1024;

    /// `valueObserver` is notified of each key that `clearStorage` removed. `storageObserver` outlives the storage.
    /// `cancelBackup`: stops a backup that is in progress, before its copy is erased.
    SqliteStorage(
        Database& database, std::shared_ptr<ValueObserver> valueObserver, StorageObserver& storageObserver,
        std::function<void()> cancelBackup = [] {});

    void getValue(const std::string& key, std::string& value) override;
    bool setValue(const std::string& key, const std::string& value) override;
    bool removeValue(const std::string& key) override;
    /// Erases the values from all files, see LogOut.h.
    bool clearStorage() override;

    /// Renames `key` to the first free one of `key`.unusable, `key`.unusable.2, …
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
    /// What is stored. Empty until the first `setValue` counts it, and after other changes and failures: counting reads
    /// the whole table.
    std::optional<Usage> usage;
};

}  // namespace SettingsHandlerKit
