#include "storage/KeyValueTable.h"

namespace SettingsHandlerKit {

namespace {

/// Resets a statement at the end of the scope, also on an exception.
class ResetOnExit {
public:
    explicit ResetOnExit(Statement& used) : statement(used) {}
    ~ResetOnExit() { statement.reset(); }
    ResetOnExit(const ResetOnExit&) = delete;
    ResetOnExit& operator=(const ResetOnExit&) = delete;

private:
    Statement& statement;
};

Database& withTable(Database& database, const std::string& name) {
    database.execute("CREATE TABLE IF NOT EXISTS " + name +
                     " (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL) WITHOUT ROWID");
    return database;
}

}  // namespace

KeyValueTable::KeyValueTable(Database& database, const std::string& name)
    : getStatement(withTable(database, name), "SELECT value FROM " + name + " WHERE key=?1"),
      putStatement(database, "INSERT INTO " + name +
                                 " (key, value) VALUES (?1, ?2) ON CONFLICT (key) DO UPDATE SET value=excluded.value"),
      removeStatement(database, "DELETE FROM " + name + " WHERE key=?1"),
      renameStatement(database, "UPDATE " + name + " SET key=?2 WHERE key=?1"),
      clearStatement(database, "DELETE FROM " + name),
      keysStatement(database, "SELECT key FROM " + name + " ORDER BY key"),
      countStatement(database, "SELECT count(*) FROM " + name) {}

std::optional<std::string> KeyValueTable::get(const std::string& key) {
    const ResetOnExit reset(getStatement);
    if (!getStatement.bind(1, key).step()) {
        return std::nullopt;
    }
    return getStatement.column(0);
}

void KeyValueTable::put(const std::string& key, const std::string& value) {
    putStatement.bind(1, key).bind(2, value).run();
}

bool KeyValueTable::remove(const std::string& key) {
    return removeStatement.bind(1, key).run() > 0;
}

bool KeyValueTable::rename(const std::string& from, const std::string& to) {
    return renameStatement.bind(1, from).bind(2, to).run() > 0;
}

void KeyValueTable::clear() {
    clearStatement.run();
}

std::vector<std::string> KeyValueTable::keys() {
    const ResetOnExit reset(keysStatement);
    std::vector<std::string> keys;
    while (keysStatement.step()) {
        keys.push_back(keysStatement.column(0));
    }
    return keys;
}

int KeyValueTable::count() {
    const ResetOnExit reset(countStatement);
    countStatement.step();
    return countStatement.number(0);
}

}  // namespace SettingsHandlerKit
