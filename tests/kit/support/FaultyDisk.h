#pragma once

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/Disk.h"

struct sqlite3_vfs;

namespace SettingsHostTests {

/// A disk that counts calls and simulates errors, a full disk and a loss of power. It records what is not synced yet,
/// and therefore what a real disk might lose. It skips real syncs. One object at a time.
///
/// Calls of SQLite are always intercepted. In a watched folder creating, copying, renaming, removing and syncing files
/// count like calls of SQLite.
class FaultyDisk : public SettingsHandlerKit::Disk {
public:
    FaultyDisk();
    ~FaultyDisk() override;

    std::error_code createFile(const std::string& file) override;
    std::error_code copyFile(const std::string& from, const std::string& to) override;
    std::error_code renameFile(const std::string& from, const std::string& to) override;
    std::error_code removeFile(const std::string& file) override;
    std::error_code sync(const std::string& path) override;
    std::string databaseLayer() const override;

    /// The present content of `folder` counts as synced.
    void watch(const std::string& folder);

    /// Calls since the last one of the following five functions.
    long calls() const { return callCount; }
    /// Syncs since the object was created.
    long flushes() const { return flushCount; }
    /// Called at the start of each sync by SQLite that does not fail.
    void onFlush(std::function<void()> action) { flushAction = std::move(action); }
    void work();
    /// The call `number`, counted from 1, fails with an I/O error. Later ones work.
    void failOnce(long number);
    /// The call `number` and all after it fail.
    void failFrom(long number);
    /// From the call `number` on, writes fail because the disk is full; everything else works.
    void fillUpFrom(long number);
    /// From the call `number` on nothing reaches the disk; if it is a write, a part of it may.
    void cutPowerAt(long number);

    /// Did the simulated fault occur?
    bool hasFailed() const { return failed; }

    /// After a cut, when the database is closed: leaves the files in a state that a real disk might have. All that was
    /// synced is there, and of the rest any part, in any order, and a part of one write.
    void restorePower(std::mt19937& random);

private:
    friend struct DiskCalls;
    struct TrackedFile;
    enum class Mode { WORK, FAIL_ONCE, FAIL, FULL, CUT };

    void use(Mode mode, long number);
    /// Counts a call. Returns: true when it is to fail.
    bool fails(bool needsRoom = false);
    std::error_code fault() const;
    TrackedFile& track(const std::string& path);
    void moveTracked(const std::string& from, const std::string& to);
    bool watches(const std::string& path) const;
    void trackCreation(const std::string& path);
    void trackRemoval(const std::string& path);
    /// Of a file or of the watched folder.
    void trackSync(const std::string& path);

    std::unique_ptr<sqlite3_vfs> layer;
    sqlite3_vfs* real;
    std::map<std::string, std::unique_ptr<TrackedFile>> files;
    std::string watchedFolder;
    /// Not synced yet.
    std::vector<std::pair<std::string, std::string>> renames;
    Mode faultMode = Mode::WORK;
    std::function<void()> flushAction;
    long callCount = 0;
    long flushCount = 0;
    long faultyCall = 0;
    bool failed = false;
};

}  // namespace SettingsHostTests
