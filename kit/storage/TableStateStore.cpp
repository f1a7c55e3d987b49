#include "storage/TableStateStore.h"

#include "service/logging/HostLog.h"

namespace SettingsHandlerKit {

TableStateStore::TableStateStore(Database& database, const std::string& tableName) : table(database, tableName) {}

std::optional<std::string> TableStateStore::load(const std::string& key) {
    try {
        return table.get(key);
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, "cannot read the state of '" + key + "': " + error.what());
        return std::nullopt;
    }
}

bool TableStateStore::save(const std::string& key, const std::string& value) {
    try {
        table.put(key, value);
        return true;
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, "cannot save the state of '" + key + "', the old state is kept: " + error.what());
        return false;
    }
}

}  // namespace SettingsHandlerKit
