#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Disk.h"
#include "simulation/Choices.h"
#include "simulation/SimulatedFile.h"

struct sqlite3_vfs;

namespace SettingsSimulation {

/// A disk in memory, with the system's cache in front of it: what was not synced is lost when the power is cut, torn or
/// written in another order, as choices say. SQLite reaches it by a file system layer, which is the process's default
/// while the object exists, with its own random numbers. One object at a time.
class SimulatedDisk : public SettingsHandlerKit::Disk {
public:
    using Sleep = std::function<void(std::chrono::microseconds)>;

    /// `sleep` lets time pass.
    SimulatedDisk(Choices& choices, Sleep sleep);
    ~SimulatedDisk() override;

    std::error_code createFolder(const std::string& folder) override;
    std::error_code createFile(const std::string& file) override;
    std::error_code copyFile(const std::string& from, const std::string& to) override;
    std::error_code renameFile(const std::string& from, const std::string& to) override;
    std::error_code removeFile(const std::string& file) override;
    std::error_code sync(const std::string& path) override;
    std::string databaseLayer() const override;
    std::optional<FileState> find(const std::string& path) const override;
    std::error_code tryOpen(const std::string& file, bool writing) const override;
    std::error_code list(const std::string& folder, std::vector<std::string>& names) const override;

    /// Calls so far; those of them that `failCalls` let fail.
    long calls() const { return callCount; }
    long failures() const { return failureCount; }
    void failCalls(long first, long count);
    /// At the call `number`, counted from 1 and from now, the disk is cut off, then `action` is called.
    void cutOffAt(long number, std::function<void()> action);
    /// From now on every call fails and changes nothing: for those who do not know yet that their process is gone.
    void cutOff() { isCutOff = true; }
    /// Works again. What was to fail later is forgotten.
    void work();
    /// The power was cut: leaves what a real disk might have. All that was synced is there.
    void losePower();

    /// The files' contents as programs read them, by their paths.
    std::map<std::string, std::string> contents() const;
    /// The rows of the table `table` of the database `file`, keys with values, as a start would find them. No call of
    /// the disk, and nothing changes.
    std::map<std::string, std::string> rows(const std::string& file, const std::string& table);

private:
    friend struct DiskLayer;
    struct NameChange;

    static std::string folderOf(const std::string& path);
    /// Counts a call. Returns: true when it is to fail.
    bool fails();
    std::error_code failure() const;
    SimulatedFile* fileAt(const std::string& path) const;
    std::shared_ptr<SimulatedFile> create(const std::string& path);
    void remove(const std::string& path);
    void keepNames(const std::string& folder);
    void keepName(const SimulatedFile& file);
    void keep(const NameChange& change);

    Choices& choices;
    const Sleep sleep;
    sqlite3_vfs* const former;
    const std::unique_ptr<sqlite3_vfs> layer;
    std::map<std::string, std::shared_ptr<SimulatedFile>> names;
    std::map<std::string, std::shared_ptr<SimulatedFile>> keptNames;
    std::vector<NameChange> pendingNames;
    long callCount = 0;
    long failureCount = 0;
    long firstFailure = 0;
    long lastFailure = 0;
    long cutOffCall = 0;
    std::function<void()> cutOffAction;
    bool isCutOff = false;
    /// Somebody looks, who is not of the simulation.
    bool isLookedAt = false;
};

}  // namespace SettingsSimulation
