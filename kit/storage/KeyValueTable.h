#pragma once

#include <optional>
#include <string>
#include <vector>

#include "storage/Database.h"

namespace SettingsHost {

/// A table of keys and values, any bytes. Errors: `DatabaseError`; what was there before is then still there.
/// The database outlives it.
class KeyValueTable {
public:
    /// `name`: the table's name, a plain word; made when it is missing.
    KeyValueTable(Database& database, const std::string& name);

    std::optional<std::string> get(const std::string& key);
    void put(const std::string& key, const std::string& value);
    /// Returns: false when there was no such key.
    bool remove(const std::string& key);
    /// Gives the entry `from` the key `to`. Returns: false when there is no `from`. Error when there is a `to`.
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

}  // namespace SettingsHost
