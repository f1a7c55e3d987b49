#include "SettingsHandlerKit/Storage.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/Logging.h"
#include "storage/FileNames.h"
#include "storage/LogOut.h"
#include "storage/Recovery.h"
#include "storage/StorageParts.h"
#include "storage/TableStateStore.h"

namespace SettingsHandlerKit {

namespace {

constexpr const char* readOnlyReason = "the file system is read-only";
constexpr const char* inTransactionReason = "a transaction is in progress";
constexpr const char* backedUp = "database backed up";

/// A change exceeds a limit, or is not possible now. The database itself works.
class RefusedChange : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string shown(const std::string& key) {
    constexpr std::size_t enough = 64;
    return "'" + (key.size() > enough ? key.substr(0, enough) + "…" : key) + "'";
}

const std::shared_ptr<Disk>& checked(const std::shared_ptr<Disk>& disk) {
    if (!disk) {
        throw std::invalid_argument("Storage: no disk was given");
    }
    return disk;
}

}  // namespace

Storage::Parts::Parts(const std::string& path, const std::shared_ptr<Disk>& disk)
    : afterClosing(checked(disk), path), database(openOrRecover(path, disk, recovery)), table(database, settingsTable) {
    if (!database.isWritable()) {
        health.writable = false;
        health.lastFailure = readOnlyReason;
        writeLog(VessaLogger::ERROR, "changes cannot be stored: " + health.lastFailure);
    }
}

bool Storage::Parts::attempt(StorageOperation operation, const std::function<std::string()>& what,
                             const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    bool succeeded = false;
    try {
        action();
        succeeded = true;
        health.writable = health.writable || (operation != StorageOperation::READ && !database.isInTransaction());
    } catch (const RefusedChange& error) {
        refuse(what(), error.what());
    } catch (const DatabaseError& error) {
        refuse(what(), error.what());
        health.writable = health.writable && operation == StorageOperation::READ;
    }
    const auto duration = std::chrono::steady_clock::now() - start;
    if (succeeded && operation != StorageOperation::READ && database.isInTransaction()) {
        changes.push_back({operation, duration});
    } else {
        report(operation, succeeded, duration);
    }
    return succeeded;
}

void Storage::Parts::report(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) {
    for (const auto& observer : observers) {
        observer->storageOperation(operation, succeeded, duration);
    }
}

void Storage::Parts::transactionEnded(bool succeeded, std::chrono::nanoseconds duration) {
    std::vector<Change> ended;
    ended.swap(changes);
    if (!succeeded) {
        usage.reset();
        health.failures += ended.size();
    }
    if (ended.empty()) {
        return;
    }
    health.writable = health.writable || succeeded;
    ended.back().duration += duration;
    for (const auto& change : ended) {
        report(change.operation, succeeded, change.duration);
    }
}

void Storage::Parts::refuse(const std::string& what, const std::string& why) {
    ++health.failures;
    health.lastFailure = why;
    writeLog(VessaLogger::ERROR, what + ": " + why);
}

void Storage::Parts::put(const std::string& key, const std::string& value) {
    if (!usage) {
        usage = count();
    }
    const auto old = table.get(key);
    const std::size_t oldBytes = old ? key.size() + old->size() : 0;
    const std::size_t newBytes = key.size() + value.size();
    if (!old && usage->keys >= maximumKeys) {
        throw RefusedChange("the limit of 1,000 keys is reached");
    }
    if (newBytes > oldBytes && usage->bytes - oldBytes + newBytes > maximumBytes) {
        throw RefusedChange("keys and values would exceed 1 MiB in total");
    }
    const Usage after{usage->keys + (old ? 0 : 1), usage->bytes - oldBytes + newBytes};
    usage.reset();
    table.put(key, value);
    usage = after;
}

Storage::Parts::Usage Storage::Parts::count() {
    const std::string bytes = "length(CAST(key AS BLOB)) + length(CAST(value AS BLOB))";
    Statement statement(database, "SELECT count(*), coalesce(sum(" + bytes + "), 0) FROM " + settingsTable);
    statement.step();
    return {statement.number(0), static_cast<std::size_t>(statement.number(1))};
}

Storage::Storage(const std::string& path, std::shared_ptr<Disk> disk) : parts(std::make_unique<Parts>(path, disk)) {}

Storage::~Storage() = default;

void Storage::observe(std::shared_ptr<StorageObserver> observer) {
    parts->observers.push_back(std::move(observer));
}

void Storage::observeValues(std::shared_ptr<ValueObserver> observer) {
    parts->valueObservers.push_back(std::move(observer));
}

void Storage::getValue(const std::string& key, std::string& value) {
    value.clear();
    parts->attempt(
        StorageOperation::READ, [&] { return "cannot read " + shown(key); },
        [&] { value = parts->table.get(key).value_or(""); });
}

bool Storage::setValue(const std::string& key, const std::string& value) {
    return parts->attempt(
        StorageOperation::WRITE, [&] { return "cannot store " + shown(key); },
        [&] {
            if (key.size() > maximumKeyLength) {
                throw RefusedChange("the key is longer than 256 bytes");
            }
            if (value.size() > maximumValueLength) {
                throw RefusedChange("the value is longer than 64 KiB");
            }
            parts->put(key, value);
        });
}

bool Storage::removeValue(const std::string& key) {
    return parts->attempt(
        StorageOperation::REMOVE, [&] { return "cannot remove " + shown(key); },
        [&] {
            parts->usage.reset();
            parts->table.remove(key);
        });
}

bool Storage::clearStorage() {
    std::vector<std::string> removed;
    const bool cleared = parts->attempt(
        StorageOperation::CLEAR, [] { return "cannot clear the storage"; },
        [&] {
            if (parts->database.isInTransaction()) {
                throw RefusedChange(inTransactionReason);
            }
            parts->usage.reset();
            removed = parts->table.keys();
            beginLogOut(parts->database, [this] { parts->table.clear(); });
        });
    if (cleared) {
        cancelBackup();
        finishLogOut(parts->database);
        for (const auto& key : removed) {
            for (const auto& observer : parts->valueObservers) {
                observer->valueChanged(key);
            }
        }
    }
    return cleared;
}

std::string Storage::setAside(const std::string& key) {
    std::string newKey = key + ".unusable";
    const bool done = parts->attempt(
        StorageOperation::WRITE, [&] { return "cannot set " + shown(key) + " aside"; },
        [&] {
            for (int number = 2; parts->table.get(newKey); ++number) {
                newKey = key + ".unusable." + std::to_string(number);
            }
            parts->usage.reset();
            if (!parts->table.rename(key, newKey)) {
                newKey.clear();
            }
        });
    return done ? newKey : "";
}

void Storage::beginTransaction() {
    if (parts->database.isInTransaction()) {
        throw std::logic_error(inTransactionReason);
    }
    parts->database.begin();
}

bool Storage::commitTransaction() {
    const auto start = std::chrono::steady_clock::now();
    bool committed = false;
    try {
        parts->database.commit();
        committed = true;
    } catch (const DatabaseError& error) {
        parts->database.rollBack();
        parts->health.writable = false;
        parts->health.lastFailure = error.what();
        writeLog(VessaLogger::ERROR, std::string("cannot commit a transaction: ") + error.what());
    }
    parts->transactionEnded(committed, std::chrono::steady_clock::now() - start);
    return committed;
}

void Storage::rollBackTransaction() {
    parts->database.rollBack();
    parts->transactionEnded(false, {});
}

std::unique_ptr<StateStore> Storage::state(const std::string& table) {
    return std::make_unique<TableStateStore>(parts->database, table);
}

StorageHealth Storage::health() {
    StorageHealth now = parts->health;
    try {
        now.keys = static_cast<std::size_t>(parts->table.count());
    } catch (const DatabaseError&) {
        now.keys = 0;
    }
    return now;
}

bool Storage::isReadable() {
    return parts->database.isReadable();
}

const Recovery& Storage::recovery() const {
    return parts->recovery;
}

std::string Storage::file() const {
    return parts->database.file();
}

std::string Storage::backupNow() {
    if (!parts->database.isWritable()) {
        throw DatabaseError(readOnlyReason);
    }
    if (parts->database.isInTransaction()) {
        throw DatabaseError(inTransactionReason);
    }
    cancelBackup();
    finishLogOut(parts->database);
    backUp(parts->database);
    writeLog(VessaLogger::INFORMATION, backedUp);
    return backupName(file(), 1);
}

bool Storage::beginBackup(std::chrono::seconds maximumAge) {
    if (parts->backup || parts->database.isInTransaction()) {
        return parts->backup != nullptr;
    }
    if (!parts->database.isWritable()) {
        return false;
    }
    finishLogOut(parts->database);
    if (!isBackupDue(parts->database.disk(), file(), maximumAge)) {
        return false;
    }
    try {
        parts->backup = std::make_unique<Backup>(parts->database);
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, std::string("cannot start a database backup: ") + error.what());
    }
    return parts->backup != nullptr;
}

bool Storage::continueBackup(int pages) {
    if (!parts->backup || parts->database.isInTransaction()) {
        return parts->backup != nullptr;
    }
    try {
        if (parts->backup->step(pages)) {
            return true;
        }
        writeLog(VessaLogger::INFORMATION, backedUp);
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, std::string("database backup failed: ") + error.what());
    }
    cancelBackup();
    return false;
}

void Storage::cancelBackup() {
    parts->backup.reset();
}

}  // namespace SettingsHandlerKit
