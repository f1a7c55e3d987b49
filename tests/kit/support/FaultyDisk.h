#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

struct sqlite3_vfs;

namespace SettingsHostTests {

/// Between SQLite and the real files while it lives: counts the calls, and lets one fail, the disk be full, or the
/// power go. It remembers what was not yet synced, so it knows what a real disk might have lost. Real syncs are left
/// out. One at a time; databases are opened while it lives.
///
/// In a folder that it watches it also stands between the host's own code and the files: what is made, renamed, removed
/// and synced there counts as a call like those of SQLite.
class FaultyDisk {
public:
    FaultyDisk();
    ~FaultyDisk();

    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// All that is in `folder` now is there for certain; what is made from now on is not, until it is synced.
    void watch(const std::string& folder);

    /// Calls since the last of the following five.
    long calls() const { return callCount; }
    /// How often the disk was made to keep what it has, since the object was made.
    long flushes() const { return flushCount; }
    void work();
    /// The call `number`, counted from 1, fails as it would at a bad block. Later ones work.
    void failOnce(long number);
    /// The call `number` and all after it fail.
    void failFrom(long number);
    /// Writes fail for want of room from the call `number` on; everything else works.
    void fillUpFrom(long number);
    /// Nothing reaches the disk from the call `number` on; a write that is this call may reach it in part.
    void cutPowerAt(long number);

    /// Did the fault take place?
    bool hasFailed() const { return failed; }

    /// After a cut, when the database is closed: leaves the files as a disk might have them. What was synced is there.
    /// Of the rest any part is, in any order, and one write in part.
    void restorePower(std::mt19937& random);

private:
    friend struct DiskCalls;
    friend struct FileCalls;
    struct TrackedFile;
    enum class Mode { WORK, FAIL_ONCE, FAIL, FULL, CUT };

    void use(Mode mode, long number);
    /// Counts a call. Returns: does it fail?
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
    /// Those that a loss of power may undo.
    std::vector<std::pair<std::string, std::string>> renames;
    Mode faultMode = Mode::WORK;
    long callCount = 0;
    long flushCount = 0;
    long faultyCall = 0;
    bool failed = false;
};

}  // namespace SettingsHostTests
