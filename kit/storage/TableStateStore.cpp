#include "storage/TableStateStore.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "SettingsHandlerKit/Logging.h"
#include "storage/LogOut.h"

namespace SettingsHandlerKit {

namespace {

/// SQL does not distinguish upper and lower case; names that begin with "sqlite_" belong to SQLite.
bool isNameOfState(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_0123456789") == std::string::npos && !name.empty() &&
           std::isdigit(static_cast<unsigned char>(name[0])) == 0 && name != settingsTable && name != logOutTable &&
           name.rfind("sqlite_", 0) != 0;
}

const std::string& checked(const std::string& tableName) {
    if (!isNameOfState(tableName)) {
        throw std::invalid_argument("'" + tableName + "' cannot be the name of a table of state");
    }
    return tableName;
}

}  // namespace

TableStateStore::TableStateStore(Database& database, const std::string& tableName)
    : table(database, checked(tableName)) {}

std::optional<std::string> TableStateStore::load(const std::string& key) {
    try {
        return table.get(key);
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, "cannot read the state of '" + key + "': " + error.what());
        return std::nullopt;
    }
}

bool TableStateStore::save(const std::string& key, const std::string& value) {
    try {
        table.put(key, value);
        return true;
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, "cannot save the state of '" + key + "', the old state is kept: " + error.what());
        return false;
    }
}

}  // namespace SettingsHandlerKit
