#include "storage/Recovery.h"

#include <algorithm>
#include <filesystem>

#include "SettingsHandlerKit/Logging.h"
#include "storage/FileNames.h"
#include "storage/Files.h"
#include "storage/LogOut.h"

namespace SettingsHandlerKit {

namespace {

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

bool isFree(const Disk& disk, const std::string& name) {
    const auto files = databaseFiles(name);
    return std::none_of(files.begin(), files.end(), [&](const auto& file) { return disk.find(file).has_value(); });
}

/// Renames the database and SQLite's files beside it to the first free name.
/// Returns: that name, without the folder; empty when there was no file.
std::string setAside(Disk& disk, const std::string& file) {
    int number = 1;
    while (!isFree(disk, damagedName(file, number))) {
        ++number;
    }
    const std::string newFile = damagedName(file, number);
    bool found = false;
    // The database first: a write-ahead log without a database is set aside by the next start, too.
    for (const std::string suffix : {"", walSuffix, journalSuffix}) {
        if (disk.find(file + suffix)) {
            moveFile(disk, file + suffix, newFile + suffix);
            found = true;
        }
    }
    return found ? nameOf(newFile) : "";
}

/// Replaces the database with a copy of a backup, after the copy was opened and checked.
bool restore(const std::string& backup, const std::string& file, const std::shared_ptr<Disk>& disk) {
    const std::string copy = unfinishedRestoreName(file);
    try {
        // Left over from a restore that a loss of power interrupted.
        removeFile(*disk, copy + walSuffix);
        removeFile(*disk, copy + journalSuffix);
        copyFile(*disk, backup, copy);
        { const Database openedToCheck(copy, disk); }
        moveFile(*disk, copy, file);
        return true;
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, "cannot use the backup " + nameOf(backup) + ": " + error.what());
        removeFile(*disk, copy);
        return false;
    }
}

Recovery::Source restoreNewest(const std::string& file, const std::shared_ptr<Disk>& disk) {
    for (int generation = 1; generation <= backupGenerations; ++generation) {
        const std::string backup = backupName(file, generation);
        if (holdsData(*disk, backup) && restore(backup, file, disk)) {
            writeLog(VessaLogger::ERROR,
                     "the database was restored from " + nameOf(backup) + "; changes made since that backup are lost");
            return Recovery::Source::BACKUP;
        }
    }
    writeLog(VessaLogger::ERROR, "no usable backup; all settings have their defaults");
    return Recovery::Source::DEFAULTS;
}

/// Did a database exist before?
bool leftTraces(const Disk& disk, const std::string& file) {
    return holdsData(disk, backupName(file, 1)) || holdsData(disk, backupName(file, 2)) ||
           holdsData(disk, file + walSuffix);
}

/// A database that was lost during a log-out and its backups may hold values that the log-out removed.
void startEmptyAfterLogOut(Disk& disk, const std::string& file, Recovery& recovery) {
    for (const auto& name : databaseFiles(file)) {
        removeFile(disk, name);
    }
    writeLog(VessaLogger::ERROR,
             "a log-out was in progress, so no backup is restored; all settings have their defaults");
    recovery.source = Recovery::Source::DEFAULTS;
}

Database openOrRestore(const std::string& file, const std::shared_ptr<Disk>& disk, Recovery& recovery) {
    if (holdsData(*disk, file) || !leftTraces(*disk, file)) {
        try {
            return Database(file, disk);
        } catch (const DamagedDatabase& damage) {
            writeLog(VessaLogger::ERROR, damage.what());
        }
    } else {
        writeLog(VessaLogger::ERROR, file + " is missing or empty, although its backups or write-ahead log exist");
    }
    if (disk->find(logOutMarkerName(file))) {
        startEmptyAfterLogOut(*disk, file, recovery);
        return Database(file, disk);
    }
    recovery.setAside = setAside(*disk, file);
    if (!recovery.setAside.empty()) {
        writeLog(VessaLogger::ERROR, "the old files were kept as " + recovery.setAside);
    }
    recovery.source = restoreNewest(file, disk);
    return Database(file, disk);
}

}  // namespace

Database openOrRecover(const std::string& path, const std::shared_ptr<Disk>& disk, Recovery& recovery) {
    Database database = openOrRestore(std::filesystem::absolute(path).string(), disk, recovery);
    finishLogOut(database);
    return database;
}

}  // namespace SettingsHandlerKit
