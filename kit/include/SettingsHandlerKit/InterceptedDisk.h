#pragma once

#include <functional>
#include <memory>
#include <string>
#include <system_error>

#include "SettingsHandlerKit/Disk.h"

namespace SettingsHandlerKit {

/// Another disk, with a say before each operation, also before each one of the database: for tests and simulators that
/// delay operations or let them fail. Threads: those of the storage.
class InterceptedDisk : public Disk {
public:
    /// What an operation does.
    enum class Operation {
        READ,
        /// Needs room: writing, creating and copying.
        WRITE,
        /// Needs none: renaming, removing, truncating, locking and opening.
        CHANGE,
        /// Returns when what was written survives a loss of power.
        FLUSH,
    };
    /// Called before an operation, and may block. Returns: the error that the operation has instead of being done, an
    /// `errno` value of the generic category; none to do it.
    using Intercept = std::function<std::error_code(Operation)>;

    /// Gives each operation to `intercept` first, then to `disk`.
    explicit InterceptedDisk(Intercept intercept, std::shared_ptr<Disk> disk = std::make_shared<Disk>());
    ~InterceptedDisk() override;

    std::error_code createFolder(const std::string& folder) override;
    std::error_code createFile(const std::string& file) override;
    std::error_code copyFile(const std::string& from, const std::string& to) override;
    std::error_code renameFile(const std::string& from, const std::string& to) override;
    std::error_code removeFile(const std::string& file) override;
    std::error_code sync(const std::string& path) override;
    std::string databaseLayer() const override;
    /// What files there are is not intercepted.
    std::optional<FileState> find(const std::string& path) const override;
    std::error_code tryOpen(const std::string& file, bool writing) const override;
    std::error_code list(const std::string& folder, std::vector<std::string>& names) const override;

private:
    struct Parts;
    const std::unique_ptr<Parts> parts;
};

}  // namespace SettingsHandlerKit
