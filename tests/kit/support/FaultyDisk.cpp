#include "kit/support/FaultyDisk.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sqlite3.h>

#include "support/Files.h"

namespace SettingsHostTests {

namespace {

struct Change {
    bool isTruncation;
    std::size_t offset;
    std::string bytes;
};

void apply(const Change& change, std::string& content) {
    if (change.isTruncation) {
        content.resize(std::min(content.size(), change.offset));
        return;
    }
    content.resize(std::max(content.size(), change.offset + change.bytes.size()));
    content.replace(change.offset, change.bytes.size(), change.bytes);
}

bool chance(std::mt19937& random, double probability) {
    return std::bernoulli_distribution(probability)(random);
}

}  // namespace

/// The synced content of a file, and the changes that are not synced.
struct FaultyDisk::TrackedFile {
    bool exists = false;
    std::string content;
    std::vector<Change> pending;
    bool mayBeGone = false;

    void sync() {
        for (const auto& change : pending) {
            apply(change, content);
        }
        pending.clear();
        exists = true;
        mayBeGone = false;
    }

    void leave(const std::string& path, std::mt19937& random) {
        // All, nothing or, most often, some of the changes survive.
        const double kept = std::discrete_distribution<int>({1, 2, 1})(random) / 2.0;
        std::vector<Change> survivors;
        for (const auto& change : pending) {
            if (chance(random, kept)) {
                survivors.push_back(change);
            }
        }
        if (chance(random, 0.5)) {
            std::shuffle(survivors.begin(), survivors.end(), random);
        }
        if (!survivors.empty() && chance(random, 0.5)) {
            tear(survivors[random() % survivors.size()].bytes, random);
        }
        for (const auto& survivor : survivors) {
            apply(survivor, content);
        }
        const bool gone = exists ? mayBeGone && chance(random, 0.5) : pending.empty() || chance(random, 0.5);
        std::filesystem::remove(path);
        if (!gone) {
            std::ofstream(path, std::ios::binary) << content;
        }
    }

    /// Disks write whole sectors; flash may stop anywhere.
    static void tear(std::string& bytes, std::mt19937& random) {
        constexpr std::size_t sector = 512;
        const std::size_t unit = chance(random, 0.7) ? sector : 1;
        bytes.resize(random() % (bytes.size() / unit + 1) * unit);
    }
};

/// The functions that SQLite calls.
struct DiskCalls {
    using TrackedFile = FaultyDisk::TrackedFile;

    /// SQLite allocates this and, after it, the real file.
    struct OpenFile {
        sqlite3_file base;
        FaultyDisk* disk;
        TrackedFile* tracked;
        sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };

    static OpenFile& open(sqlite3_file* file) { return *reinterpret_cast<OpenFile*>(file); }
    static FaultyDisk& diskOf(sqlite3_vfs* layer) { return *static_cast<FaultyDisk*>(layer->pAppData); }
    static bool isCut(FaultyDisk& disk) { return disk.faultMode == FaultyDisk::Mode::CUT; }

    static int close(sqlite3_file* file) { return open(file).real()->pMethods->xClose(open(file).real()); }

    static int read(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_READ;
        }
        return open(file).real()->pMethods->xRead(open(file).real(), out, size, offset);
    }

    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
        FaultyDisk& disk = *open(file).disk;
        const bool wentBefore = disk.failed;
        const bool fails = disk.fails(true);
        if (!fails || (isCut(disk) && !wentBefore)) {
            open(file).tracked->pending.push_back(
                {false, static_cast<std::size_t>(offset),
                 std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size))});
        }
        if (fails) {
            return disk.faultMode == FaultyDisk::Mode::FULL ? SQLITE_FULL : SQLITE_IOERR_WRITE;
        }
        return open(file).real()->pMethods->xWrite(open(file).real(), bytes, size, offset);
    }

    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_TRUNCATE;
        }
        open(file).tracked->pending.push_back({true, static_cast<std::size_t>(size), ""});
        return open(file).real()->pMethods->xTruncate(open(file).real(), size);
    }

    static int sync(sqlite3_file* file, int /*flags*/) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_FSYNC;
        }
        FaultyDisk& disk = *open(file).disk;
        if (disk.flushAction) {
            disk.flushAction();
        }
        ++disk.flushCount;
        open(file).tracked->sync();
        return SQLITE_OK;
    }

    static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_FSTAT;
        }
        return open(file).real()->pMethods->xFileSize(open(file).real(), size);
    }

    static int lock(sqlite3_file* file, int level) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_LOCK;
        }
        return open(file).real()->pMethods->xLock(open(file).real(), level);
    }

    static int unlock(sqlite3_file* file, int level) {
        return open(file).real()->pMethods->xUnlock(open(file).real(), level);
    }

    static int checkReservedLock(sqlite3_file* file, int* result) {
        return open(file).real()->pMethods->xCheckReservedLock(open(file).real(), result);
    }

    static int fileControl(sqlite3_file* /*file*/, int /*operation*/, void* /*argument*/) { return SQLITE_NOTFOUND; }
    static int sectorSize(sqlite3_file* /*file*/) { return 512; }
    /// No guarantees that SQLite could rely on.
    static int deviceCharacteristics(sqlite3_file* /*file*/) { return 0; }

    static int openFile(sqlite3_vfs* layer, const char* name, sqlite3_file* file, int flags, int* outFlags) {
        FaultyDisk& disk = diskOf(layer);
        file->pMethods = nullptr;
        if (name == nullptr || disk.fails()) {
            return SQLITE_CANTOPEN;
        }
        OpenFile& opened = open(file);
        opened.disk = &disk;
        opened.tracked = &disk.track(name);
        const int result = disk.real->xOpen(disk.real, name, opened.real(), flags, outFlags);
        if (result == SQLITE_OK) {
            file->pMethods = &methods;
        }
        return result;
    }

    static int removeFile(sqlite3_vfs* layer, const char* name, int syncFolder) {
        FaultyDisk& disk = diskOf(layer);
        if (disk.fails()) {
            return SQLITE_IOERR_DELETE;
        }
        disk.trackRemoval(name);
        if (syncFolder != 0) {
            ++disk.flushCount;
            disk.track(name) = TrackedFile();
        }
        return disk.real->xDelete(disk.real, name, 0);
    }

    static int access(sqlite3_vfs* layer, const char* name, int flags, int* result) {
        FaultyDisk& disk = diskOf(layer);
        return disk.fails() ? SQLITE_IOERR_ACCESS : disk.real->xAccess(disk.real, name, flags, result);
    }

    static const sqlite3_io_methods methods;
};

const sqlite3_io_methods DiskCalls::methods = {1,
                                               close,
                                               read,
                                               write,
                                               truncate,
                                               sync,
                                               fileSize,
                                               lock,
                                               unlock,
                                               checkReservedLock,
                                               fileControl,
                                               sectorSize,
                                               deviceCharacteristics,
                                               nullptr,
                                               nullptr,
                                               nullptr,
                                               nullptr,
                                               nullptr,
                                               nullptr};

FaultyDisk::FaultyDisk() : layer(std::make_unique<sqlite3_vfs>()), real(sqlite3_vfs_find(nullptr)) {
    // Everything but files, such as time and random numbers, is passed to the real one.
    *layer = *real;
    layer->szOsFile = static_cast<int>(sizeof(DiskCalls::OpenFile)) + real->szOsFile;
    layer->zName = "faulty-disk";
    layer->pNext = nullptr;
    layer->pAppData = this;
    layer->xOpen = DiskCalls::openFile;
    layer->xDelete = DiskCalls::removeFile;
    layer->xAccess = DiskCalls::access;
    sqlite3_vfs_register(layer.get(), 0);
}

FaultyDisk::~FaultyDisk() {
    sqlite3_vfs_unregister(layer.get());
}

std::string FaultyDisk::databaseLayer() const {
    return layer->zName;
}

FaultyDisk::TrackedFile& FaultyDisk::track(const std::string& path) {
    auto& tracked = files[path];
    if (!tracked) {
        tracked = std::make_unique<TrackedFile>();
        const bool isThere = std::filesystem::exists(path);
        if (!watches(path)) {
            tracked->exists = isThere;
            tracked->content = TestSupport::contentOf(path);
        } else if (isThere) {
            tracked->pending.push_back({false, 0, TestSupport::contentOf(path)});
        }
    }
    return *tracked;
}

bool FaultyDisk::watches(const std::string& path) const {
    return !watchedFolder.empty() && std::filesystem::path(path).parent_path() == watchedFolder;
}

void FaultyDisk::watch(const std::string& folder) {
    files.clear();
    watchedFolder = folder;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        track(entry.path()).sync();
    }
}

void FaultyDisk::trackCreation(const std::string& path) {
    track(path).pending.push_back({false, 0, ""});
}

void FaultyDisk::trackRemoval(const std::string& path) {
    TrackedFile& tracked = track(path);
    tracked.pending.push_back({true, 0, ""});
    tracked.mayBeGone = true;
}

void FaultyDisk::moveTracked(const std::string& from, const std::string& to) {
    track(to) = std::exchange(track(from), TrackedFile());
}

void FaultyDisk::trackSync(const std::string& path) {
    ++flushCount;
    if (path != watchedFolder) {
        TrackedFile& tracked = track(path);
        tracked.pending = {{true, 0, ""}, {false, 0, TestSupport::contentOf(path)}};
        tracked.sync();
        return;
    }
    for (const auto& [from, to] : std::exchange(renames, {})) {
        moveTracked(from, to);
    }
    for (auto& [name, file] : files) {
        if (std::filesystem::exists(name)) {
            file->exists = true;
            file->mayBeGone = false;
        } else {
            *file = TrackedFile();
        }
    }
}

bool FaultyDisk::fails(bool needsRoom) {
    ++callCount;
    bool fault = false;
    switch (faultMode) {
        case Mode::WORK:
            break;
        case Mode::FAIL_ONCE:
            fault = callCount == faultyCall;
            break;
        case Mode::FULL:
            fault = needsRoom && callCount >= faultyCall;
            break;
        default:
            fault = callCount >= faultyCall;
            break;
    }
    failed = failed || fault;
    return fault;
}

void FaultyDisk::use(Mode mode, long number) {
    faultMode = mode;
    faultyCall = number;
    callCount = 0;
    failed = false;
}

void FaultyDisk::work() {
    use(Mode::WORK, 0);
}

void FaultyDisk::failOnce(long number) {
    use(Mode::FAIL_ONCE, number);
}

void FaultyDisk::failFrom(long number) {
    use(Mode::FAIL, number);
}

void FaultyDisk::fillUpFrom(long number) {
    use(Mode::FULL, number);
}

void FaultyDisk::cutPowerAt(long number) {
    use(Mode::CUT, number);
}

void FaultyDisk::restorePower(std::mt19937& random) {
    for (const auto& [from, to] : std::exchange(renames, {})) {
        if (chance(random, 0.5)) {
            moveTracked(from, to);
        }
    }
    if (!watchedFolder.empty()) {
        for (const auto& entry : std::filesystem::directory_iterator(watchedFolder)) {
            track(entry.path());
        }
    }
    for (const auto& [path, file] : files) {
        file->leave(path, random);
    }
    files.clear();
    work();
    if (!watchedFolder.empty()) {
        watch(watchedFolder);
    }
}

}  // namespace SettingsHostTests
