#include "storage/Database.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include <sqlite3.h>

#include "storage/DatabaseLock.h"
#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHandlerKit {

namespace {

/// Identifies our files in their header; the text "SetH".
constexpr int applicationId = 0x53657448;
constexpr int schemaVersion = 1;

[[noreturn]] void fail(sqlite3* connection, const std::string& what) {
    throw DatabaseError(what + ": " + sqlite3_errmsg(connection));
}

/// SQLite gives names such as ":memory:" a special meaning, but never an absolute path.
std::string absolutePath(const std::string& path) {
    return std::filesystem::absolute(path).string();
}

/// `path` as a URI; its characters are escaped so that none starts parameters.
std::string uriOf(const std::string& path) {
    std::string uri = "file:";
    for (const char character : path) {
        if (character == '%' || character == '?' || character == '#') {
            constexpr const char* digits = "0123456789ABCDEF";
            const auto code = static_cast<unsigned char>(character);
            uri.append({'%', digits[code / 16U], digits[code % 16U]});
        } else {
            uri += character;
        }
    }
    return uri;
}

/// The check reports an unreadable page like a damaged one. The next attempt to read it may succeed.
bool isReadError(const std::string& verdict) {
    const std::string codeName = "error code=";
    const auto place = verdict.find(codeName);
    if (place != std::string::npos) {
        return (std::atoi(verdict.c_str() + place + codeName.size()) & 0xff) == SQLITE_IOERR;
    }
    return verdict.find("failed to get page") != std::string::npos;
}

/// By default SQLite preallocates 20 pages for each database; ours needs fewer. Has an effect only before SQLite is
/// used.
void keepPageCacheSmall() {
    static const int result = sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
    static_cast<void>(result);
}

/// By default SQLite copies the write-ahead log into the database when it closes it. A refused file must not change.
void moveLogOnClose(sqlite3* connection, bool move) {
    sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, move ? 0 : 1, nullptr);
}

}  // namespace

void ConnectionCloser::operator()(sqlite3* open) const {
    sqlite3_close_v2(open);
}

Database::Database(const std::string& file, std::shared_ptr<Disk> disk)
    : usedDisk(std::move(disk)),
      path(absolutePath(file)),
      writable(createFile(*usedDisk, path) == FileAccess::WRITABLE) {
    connect();
    try {
        check();
        if (writable) {
            configure();
            flushRecoveredWal();
        }
    } catch (const DamagedDatabase&) {
        throw;
    } catch (const DatabaseError& error) {
        const int code = sqlite3_errcode(handle()) & 0xff;
        if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
            throw DatabaseError(path + " is in use by another process");
        }
        if (code == SQLITE_NOTADB || code == SQLITE_CORRUPT) {
            throw DamagedDatabase(path + " is damaged or not a database (" + error.what() + ")");
        }
        throw;
    }
    moveLogOnClose(handle(), true);
}

void Database::connect() {
    std::string name = path;
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    std::string layer = usedDisk->databaseLayer();
    if (!writable) {
        readingLock = lockForReading(path);
        // SQLite's locks need a writable file: "immutable" does without them but ignores a write-ahead log, "unix-none"
        // reads it.
        const bool hasLog = holdsData(*usedDisk, path + walSuffix);
        name = uriOf(path) + (hasLog ? "" : "?immutable=1");
        flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
        layer = hasLog ? "unix-none" : layer;
    }
    keepPageCacheSmall();
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &opened, flags, layer.empty() ? nullptr : layer.c_str());
    connection.reset(opened);
    if (result != SQLITE_OK) {
        fail(opened, "cannot open " + path);
    }
    sqlite3_extended_result_codes(opened, 1);
    // Long enough for another process to finish a backup, short enough for a user who waits for a reply.
    sqlite3_busy_timeout(opened, 1000);
    moveLogOnClose(opened, false);
}

void Database::check() {
    execute("PRAGMA locking_mode=EXCLUSIVE");
    // Stored values must not get into temporary files.
    execute("PRAGMA temp_store=MEMORY");
    const int owner = pragma("application_id");
    const int version = pragma("user_version");
    Statement tables(*this, "SELECT count(*) FROM sqlite_schema");
    tables.step();
    if (owner != applicationId && (owner != 0 || version != 0 || tables.number(0) != 0)) {
        throw DatabaseError(path + " belongs to another program; left unchanged");
    }
    if (version > schemaVersion) {
        throw NewerDatabase(path + " was written by a newer version; left unchanged");
    }
    const std::string found = verdict();
    if (isReadError(found)) {
        throw DatabaseError(path + " cannot be read (" + found + ")");
    }
    if (found != "ok") {
        throw DamagedDatabase(path + " is damaged (" + found + ")");
    }
}

std::string Database::verdict() {
    Statement quickCheck(*this, "PRAGMA quick_check(1)");
    quickCheck.step();
    return quickCheck.column(0);
}

bool Database::isReadable() {
    try {
        return !isReadError(verdict());
    } catch (const DatabaseError&) {
        return false;
    }
}

void Database::configure() {
    // SQLite switches to a write-ahead log with a rollback journal. EXTRA syncs the removal of the journal, which could
    // otherwise be back after a loss of power and roll everything back.
    execute("PRAGMA synchronous=EXTRA");
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA synchronous=FULL");
    execute("PRAGMA wal_autocheckpoint=64");
    // On by default in some builds of SQLite. A log-out rewrites the whole database anyway; here it would only write
    // more for each change of a large value, and need disk space for a log-out.
    execute("PRAGMA secure_delete=OFF");
    // Takes the lock now, so that a second host fails at its start and not at its first write.
    execute("BEGIN IMMEDIATE");
    // A marked file is not written to, so that the host starts on a full disk.
    if (pragma("application_id") != applicationId) {
        execute("PRAGMA application_id=" + std::to_string(applicationId) +
                "; PRAGMA user_version=" + std::to_string(schemaVersion));
    }
    execute("COMMIT");
}

/// A process that was killed may have left changes in the write-ahead log that it did not flush. From now on readers
/// see them, so a loss of power must not take them back. On a disk that cannot flush the host starts all the same.
void Database::flushRecoveredWal() {
    if (holdsData(*usedDisk, path + walSuffix)) {
        usedDisk->sync(path + walSuffix);
    }
}

int Database::pragma(const std::string& name) {
    Statement statement(*this, "PRAGMA " + name);
    return statement.step() ? statement.number(0) : 0;
}

void Database::execute(const std::string& sql) {
    requireTransaction();
    if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(connection.get(), "database");
    }
}

void Database::begin() {
    inTransaction = true;
    // When this fails, `requireTransaction` refuses all that follows.
    sqlite3_exec(handle(), "BEGIN", nullptr, nullptr, nullptr);
}

void Database::commit() {
    execute("COMMIT");
    inTransaction = false;
}

void Database::requireTransaction() const {
    if (inTransaction && sqlite3_get_autocommit(handle()) != 0) {
        throw DatabaseError("the transaction was rolled back after an earlier failure");
    }
}

void Database::rollBack() {
    inTransaction = false;
    if (sqlite3_get_autocommit(handle()) == 0) {
        execute("ROLLBACK");
    }
}

void Database::emptyWal() {
    if (sqlite3_wal_checkpoint_v2(handle(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) != SQLITE_OK) {
        fail(handle(), "database");
    }
}

void Statement::Finalizer::operator()(sqlite3_stmt* prepared) const {
    sqlite3_finalize(prepared);
}

Statement::Statement(Database& owner, const std::string& sql) : database(owner) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v3(owner.handle(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr) !=
        SQLITE_OK) {
        fail(owner.handle(), "database");
    }
    statement.reset(prepared);
}

Statement& Statement::bind(int index, const std::string& bytes) {
    if (sqlite3_bind_text64(statement.get(), index, bytes.data(), bytes.size(), SQLITE_STATIC, SQLITE_UTF8) !=
        SQLITE_OK) {
        fail(database.handle(), "database");
    }
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        fail(database.handle(), "database");
    }
    return result == SQLITE_ROW;
}

std::string Statement::column(int index) const {
    const void* const bytes = sqlite3_column_blob(statement.get(), index);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), index));
    return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

int Statement::number(int index) const {
    return sqlite3_column_int(statement.get(), index);
}

void Statement::reset() {
    sqlite3_reset(statement.get());
    sqlite3_clear_bindings(statement.get());
}

int Statement::run() {
    try {
        database.requireTransaction();
        while (step()) {
        }
    } catch (...) {
        reset();
        throw;
    }
    reset();
    return sqlite3_changes(database.handle());
}

}  // namespace SettingsHandlerKit
