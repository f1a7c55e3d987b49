#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "service/Descriptor.h"

struct sqlite3;
struct sqlite3_stmt;

namespace SettingsHost {

/// What the database could not do, in words for the log.
class DatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The file does not hold what a database holds.
class DamagedDatabase : public DatabaseError {
public:
    using DatabaseError::DatabaseError;
};

/// The file was written by a newer version.
class NewerDatabase : public DatabaseError {
public:
    using DatabaseError::DatabaseError;
};

struct ConnectionCloser {
    void operator()(sqlite3* open) const;
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

/// The one connection to the host's database file, held exclusively: no other process reads or writes the file while it
/// is open. A write that has returned survives a loss of power. One thread only.
class Database {
public:
    /// Opens the file at `path`, making it (0600) and its missing folders (0700) if need be.
    /// Errors: `DamagedDatabase`; `NewerDatabase`; `DatabaseError` when the file is in use, not ours, or cannot be
    /// opened. The file and its write-ahead log are then left as they are.
    explicit Database(const std::string& path);

    const std::string& file() const { return path; }
    /// False on a file system that cannot be written to: everything can be read, every change fails.
    bool isWritable() const { return writable; }

    /// Runs one or more statements without results.
    void execute(const std::string& sql);
    /// Undoes a transaction that is open; does nothing when there is none.
    void rollBack();
    /// Moves all of the log into the database and cuts it off. A loss of power may bring it back until the next change.
    void emptyLog();
    sqlite3* handle() const { return connection.get(); }

private:
    void connect();
    void check();
    void configure();
    int pragma(const std::string& name);

    std::string path;
    bool writable;
    Descriptor readingLock;
    Connection connection;
};

/// A prepared statement that is used again and again. The database outlives it.
class Statement {
public:
    Statement(Database& database, const std::string& sql);

    /// Binds `bytes` to the parameter `index`, counted from 1. They must stay unchanged until the next `reset`.
    Statement& bind(int index, const std::string& bytes);
    /// Goes to the next row. Returns: false at the end.
    bool step();
    /// The bytes of a column of the current row, counted from 0.
    std::string column(int index) const;
    int number(int index) const;
    void reset();
    /// Steps to the end and resets, also when that fails. Returns: how many rows it changed.
    int run();

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* prepared) const;
    };

    Database& database;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement;
};

}  // namespace SettingsHost
