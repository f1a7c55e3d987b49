#pragma once

#include <stdexcept>

namespace SettingsHandlerKit {

/// An operation of the database or of one of its files failed. `what()` is for the log and holds no values of settings.
class DatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The file is damaged or not a database.
class DamagedDatabase : public DatabaseError {
public:
    using DatabaseError::DatabaseError;
};

/// The file was written by a newer version.
class NewerDatabase : public DatabaseError {
public:
    using DatabaseError::DatabaseError;
};

}  // namespace SettingsHandlerKit
