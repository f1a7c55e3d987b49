#pragma once

#include "SettingsHandlerKit/StateStore.h"
#include "storage/KeyValueTable.h"

namespace SettingsHandlerKit {

/// State in its own table in the database. The database outlives it.
class TableStateStore : public StateStore {
public:
    TableStateStore(Database& database, const std::string& tableName);

    std::optional<std::string> load(const std::string& key) override;
    bool save(const std::string& key, const std::string& value) override;

private:
    KeyValueTable table;
};

}  // namespace SettingsHandlerKit
