#include <stdexcept>
#include <utility>
#include <vector>

#include "service/logging/HostLog.h"
#include "storage/LogOut.h"
#include "storage/StorageParts.h"

namespace SettingsHandlerKit {

namespace {

/// A change exceeds a limit. The database itself works.
class LimitError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string shown(const std::string& key) {
    constexpr std::size_t enough = 64;
    return "'" + (key.size() > enough ? key.substr(0, enough) + "…" : key) + "'";
}

}  // namespace

SqliteStorage::SqliteStorage(Database& openDatabase, std::shared_ptr<ValueObserver> observerOfValues,
                             StorageObserver& storageObserver, std::function<void()> cancelBackup)
    : database(openDatabase),
      table(database, settingsTable),
      valueObserver(std::move(observerOfValues)),
      stopBackup(std::move(cancelBackup)),
      observer(storageObserver) {
    if (!database.isWritable()) {
        lastHealth.writable = false;
        lastHealth.lastFailure = "the file system is read-only";
        logHost(VessaLogger::ERROR, "changes cannot be stored: " + lastHealth.lastFailure);
    }
}

/// Runs `action` and reports the result to observer and health, a failure also to the log. `what` describes the
/// failure.
bool SqliteStorage::attempt(StorageOperation operation, const std::function<std::string()>& what,
                            const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    bool succeeded = false;
    try {
        action();
        succeeded = true;
        lastHealth.writable = lastHealth.writable || operation != StorageOperation::READ;
    } catch (const LimitError& error) {
        refuse(what(), error.what());
    } catch (const DatabaseError& error) {
        refuse(what(), error.what());
        lastHealth.writable = lastHealth.writable && operation == StorageOperation::READ;
    }
    observer.storageOperation(operation, succeeded, std::chrono::steady_clock::now() - start);
    return succeeded;
}

bool SqliteStorage::refuse(const std::string& what, const std::string& why) {
    ++lastHealth.failures;
    lastHealth.lastFailure = why;
    logHost(VessaLogger::ERROR, what + ": " + why);
    return false;
}

void SqliteStorage::getValue(const std::string& key, std::string& value) {
    value.clear();
    attempt(
        StorageOperation::READ, [&] { return "cannot read " + shown(key); },
        [&] { value = table.get(key).value_or(""); });
}

bool SqliteStorage::setValue(const std::string& key, const std::string& value) {
    return attempt(
        StorageOperation::WRITE, [&] { return "cannot store " + shown(key); },
        [&] {
            if (key.size() > maximumKeyLength) {
                throw LimitError("the key is longer than 256 bytes");
            }
            if (value.size() > maximumValueLength) {
                throw LimitError("the value is longer than 64 KiB");
            }
            put(key, value);
        });
}

void SqliteStorage::put(const std::string& key, const std::string& value) {
    if (!usage) {
        usage = count();
    }
    const auto old = table.get(key);
    const std::size_t oldBytes = old ? key.size() + old->size() : 0;
    const std::size_t newBytes = key.size() + value.size();
    if (!old && usage->keys >= maximumKeys) {
        throw LimitError("the limit of 1,000 keys is reached");
    }
    if (newBytes > oldBytes && usage->bytes - oldBytes + newBytes > maximumBytes) {
        throw LimitError("keys and values would exceed 1 MiB in total");
    }
    const Usage after{usage->keys + (old ? 0 : 1), usage->bytes - oldBytes + newBytes};
    usage.reset();
    table.put(key, value);
    usage = after;
}

SqliteStorage::Usage SqliteStorage::count() {
    const std::string bytes = "length(CAST(key AS BLOB)) + length(CAST(value AS BLOB))";
    Statement statement(database, "SELECT count(*), coalesce(sum(" + bytes + "), 0) FROM " + settingsTable);
    statement.step();
    return {statement.number(0), static_cast<std::size_t>(statement.number(1))};
}

bool SqliteStorage::removeValue(const std::string& key) {
    return attempt(
        StorageOperation::REMOVE, [&] { return "cannot remove " + shown(key); },
        [&] {
            usage.reset();
            table.remove(key);
        });
}

bool SqliteStorage::clearStorage() {
    std::vector<std::string> removed;
    const bool cleared = attempt(
        StorageOperation::CLEAR, [] { return "cannot clear the storage"; },
        [&] {
            usage.reset();
            removed = table.keys();
            beginLogOut(database, [this] { table.clear(); });
        });
    if (cleared) {
        stopBackup();
        finishLogOut(database);
        for (const auto& key : removed) {
            valueObserver->valueChanged(key);
        }
    }
    return cleared;
}

std::string SqliteStorage::setAside(const std::string& key) {
    std::string newKey = key + ".unusable";
    const bool done = attempt(
        StorageOperation::WRITE, [&] { return "cannot set " + shown(key) + " aside"; },
        [&] {
            for (int number = 2; table.get(newKey); ++number) {
                newKey = key + ".unusable." + std::to_string(number);
            }
            usage.reset();
            if (!table.rename(key, newKey)) {
                newKey.clear();
            }
        });
    return done ? newKey : "";
}

StorageHealth SqliteStorage::health() {
    StorageHealth now = lastHealth;
    try {
        now.keys = static_cast<std::size_t>(table.count());
    } catch (const DatabaseError&) {
        now.keys = 0;
    }
    return now;
}

}  // namespace SettingsHandlerKit
