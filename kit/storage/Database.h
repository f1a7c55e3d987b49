#pragma once

#include <memory>
#include <optional>
#include <string>

#include "SettingsHandlerKit/DatabaseError.h"
#include "SettingsHandlerKit/Descriptor.h"
#include "SettingsHandlerKit/Disk.h"

struct sqlite3;
struct sqlite3_stmt;

namespace SettingsHandlerKit {

struct ConnectionCloser {
    void operator()(sqlite3* open) const;
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

/// The one connection to the database file, with an exclusive lock: no other process reads or writes the file while it
/// is open. A write survives a loss of power once it has returned. Threads: one.
class Database {
public:
    /// Opens the file at `path`. Creates it (0600) and its folders (0700) if they are missing.
    /// Errors: `DamagedDatabase`; `NewerDatabase`; `DatabaseError` when the file is in use, belongs to another program,
    /// or cannot be opened. The file and its write-ahead log are unchanged then.
    Database(const std::string& path, std::shared_ptr<Disk> disk);

    const std::string& file() const { return path; }
    /// The disk that the file is on.
    Disk& disk() const { return *usedDisk; }
    /// False on a read-only file system: values can be read, every change fails.
    bool isWritable() const { return writable; }

    /// Can every page be read? Damaged ones count as read.
    bool isReadable();
    /// Runs one or more statements without results. Errors: `DatabaseError`, also those of `requireTransaction`.
    void execute(const std::string& sql);

    /// Begins a transaction of several changes. One that cannot be begun counts as rolled back.
    void begin();
    /// Makes all changes of the transaction durable. Errors: `DatabaseError`; call `rollBack` then.
    void commit();
    /// Ends an open transaction without its changes; does nothing without one.
    void rollBack();
    /// True from `begin` until `commit` has succeeded or `rollBack` was called.
    bool isInTransaction() const { return inTransaction; }
    /// SQLite rolls a transaction back by itself after some errors; what follows would be committed at once.
    /// Errors: `DatabaseError` when this has happened.
    void requireTransaction() const;

    /// Copies the write-ahead log into the database and truncates it. Until the next change a loss of power may bring
    /// it back.
    void emptyWal();
    sqlite3* handle() const { return connection.get(); }

private:
    void connect();
    void check();
    /// Of SQLite's check. Reads every page.
    std::string verdict();
    void configure();
    void flushRecoveredWal();
    int pragma(const std::string& name);

    std::shared_ptr<Disk> usedDisk;
    std::string path;
    bool writable;
    bool inTransaction = false;
    Descriptor readingLock;
    Connection connection;
};

/// A prepared statement, used repeatedly. The database outlives it.
class Statement {
public:
    Statement(Database& database, const std::string& sql);

    /// Binds `bytes` to the parameter `index`, counted from 1. `bytes` must stay valid and unchanged until `reset`.
    Statement& bind(int index, const std::string& bytes);
    /// Advances to the next row. Returns: false at the end.
    bool step();
    /// The bytes of a column of the current row, counted from 0.
    std::string column(int index) const;
    int number(int index) const;
    void reset();
    /// Makes a change: steps to the end and resets, also on an error. Returns: the number of rows that it changed.
    int run();

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* prepared) const;
    };

    Database& database;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement;
};

}  // namespace SettingsHandlerKit
