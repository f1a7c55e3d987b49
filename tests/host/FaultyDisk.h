#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>

struct sqlite3_vfs;

namespace SettingsHostTests {

/// Between SQLite and the real files while it lives: counts the calls, and lets one fail, the disk be full, or the
/// power go. It remembers what was not yet synced, so it knows what a real disk might have lost. Real syncs are left
/// out. One at a time; databases are opened while it lives.
class FaultyDisk {
public:
    FaultyDisk();
    ~FaultyDisk();

    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// Calls since the last of the following four.
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
    struct TrackedFile;
    enum class Mode { WORK, FAIL_ONCE, FAIL, FULL, CUT };

    void use(Mode mode, long number);
    /// Counts a call. Returns: does it fail?
    bool fails(bool needsRoom = false);
    TrackedFile& track(const std::string& path);

    std::unique_ptr<sqlite3_vfs> layer;
    sqlite3_vfs* real;
    std::map<std::string, std::unique_ptr<TrackedFile>> files;
    Mode faultMode = Mode::WORK;
    long callCount = 0;
    long flushCount = 0;
    long faultyCall = 0;
    bool failed = false;
};

}  // namespace SettingsHostTests
