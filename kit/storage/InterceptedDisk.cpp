#include "SettingsHandlerKit/InterceptedDisk.h"

#include <cstdint>
#include <string>
#include <utility>

#include <sqlite3.h>

namespace SettingsHandlerKit {

namespace {

using Operation = InterceptedDisk::Operation;

/// SQLite allocates this and, after it, the real file.
struct OpenFile {
    sqlite3_file base;
    const InterceptedDisk::Intercept* intercept;
    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    const sqlite3_io_methods& methods() { return *real()->pMethods; }
};

OpenFile& open(sqlite3_file* file) {
    return *reinterpret_cast<OpenFile*>(file);
}

/// Returns: `failure`, or that the disk is full, if the operation is to fail; otherwise SQLITE_OK.
int resultOf(const InterceptedDisk::Intercept& intercept, Operation operation, int failure) {
    const std::error_code error = intercept(operation);
    if (!error) {
        return SQLITE_OK;
    }
    return error == std::errc::no_space_on_device ? SQLITE_FULL : failure;
}

int before(sqlite3_file* file, Operation operation, int failure) {
    return resultOf(*open(file).intercept, operation, failure);
}

int closeFile(sqlite3_file* file) {
    return open(file).methods().xClose(open(file).real());
}

int readFile(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) {
    const int result = before(file, Operation::READ, SQLITE_IOERR_READ);
    return result != SQLITE_OK ? result : open(file).methods().xRead(open(file).real(), out, size, offset);
}

int writeFile(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
    const int result = before(file, Operation::WRITE, SQLITE_IOERR_WRITE);
    return result != SQLITE_OK ? result : open(file).methods().xWrite(open(file).real(), bytes, size, offset);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    const int result = before(file, Operation::CHANGE, SQLITE_IOERR_TRUNCATE);
    return result != SQLITE_OK ? result : open(file).methods().xTruncate(open(file).real(), size);
}

int flushFile(sqlite3_file* file, int flags) {
    const int result = before(file, Operation::FLUSH, SQLITE_IOERR_FSYNC);
    return result != SQLITE_OK ? result : open(file).methods().xSync(open(file).real(), flags);
}

int sizeOfFile(sqlite3_file* file, sqlite3_int64* size) {
    const int result = before(file, Operation::READ, SQLITE_IOERR_FSTAT);
    return result != SQLITE_OK ? result : open(file).methods().xFileSize(open(file).real(), size);
}

int lockFile(sqlite3_file* file, int level) {
    const int result = before(file, Operation::CHANGE, SQLITE_IOERR_LOCK);
    return result != SQLITE_OK ? result : open(file).methods().xLock(open(file).real(), level);
}

int unlockFile(sqlite3_file* file, int level) {
    return open(file).methods().xUnlock(open(file).real(), level);
}

int checkReservedLock(sqlite3_file* file, int* result) {
    return open(file).methods().xCheckReservedLock(open(file).real(), result);
}

int controlFile(sqlite3_file* file, int operation, void* argument) {
    return open(file).methods().xFileControl(open(file).real(), operation, argument);
}

int sectorSize(sqlite3_file* file) {
    return open(file).methods().xSectorSize(open(file).real());
}

int deviceCharacteristics(sqlite3_file* file) {
    return open(file).methods().xDeviceCharacteristics(open(file).real());
}

/// Of the first version, without memory that processes share: the database is locked for this process alone.
constexpr sqlite3_io_methods methods = {
    1,          closeFile,         readFile,    writeFile,  truncateFile,          flushFile, sizeOfFile, lockFile,
    unlockFile, checkReservedLock, controlFile, sectorSize, deviceCharacteristics, nullptr,   nullptr,    nullptr,
    nullptr,    nullptr,           nullptr};

}  // namespace

/// The file system layer of SQLite, over that of the other disk.
struct InterceptedDisk::Parts {
    Parts(Intercept itsIntercept, std::shared_ptr<Disk> otherDisk)
        : intercept(std::move(itsIntercept)), disk(std::move(otherDisk)), real(layerOf(*disk)) {
        // Everything but files, such as time and random numbers, is passed to the real one.
        layer = *real;
        layer.szOsFile = static_cast<int>(sizeof(OpenFile)) + real->szOsFile;
        layer.zName = name.c_str();
        layer.pNext = nullptr;
        layer.pAppData = this;
        layer.xOpen = [](sqlite3_vfs* vfs, const char* file, sqlite3_file* opened, int flags, int* outFlags) {
            return of(vfs).openFile(file, open(opened), flags, outFlags);
        };
        layer.xDelete = [](sqlite3_vfs* vfs, const char* file, int syncFolder) {
            const int result = resultOf(of(vfs).intercept, Operation::CHANGE, SQLITE_IOERR_DELETE);
            return result != SQLITE_OK ? result : of(vfs).real->xDelete(of(vfs).real, file, syncFolder);
        };
        layer.xAccess = [](sqlite3_vfs* vfs, const char* file, int flags, int* answer) {
            const int result = resultOf(of(vfs).intercept, Operation::READ, SQLITE_IOERR_ACCESS);
            return result != SQLITE_OK ? result : of(vfs).real->xAccess(of(vfs).real, file, flags, answer);
        };
        sqlite3_vfs_register(&layer, 0);
    }
    ~Parts() { sqlite3_vfs_unregister(&layer); }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    static sqlite3_vfs* layerOf(const Disk& disk) {
        const std::string layerName = disk.databaseLayer();
        return sqlite3_vfs_find(layerName.empty() ? nullptr : layerName.c_str());
    }
    static Parts& of(sqlite3_vfs* vfs) { return *static_cast<Parts*>(vfs->pAppData); }

    int openFile(const char* file, OpenFile& opened, int flags, int* outFlags) {
        opened.base.pMethods = nullptr;
        int result = resultOf(intercept, Operation::CHANGE, SQLITE_CANTOPEN);
        if (result == SQLITE_OK) {
            opened.intercept = &intercept;
            result = real->xOpen(real, file, opened.real(), flags, outFlags);
        }
        if (result == SQLITE_OK) {
            opened.base.pMethods = &methods;
        }
        return result;
    }

    const Intercept intercept;
    const std::shared_ptr<Disk> disk;
    sqlite3_vfs* const real;
    /// Different for each object, since all are registered in the process.
    const std::string name = "intercepted-" + std::to_string(reinterpret_cast<std::uintptr_t>(this));
    sqlite3_vfs layer;
};

InterceptedDisk::InterceptedDisk(Intercept intercept, std::shared_ptr<Disk> disk)
    : parts(std::make_unique<Parts>(std::move(intercept), std::move(disk))) {}

InterceptedDisk::~InterceptedDisk() = default;

std::error_code InterceptedDisk::createFolder(const std::string& folder) {
    const std::error_code error = parts->intercept(Operation::WRITE);
    return error ? error : parts->disk->createFolder(folder);
}

std::error_code InterceptedDisk::createFile(const std::string& file) {
    const std::error_code error = parts->intercept(Operation::WRITE);
    return error ? error : parts->disk->createFile(file);
}

std::error_code InterceptedDisk::copyFile(const std::string& from, const std::string& to) {
    const std::error_code error = parts->intercept(Operation::WRITE);
    return error ? error : parts->disk->copyFile(from, to);
}

std::error_code InterceptedDisk::renameFile(const std::string& from, const std::string& to) {
    const std::error_code error = parts->intercept(Operation::CHANGE);
    return error ? error : parts->disk->renameFile(from, to);
}

std::error_code InterceptedDisk::removeFile(const std::string& file) {
    const std::error_code error = parts->intercept(Operation::CHANGE);
    return error ? error : parts->disk->removeFile(file);
}

std::error_code InterceptedDisk::sync(const std::string& path) {
    const std::error_code error = parts->intercept(Operation::FLUSH);
    return error ? error : parts->disk->sync(path);
}

std::string InterceptedDisk::databaseLayer() const {
    return parts->name;
}

std::optional<Disk::FileState> InterceptedDisk::find(const std::string& path) const {
    return parts->disk->find(path);
}

std::error_code InterceptedDisk::tryOpen(const std::string& file, bool writing) const {
    return parts->disk->tryOpen(file, writing);
}

std::error_code InterceptedDisk::list(const std::string& folder, std::vector<std::string>& names) const {
    return parts->disk->list(folder, names);
}

}  // namespace SettingsHandlerKit
