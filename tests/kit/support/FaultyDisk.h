#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

struct sqlite3_vfs;

namespace SettingsHostTests {

/// A layer between SQLite and the real files that counts calls and simulates errors, a full disk and a loss of power.
/// It records what is not synced yet, and therefore what a real disk might lose. It skips real syncs. One object at a
/// time; databases are opened during its lifetime.
///
/// In a watched folder it also intercepts the calls of the code under test: creating, renaming, removing and syncing
/// files count like calls of SQLite.
class FaultyDisk {
public:
    FaultyDisk();
    ~FaultyDisk();

    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// The present content of `folder` counts as synced.
    void watch(const std::string& folder);

    /// Calls since the last one of the following five functions.
    long calls() const { return callCount; }
    /// Syncs since the object was created.
    long flushes() const { return flushCount; }
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
    friend struct FileCalls;
    struct TrackedFile;
    enum class Mode { WORK, FAIL_ONCE, FAIL, FULL, CUT };

    void use(Mode mode, long number);
    /// Counts a call. Returns: true when it is to fail.
    bool fails(bool needsRoom = false);
    TrackedFile& track(const std::string& path);
    void moveTracked(const std::string& from, const std::string& to);
    bool watches(const std::string& path) const;
    void create(const std::string& path);
    void remove(const std::string& path);
    void rename(const std::string& from, const std::string& to);
    /// Of a file or of the watched folder.
    void sync(const std::string& path);

    std::unique_ptr<sqlite3_vfs> layer;
    sqlite3_vfs* real;
    std::map<std::string, std::unique_ptr<TrackedFile>> files;
    std::string watchedFolder;
    /// Not synced yet.
    std::vector<std::pair<std::string, std::string>> renames;
    Mode faultMode = Mode::WORK;
    long callCount = 0;
    long flushCount = 0;
    long faultyCall = 0;
    bool failed = false;
};

}  // namespace SettingsHostTests
