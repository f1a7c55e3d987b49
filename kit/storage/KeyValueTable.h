#pragma once

#include <optional>
#include <string>
#include <vector>

#include "storage/Database.h"

namespace SettingsHandlerKit {

/// A table of keys and values of any bytes. Errors: `DatabaseError`; the table is unchanged then.
/// The database outlives it.
class KeyValueTable {
public:
    /// Creates the table `name`, an SQL identifier, if it is missing.
    KeyValueTable(Database& database, const std::string& name);

    std::optional<std::string> get(const std::string& key);
    void put(const std::string& key, const std::string& value);
    /// Returns: false when the key did not exist.
    bool remove(const std::string& key);
    /// Changes the key `from` to `to`. Returns: false when `from` does not exist. Error when `to` exists.
    bool rename(const std::string& from, const std::string& to);
    void clear();
    std::vector<std::string> keys();
    int count();

private:
    Statement getStatement;
    Statement putStatement;
    Statement removeStatement;
    Statement renameStatement;
    Statement clearStatement;
    Statement keysStatement;
    Statement countStatement;
};

}  // namespace SettingsHandlerKit
