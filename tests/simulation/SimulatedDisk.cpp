#include "simulation/SimulatedDisk.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include <sqlite3.h>

namespace SettingsSimulation {

namespace {

std::string folderOf(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == 0 ? "/" : path.substr(0, end);
}

std::error_code errorOf(std::errc error) {
    return std::make_error_code(error);
}

}  // namespace

struct SimulatedDisk::Change {
    bool isTruncation;
    std::size_t offset;
    std::string bytes;

    void apply(std::string& content) const {
        if (isTruncation) {
            content.resize(std::min(content.size(), offset));
            return;
        }
        content.resize(std::max(content.size(), offset + bytes.size()));
        std::memcpy(content.data() + offset, bytes.data(), bytes.size());
    }
};

/// A file or folder, whatever its name.
struct SimulatedDisk::File {
    bool isFolder = false;
    /// In the system's cache.
    std::string content;
    /// On the disk, and the changes that are not there yet.
    std::string kept;
    std::vector<Change> pending;
    std::chrono::system_clock::time_point changed = std::chrono::system_clock::now();

    void change(Change change) {
        change.apply(content);
        pending.push_back(std::move(change));
        changed = std::chrono::system_clock::now();
    }

    void sync() {
        for (const auto& change : pending) {
            change.apply(kept);
        }
        pending.clear();
    }

    /// All, nothing or some of the changes are kept, in any order, and a part of one.
    void losePower(Choices& choices) {
        std::vector<Change> left;
        switch (pending.empty() ? 0 : choices.pick(4, "what a power cut leaves of a file's changes")) {
            case 0:
                left = std::move(pending);
                break;
            case 1:
                break;
            default:
                for (auto& change : pending) {
                    if (choices.pick(2, "does a change survive") == 0) {
                        left.push_back(std::move(change));
                    }
                }
                reorderAndTear(left, choices);
        }
        pending = std::move(left);
        sync();
        content = kept;
    }

    static void reorderAndTear(std::vector<Change>& changes, Choices& choices) {
        if (changes.empty()) {
            return;
        }
        if (choices.pick(2, "are changes written in another order") == 1) {
            for (std::size_t place = changes.size() - 1; place > 0; --place) {
                std::swap(changes[place], changes[choices.pick(place + 1, "which change comes here")]);
            }
        }
        if (choices.pick(2, "is a change torn") == 1) {
            // Disks write whole sectors; flash may stop anywhere.
            constexpr std::size_t sector = 512;
            const std::size_t unit = choices.pick(3, "does it end at a sector") != 2 ? sector : 1;
            std::string& bytes = changes[choices.pick(changes.size(), "which change is torn")].bytes;
            bytes.resize(choices.pick(bytes.size() / unit + 1, "how much of it is left") * unit);
        }
    }
};

/// A name that was given, taken away, or both.
struct SimulatedDisk::NameChange {
    std::string from;
    std::string to;
    std::shared_ptr<File> file;

    bool isIn(const std::string& folder) const { return folderOf(to.empty() ? from : to) == folder; }
};

/// The functions that SQLite calls.
struct DiskLayer {
    using File = SimulatedDisk::File;

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
            disk.keepNames(folderOf(name));
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

SimulatedDisk::SimulatedDisk(Choices& allChoices, Sleep letTimePass)
    : choices(allChoices),
      sleep(std::move(letTimePass)),
      layer(std::make_unique<sqlite3_vfs>()),
      former(sqlite3_vfs_find(nullptr)) {
    // Time is that of the process.
    *layer = *former;
    layer->szOsFile = static_cast<int>(sizeof(DiskLayer::OpenFile));
    layer->zName = "simulated-disk";
    layer->pNext = nullptr;
    layer->pAppData = this;
    layer->xOpen = DiskLayer::openFile;
    layer->xDelete = DiskLayer::removeFile;
    layer->xAccess = DiskLayer::access;
    layer->xFullPathname = DiskLayer::fullPathName;
    layer->xRandomness = DiskLayer::randomness;
    layer->xSleep = DiskLayer::sleep;
    sqlite3_vfs_register(layer.get(), 1);
    // Its random numbers begin anew, from this layer.
    sqlite3_randomness(0, nullptr);
    const auto root = std::make_shared<File>();
    root->isFolder = true;
    names["/"] = root;
    keptNames = names;
}

SimulatedDisk::~SimulatedDisk() {
    sqlite3_vfs_register(former, 1);
    sqlite3_vfs_unregister(layer.get());
    sqlite3_randomness(0, nullptr);
}

std::string SimulatedDisk::databaseLayer() const {
    return layer->zName;
}

bool SimulatedDisk::fails() {
    if (isLookedAt) {
        return false;
    }
    ++callCount;
    if (isCutOff) {
        return true;
    }
    if (callCount == cutOffCall) {
        isCutOff = true;
        std::exchange(cutOffAction, nullptr)();
        return true;
    }
    const bool failed = callCount >= firstFailure && callCount <= lastFailure;
    failureCount += failed ? 1 : 0;
    return failed;
}

std::error_code SimulatedDisk::failure() const {
    return errorOf(std::errc::io_error);
}

void SimulatedDisk::failCalls(long first, long count) {
    firstFailure = callCount + first;
    lastFailure = firstFailure + count - 1;
}

void SimulatedDisk::cutOffAt(long number, std::function<void()> action) {
    cutOffCall = callCount + number;
    cutOffAction = std::move(action);
}

void SimulatedDisk::work() {
    isCutOff = false;
    cutOffCall = 0;
    firstFailure = 0;
    lastFailure = 0;
}

SimulatedDisk::File* SimulatedDisk::fileAt(const std::string& path) const {
    const auto found = names.find(path);
    return found == names.end() ? nullptr : found->second.get();
}

std::shared_ptr<SimulatedDisk::File> SimulatedDisk::create(const std::string& path) {
    auto made = std::make_shared<File>();
    names[path] = made;
    pendingNames.push_back({"", path, made});
    return made;
}

void SimulatedDisk::remove(const std::string& path) {
    names.erase(path);
    pendingNames.push_back({path, "", nullptr});
}

void SimulatedDisk::keep(const NameChange& change) {
    keptNames.erase(change.from);
    if (change.file) {
        keptNames[change.to] = change.file;
    }
}

void SimulatedDisk::keepNames(const std::string& folder) {
    const auto others = std::stable_partition(pendingNames.begin(), pendingNames.end(),
                                              [&](const auto& change) { return change.isIn(folder); });
    std::for_each(pendingNames.begin(), others, [this](const auto& change) { keep(change); });
    pendingNames.erase(pendingNames.begin(), others);
}

/// To sync a new file takes its name to the disk, and the changes of names before that.
void SimulatedDisk::keepName(const File& file) {
    const auto made = std::find_if(pendingNames.begin(), pendingNames.end(),
                                   [&](const auto& change) { return change.file.get() == &file; });
    if (made != pendingNames.end()) {
        std::for_each(pendingNames.begin(), made + 1, [this](const auto& change) { keep(change); });
        pendingNames.erase(pendingNames.begin(), made + 1);
    }
}

std::error_code SimulatedDisk::createFolder(const std::string& folder) {
    if (fails()) {
        return failure();
    }
    if (fileAt(folder) != nullptr) {
        return errorOf(std::errc::file_exists);
    }
    create(folder)->isFolder = true;
    return {};
}

std::error_code SimulatedDisk::createFile(const std::string& file) {
    if (fails()) {
        return failure();
    }
    if (fileAt(file) == nullptr) {
        create(file);
    }
    return {};
}

std::error_code SimulatedDisk::copyFile(const std::string& from, const std::string& to) {
    if (fails()) {
        return failure();
    }
    const File* const source = fileAt(from);
    if (source == nullptr || fileAt(to) != nullptr) {
        return errorOf(source == nullptr ? std::errc::no_such_file_or_directory : std::errc::file_exists);
    }
    const auto copy = create(to);
    if (fails()) {
        return failure();
    }
    copy->change({false, 0, source->content});
    return {};
}

std::error_code SimulatedDisk::renameFile(const std::string& from, const std::string& to) {
    if (fails()) {
        return failure();
    }
    const auto source = names.find(from);
    if (source == names.end()) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    const auto file = source->second;
    names.erase(source);
    names[to] = file;
    pendingNames.push_back({from, to, file});
    return {};
}

std::error_code SimulatedDisk::removeFile(const std::string& file) {
    if (fails()) {
        return failure();
    }
    if (fileAt(file) == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    remove(file);
    return {};
}

std::error_code SimulatedDisk::sync(const std::string& path) {
    if (fails()) {
        return failure();
    }
    File* const file = fileAt(path);
    if (file == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    if (file->isFolder) {
        keepNames(path);
    } else {
        file->sync();
        keepName(*file);
    }
    return {};
}

std::optional<SettingsHandlerKit::Disk::FileState> SimulatedDisk::find(const std::string& path) const {
    const File* const file = fileAt(path);
    return file == nullptr ? std::nullopt : std::optional(FileState{file->content.size(), file->changed});
}

std::error_code SimulatedDisk::tryOpen(const std::string& file, bool /*writing*/) const {
    return fileAt(file) == nullptr ? errorOf(std::errc::no_such_file_or_directory) : std::error_code();
}

std::error_code SimulatedDisk::list(const std::string& folder, std::vector<std::string>& found) const {
    if (fileAt(folder) == nullptr) {
        return errorOf(std::errc::no_such_file_or_directory);
    }
    for (const auto& entry : names) {
        if (entry.first != "/" && folderOf(entry.first) == folder) {
            found.push_back(entry.first.substr(entry.first.rfind('/') + 1));
        }
    }
    return {};
}

void SimulatedDisk::losePower() {
    const auto changes = std::exchange(pendingNames, {});
    const std::size_t left = changes.empty() ? 0 : choices.pick(3, "what a power cut leaves of the names' changes");
    for (const auto& change : changes) {
        if (left == 0 || (left == 2 && choices.pick(2, "does a change of a name survive") == 0)) {
            keep(change);
        }
    }
    names = keptNames;
    for (const auto& entry : names) {
        entry.second->losePower(choices);
    }
}

std::map<std::string, std::string> SimulatedDisk::rows(const std::string& file, const std::string& table) {
    std::map<std::string, std::string> found;
    const auto present = names;
    const auto pending = pendingNames;
    const std::string copy = "/copy";
    for (const std::string suffix : {"", "-wal", "-journal"}) {
        if (const File* const original = fileAt(file + suffix)) {
            const auto copied = std::make_shared<File>();
            copied->content = original->content;
            names[copy + suffix] = copied;
        }
    }
    isLookedAt = true;
    sqlite3* database = nullptr;
    sqlite3_open_v2(copy.c_str(), &database, SQLITE_OPEN_READWRITE, layer->zName);
    const std::string sql = "PRAGMA locking_mode=EXCLUSIVE; SELECT key, value FROM " + table;
    const auto take = [](void* rows, int columns, char** values, char**) {
        if (columns == 2) {
            (*static_cast<std::map<std::string, std::string>*>(rows))[values[0]] = values[1];
        }
        return 0;
    };
    sqlite3_exec(database, sql.c_str(), take, &found, nullptr);
    sqlite3_close(database);
    isLookedAt = false;
    names = present;
    pendingNames = pending;
    return found;
}

std::map<std::string, std::string> SimulatedDisk::contents() const {
    std::map<std::string, std::string> found;
    for (const auto& [path, file] : names) {
        if (!file->isFolder) {
            found[path] = file->content;
        }
    }
    return found;
}

}  // namespace SettingsSimulation
