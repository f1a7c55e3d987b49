#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerKit/DatabaseError.h"
#include "SettingsHandlerKit/Disk.h"
#include "SettingsHandlerKit/LegacyValueStorage.h"
#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerKit/StorageObserver.h"
#include "SettingsHandlerKit/ValueObserver.h"

namespace SettingsHandlerKit {

/// The persistent storage of settings: an SQLite database and the files beside it. A value that `setValue` accepted
/// survives a loss of power, and after a log-out (`clearStorage`) no file of the storage holds a byte of a value.
///
/// Limits: 256 bytes per key, 64 KiB per value, 1,000 keys, 1 MiB for all keys and values. Values beyond a limit that
/// are stored already stay and may shrink.
///
/// Errors: an operation of `StorageManagerInterface` that fails returns false (an empty value when reading) and logs
/// the reason at level 3; operations on backups say what they throw.
///
/// Threads: one at a time; all that it calls is called on that thread.
class Storage : public SDKWrapper::StorageManagerInterface, public LegacyValueStorage {
public:
    /// The longest key, in bytes.
    static constexpr std::size_t maximumKeyLength = 256;
    /// The longest value, in bytes.
    static constexpr std::size_t maximumValueLength = 65536;
    /// The largest number of keys.
    static constexpr int maximumKeys = 1000;
    /// The most bytes of all keys and values.
    static constexpr std::size_t maximumBytes = std::size_t{1024} * 1024;

    /// Opens the database at `path` and locks it until the storage is destroyed. Creates it (0600) and its folders
    /// (0700) if they are missing. On a read-only file system values can be read and every change fails.
    ///
    /// A damaged database is renamed to `path`.damaged (or .damaged.2, …) and replaced with the newest good backup, or
    /// by an empty database; so is one that is missing while its backups or write-ahead log exist. What was done is
    /// logged at level 3 and returned by `recovery`. An interrupted log-out is finished.
    ///
    /// - `disk`: owned together with the caller; tests give one that fails.
    /// - Errors: `NewerDatabase` for the file of a newer version; `DatabaseError` when the file is in use, belongs to
    ///   another program or cannot be opened. Nothing is changed then.
    explicit Storage(const std::string& path, std::shared_ptr<Disk> disk = std::make_shared<Disk>());
    /// Cancels a backup in progress and closes the database. State stores of the storage are gone by then.
    ~Storage() override;

    /// Adds an observer of operations, which is notified until the storage is destroyed.
    void observe(std::shared_ptr<StorageObserver> observer);
    /// Adds an observer that is notified of each key that `clearStorage` removed, when all are removed.
    void observeValues(std::shared_ptr<ValueObserver> observer);

    /// Reads the value of `key`; empty when there is none.
    void getValue(const std::string& key, std::string& value) override;
    /// Stores a value; when it returns true, it survives a loss of power.
    bool setValue(const std::string& key, const std::string& value) override;
    /// Removes a key. True also when there was none.
    bool removeValue(const std::string& key) override;
    /// Removes all settings and erases their values from all files, cancels a backup in progress and makes a new one.
    /// What cannot be erased is logged at level 3 and retried by `beginBackup` and at the next start. State stays.
    bool clearStorage() override;
    /// See `LegacyValueStorage`. Allowed beyond the limits.
    std::string setAside(const std::string& key) override;

    /// Begins a transaction: all changes until its end reach the disk with one flush, or none. Those of state stores of
    /// this storage are part of it. Each change returns as ever, but survives a loss of power only when the transaction
    /// is committed. After some failures of the disk all is rolled back at once; then every further change is refused.
    ///
    /// Until the end `clearStorage` and `backupNow` fail, and a backup in progress pauses. Observers of operations are
    /// notified of the changes at the end, with its result. `Server` makes one of each batch, so others end before a
    /// request is handled.
    /// - Errors: `std::logic_error` when a transaction is in progress.
    void beginTransaction();
    /// Ends the transaction with its changes.
    /// - Returns: true when they survive a loss of power. False: all was rolled back, and the reason is logged at level
    ///   3. What was read in the transaction, or kept of its changes, is to be read again.
    bool commitTransaction();
    /// Ends the transaction without its changes; does nothing without one.
    void rollBackTransaction();

    /// State of its own in the table `table`, which is created if it is missing. The storage outlives it.
    /// - `table`: letters, digits and "_", no digit first; no name of the storage's own tables.
    /// - Errors: `std::invalid_argument` for another name; `DatabaseError`.
    std::unique_ptr<StateStore> state(const std::string& table);

    /// The health, with the number of keys as it is now.
    StorageHealth health();
    /// Can the whole database be read? Reads it, which takes some milliseconds.
    bool isReadable();
    /// What was done about the database at the start.
    const Recovery& recovery() const;
    /// The absolute path of the database.
    std::string file() const;

    /// Makes a backup while the storage is in use, in place of one in progress. The backup is checked and synced when
    /// this returns; it is generation 1 then, and the former generation 1 is generation 2.
    /// - Returns: the file of the backup.
    /// - Errors: `DatabaseError`; the former generations are unchanged then.
    std::string backupNow();

    /// For a schedule: begins a backup when none is in progress and the newest one is older than `maximumAge`, or there
    /// is none. Before that, it finishes a log-out that is incomplete. A failure is logged at level 3.
    /// - Returns: true when a backup is in progress: call `continueBackup` until it returns false.
    bool beginBackup(std::chrono::seconds maximumAge);
    /// Copies up to `pages` pages of the backup in progress. The result is logged: level 1 when it is complete, level 3
    /// when it failed.
    /// - Returns: false when no backup is in progress any more.
    bool continueBackup(int pages);
    /// Stops a backup in progress and removes its copy.
    void cancelBackup();

protected:
    struct Parts;
    /// The implementation; protected for the kit's own tests.
    const std::unique_ptr<Parts> parts;
};

}  // namespace SettingsHandlerKit
