#include "storage/Database.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SettingsHost {

namespace {

/// Marks a file as ours in its header; the text "SetH".
constexpr int applicationId = 0x53657448;
constexpr int schemaVersion = 1;

[[noreturn]] void fail(sqlite3* connection, const std::string& what) {
    throw DatabaseError(what + ": " + sqlite3_errmsg(connection));
}

void makeFolder(const std::filesystem::path& folder) {
    if (folder.empty() || std::filesystem::exists(folder)) {
        return;
    }
    makeFolder(folder.parent_path());
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw DatabaseError("cannot make the folder " + folder.string() + ": " + std::strerror(errno));
    }
}

/// SQLite gives its own files the mode of this one.
void makeFile(const std::string& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw DatabaseError("cannot open " + file + ": " + std::strerror(errno));
    }
    ::close(descriptor);
}

}  // namespace

void Database::Closer::operator()(sqlite3* open) const {
    sqlite3_close_v2(open);
}

Database::Database(const std::string& path) {
    // An absolute path is never one of the names with a meaning of their own, such as ":memory:".
    const std::string file = std::filesystem::absolute(path).string();
    makeFolder(std::filesystem::path(file).parent_path());
    makeFile(file);
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    connection.reset(opened);
    if (result != SQLITE_OK) {
        fail(opened, "cannot open " + file);
    }
    sqlite3_extended_result_codes(opened, 1);
    // Long enough for somebody's backup, short enough for a person who waits for the message.
    sqlite3_busy_timeout(opened, 1000);
    try {
        check(file);
        configure();
    } catch (const DatabaseError& error) {
        const int code = sqlite3_errcode(opened) & 0xff;
        if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
            throw DatabaseError(file + " is in use by another process");
        }
        if (code == SQLITE_NOTADB || code == SQLITE_CORRUPT) {
            throw DatabaseError(file + " is damaged or no database; it was left as it is (" + error.what() + ")");
        }
        throw;
    }
}

void Database::check(const std::string& file) {
    execute("PRAGMA locking_mode=EXCLUSIVE");
    const int owner = pragma("application_id");
    const int version = pragma("user_version");
    Statement tables(*this, "SELECT count(*) FROM sqlite_schema");
    tables.step();
    if (owner != applicationId && (owner != 0 || version != 0 || tables.number(0) != 0)) {
        throw DatabaseError(file + " belongs to another program; it was left as it is");
    }
    if (version > schemaVersion) {
        throw DatabaseError(file + " was written by a newer version; it was left as it is");
    }
    Statement quickCheck(*this, "PRAGMA quick_check(1)");
    quickCheck.step();
    const std::string verdict = quickCheck.column(0);
    if (verdict != "ok") {
        throw DatabaseError(file + " is damaged; it was left as it is (" + verdict + ")");
    }
}

void Database::configure() {
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA synchronous=FULL");
    execute("PRAGMA wal_autocheckpoint=64");
    // Takes the lock at once, so that a second host is told at its start and not at its first write.
    execute("BEGIN IMMEDIATE; PRAGMA application_id=" + std::to_string(applicationId) +
            "; PRAGMA user_version=" + std::to_string(schemaVersion) + "; COMMIT");
}

int Database::pragma(const std::string& name) {
    Statement statement(*this, "PRAGMA " + name);
    return statement.step() ? statement.number(0) : 0;
}

void Database::execute(const std::string& sql) {
    if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(connection.get(), "database");
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
        while (step()) {
        }
    } catch (...) {
        reset();
        throw;
    }
    reset();
    return sqlite3_changes(database.handle());
}

}  // namespace SettingsHost
