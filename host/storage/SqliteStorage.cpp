#include "storage/SqliteStorage.h"

#include <utility>

#include "logging/HostLog.h"

namespace SettingsHost {

namespace {

bool refuse(const std::string& what, const std::string& why) {
    logHost(VessaLogger::ERROR, what + ": " + why);
    return false;
}

std::string shown(const std::string& key) {
    constexpr std::size_t enough = 64;
    return "'" + (key.size() > enough ? key.substr(0, enough) + "…" : key) + "'";
}

}  // namespace

SqliteStorage::SqliteStorage(Database& database, std::function<void(const std::string& key)> onValueRemoved)
    : table(database, "settings"), valueRemoved(std::move(onValueRemoved)) {}

void SqliteStorage::getValue(const std::string& key, std::string& value) {
    value.clear();
    try {
        value = table.get(key).value_or("");
    } catch (const DatabaseError& error) {
        refuse("cannot read " + shown(key), error.what());
    }
}

bool SqliteStorage::setValue(const std::string& key, const std::string& value) {
    const std::string what = "cannot store " + shown(key);
    if (key.size() > maximumKeyLength) {
        return refuse(what, "the key is longer than 256 bytes");
    }
    if (value.size() > maximumValueLength) {
        return refuse(what, "the value is longer than 64 KiB");
    }
    try {
        if (table.count() >= maximumKeys && !table.get(key)) {
            return refuse(what, "there are 1,000 keys already");
        }
        table.put(key, value);
        return true;
    } catch (const DatabaseError& error) {
        return refuse(what, error.what());
    }
}

bool SqliteStorage::removeValue(const std::string& key) {
    try {
        table.remove(key);
        return true;
    } catch (const DatabaseError& error) {
        return refuse("cannot remove " + shown(key), error.what());
    }
}

bool SqliteStorage::clearStorage() {
    try {
        const auto keys = table.keys();
        table.clear();
        for (const auto& key : keys) {
            valueRemoved(key);
        }
        return true;
    } catch (const DatabaseError& error) {
        return refuse("cannot clear the storage", error.what());
    }
}

std::string SqliteStorage::setAside(const std::string& key) {
    try {
        std::string newKey = key + ".unusable";
        for (int number = 2; table.get(newKey); ++number) {
            newKey = key + ".unusable." + std::to_string(number);
        }
        return table.rename(key, newKey) ? newKey : "";
    } catch (const DatabaseError& error) {
        refuse("cannot set " + shown(key) + " aside", error.what());
        return "";
    }
}

}  // namespace SettingsHost
