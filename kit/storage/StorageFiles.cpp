#include "SettingsHandlerKit/StorageFiles.h"

#include <filesystem>
#include <fstream>

#include "storage/Database.h"
#include "storage/DatabaseLock.h"
#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHandlerKit {

namespace {

bool startsLikeDatabase(const std::string& file) {
    const std::string head = "SQLite format 3";
    std::string found(head.size(), '\0');
    std::ifstream(file, std::ios::binary).read(found.data(), static_cast<std::streamsize>(found.size()));
    return found == head;
}

/// A damaged database and one of a newer version may be removed. A file that never was a database was named by mistake.
void refuseIfInUseOrForeign(const std::string& file, const std::shared_ptr<Disk>& disk) {
    try {
        const Database opened(file, disk);
    } catch (const DamagedDatabase&) {
        if (!startsLikeDatabase(file) && companionFiles(*disk, file).empty()) {
            throw DatabaseError(file + " is not a database; left unchanged");
        }
    } catch (const NewerDatabase&) {
    }
}

/// The database comes last: while it exists its lock keeps other processes from starting, and no backup is restored in
/// its place.
std::vector<std::string> filesOf(const Disk& disk, const std::string& database) {
    std::vector<std::string> candidates;
    if (std::filesystem::exists(std::filesystem::path(database).parent_path())) {
        candidates = companionFiles(disk, database);
    }
    candidates.push_back(logOutMarkerName(database));
    for (const auto& file : databaseFiles(database)) {
        candidates.push_back(file);
    }
    std::vector<std::string> files;
    for (const auto& candidate : candidates) {
        if (std::filesystem::is_regular_file(std::filesystem::symlink_status(candidate))) {
            files.push_back(candidate);
        }
    }
    return files;
}

}  // namespace

struct StorageFiles::Parts {
    std::shared_ptr<Disk> disk;
    Descriptor lock;
    std::vector<std::string> files;
};

StorageFiles::StorageFiles(const std::string& path, std::shared_ptr<Disk> disk) : parts(std::make_unique<Parts>()) {
    const std::string database = std::filesystem::absolute(path).string();
    parts->disk = std::move(disk);
    if (holdsData(*parts->disk, database)) {
        refuseIfInUseOrForeign(database, parts->disk);
        parts->lock = lockForRemoval(database);
    }
    parts->files = filesOf(*parts->disk, database);
}

StorageFiles::~StorageFiles() = default;

const std::vector<std::string>& StorageFiles::files() const {
    return parts->files;
}

void StorageFiles::remove() {
    for (const auto& file : parts->files) {
        removeFile(*parts->disk, file);
    }
}

}  // namespace SettingsHandlerKit
