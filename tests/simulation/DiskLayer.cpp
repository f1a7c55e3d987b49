#include "simulation/DiskLayer.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <sqlite3.h>

#include "simulation/SimulatedDisk.h"

namespace SettingsSimulation {

/// The functions that SQLite calls.
struct DiskLayer {
    using File = SimulatedFile;

    /// SQLite allocates this.
    struct OpenFile {
        sqlite3_file base;
        SimulatedDisk* disk;
        std::shared_ptr<File> file;
    };

    static OpenFile& open(sqlite3_file* file) { return *reinterpret_cast<OpenFile*>(file); }
    static SimulatedDisk& diskOf(sqlite3_vfs* layer) { return *static_cast<SimulatedDisk*>(layer->pAppData); }

    static int close(sqlite3_file* file) {
        open(file).~OpenFile();
        return SQLITE_OK;
    }

    static int read(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_READ;
        }
        const std::string& content = open(file).file->content;
        const auto wanted = static_cast<std::size_t>(size);
        const std::size_t start = std::min(static_cast<std::size_t>(offset), content.size());
        const std::size_t found = std::min(wanted, content.size() - start);
        std::memcpy(out, content.data() + start, found);
        std::memset(static_cast<char*>(out) + found, 0, wanted - found);
        return found == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
    }

    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
        SimulatedDisk& disk = *open(file).disk;
        const bool wasCutOff = disk.isCutOff;
        const bool failed = disk.fails();
        // The last write before the end may have reached the cache.
        if (!failed || (!wasCutOff && disk.isCutOff && disk.choices.pick(2, "is the last write done") == 1)) {
            open(file).file->change({false, static_cast<std::size_t>(offset),
                                     std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size))});
        }
        return failed ? SQLITE_IOERR_WRITE : SQLITE_OK;
    }

    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_TRUNCATE;
        }
        open(file).file->change({true, static_cast<std::size_t>(size), ""});
        return SQLITE_OK;
    }

    static int sync(sqlite3_file* file, int /*flags*/) {
        SimulatedDisk& disk = *open(file).disk;
        if (disk.fails()) {
            return SQLITE_IOERR_FSYNC;
        }
        open(file).file->sync();
        disk.keepName(*open(file).file);
        return SQLITE_OK;
    }

    static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
        if (open(file).disk->fails()) {
            return SQLITE_IOERR_FSTAT;
        }
        *size = static_cast<sqlite3_int64>(open(file).file->content.size());
        return SQLITE_OK;
    }

    /// One process at a time uses the disk.
    static int lock(sqlite3_file* file, int /*level*/) {
        return open(file).disk->fails() ? SQLITE_IOERR_LOCK : SQLITE_OK;
    }
    static int unlock(sqlite3_file* /*file*/, int /*level*/) { return SQLITE_OK; }
    static int checkReservedLock(sqlite3_file* /*file*/, int* result) {
        *result = 0;
        return SQLITE_OK;
    }
    static int fileControl(sqlite3_file* /*file*/, int /*operation*/, void* /*argument*/) { return SQLITE_NOTFOUND; }
    static int sectorSize(sqlite3_file* /*file*/) { return 512; }
    /// No guarantees that SQLite could rely on.
    static int deviceCharacteristics(sqlite3_file* /*file*/) { return 0; }

    static int openFile(sqlite3_vfs* layer, const char* name, sqlite3_file* file, int flags, int* outFlags) {
        SimulatedDisk& disk = diskOf(layer);
        file->pMethods = nullptr;
        if (disk.fails()) {
            return SQLITE_CANTOPEN;
        }
        std::shared_ptr<File> found;
        if (name == nullptr) {
            found = std::make_shared<File>();
        } else if (const auto entry = disk.names.find(name); entry != disk.names.end()) {
            found = entry->second;
        } else if ((flags & SQLITE_OPEN_CREATE) != 0) {
            found = disk.create(name);
        } else {
            return SQLITE_CANTOPEN;
        }
        new (file) OpenFile{{&methods}, &disk, std::move(found)};
        if (outFlags != nullptr) {
            *outFlags = flags;
        }
        return SQLITE_OK;
    }

    static int removeFile(sqlite3_vfs* layer, const char* name, int syncFolder) {
        SimulatedDisk& disk = diskOf(layer);
        if (disk.fails()) {
            return SQLITE_IOERR_DELETE;
        }
        if (disk.fileAt(name) == nullptr) {
            return SQLITE_IOERR_DELETE_NOENT;
        }
        disk.remove(name);
        if (syncFolder != 0) {
            disk.keepNames(SimulatedDisk::folderOf(name));
        }
        return SQLITE_OK;
    }

    static int access(sqlite3_vfs* layer, const char* name, int flags, int* result) {
        SimulatedDisk& disk = diskOf(layer);
        if (disk.fails()) {
            return SQLITE_IOERR_ACCESS;
        }
        const File* const file = disk.fileAt(name);
        // A journal without content counts as none, as in SQLite's own layer.
        *result = file != nullptr && (flags != SQLITE_ACCESS_EXISTS || !file->content.empty()) ? 1 : 0;
        return SQLITE_OK;
    }

    static int fullPathName(sqlite3_vfs* /*layer*/, const char* name, int size, char* out) {
        sqlite3_snprintf(size, out, "%s", name);
        return SQLITE_OK;
    }

    static int randomness(sqlite3_vfs* layer, int size, char* out) {
        Choices& choices = diskOf(layer).choices;
        SeededChoices bytes(choices.pick(std::size_t{1} << 32U, "the seed of SQLite's random numbers"));
        std::generate(out, out + size, [&] { return static_cast<char>(bytes.pick(256, "")); });
        return size;
    }

    static int sleep(sqlite3_vfs* layer, int microseconds) {
        diskOf(layer).sleep(std::chrono::microseconds(microseconds));
        return microseconds;
    }

    static const sqlite3_io_methods methods;
};

const sqlite3_io_methods DiskLayer::methods = {1,
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

sqlite3_vfs diskLayer(SimulatedDisk& disk, const sqlite3_vfs& other) {
    // Time is that of the process.
    sqlite3_vfs layer = other;
    layer.szOsFile = static_cast<int>(sizeof(DiskLayer::OpenFile));
    layer.zName = "simulated-disk";
    layer.pNext = nullptr;
    layer.pAppData = &disk;
    layer.xOpen = DiskLayer::openFile;
    layer.xDelete = DiskLayer::removeFile;
    layer.xAccess = DiskLayer::access;
    layer.xFullPathname = DiskLayer::fullPathName;
    layer.xRandomness = DiskLayer::randomness;
    layer.xSleep = DiskLayer::sleep;
    return layer;
}

}  // namespace SettingsSimulation
