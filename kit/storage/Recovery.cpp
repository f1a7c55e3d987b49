#include "storage/Recovery.h"

#include <filesystem>

#include "service/logging/HostLog.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/Files.h"
#include "storage/LogOut.h"

namespace SettingsHost {

namespace {

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

bool exists(const std::string& path) {
    std::error_code unused;
    return std::filesystem::exists(std::filesystem::symlink_status(path, unused));
}

bool isFree(const std::string& file) {
    for (const auto* companion : companions) {
        if (exists(file + companion)) {
            return false;
        }
    }
    return !exists(file);
}

/// The database and what is beside it, under the first free name.
/// Returns: that name, without the folder; empty when there was nothing to keep.
std::string setAside(const std::string& file) {
    std::string newFile = file + ".damaged";
    for (int number = 2; !isFree(newFile); ++number) {
        newFile = file + ".damaged." + std::to_string(number);
    }
    bool found = false;
    for (const std::string ending : {"", companions[0], companions[1]}) {
        if (exists(file + ending)) {
            moveFile(file + ending, newFile + ending);
            found = true;
        }
    }
    return found ? nameOf(newFile) : "";
}

/// Puts a copy of a backup at the place of the database, once the copy has proved to be in order.
bool restore(const std::string& backup, const std::string& file) {
    const std::string copy = file + ".restoring";
    try {
        for (const auto* companion : companions) {
            // Of an attempt that a loss of power cut short.
            removeFile(copy + companion);
        }
        copyFile(backup, copy);
        { const Database openedToCheck(copy); }
        moveFile(copy, file);
        return true;
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, "the backup " + nameOf(backup) + " cannot be used: " + error.what());
        removeFile(copy);
        return false;
    }
}

Recovery::Source restoreNewest(const std::string& file) {
    for (int generation = 1; generation <= Backup::generations; ++generation) {
        const std::string backup = Backup::nameOf(file, generation);
        if (holdsData(backup) && restore(backup, file)) {
            logHost(VessaLogger::ERROR,
                    "the database was restored from " + nameOf(backup) + "; changes made since that backup are lost");
            return Recovery::Source::BACKUP;
        }
    }
    logHost(VessaLogger::ERROR, "there is no backup to restore the database from; all settings have their defaults");
    return Recovery::Source::DEFAULTS;
}

/// A database that was never there leaves nothing behind.
bool leftTraces(const std::string& file) {
    return holdsData(Backup::nameOf(file, 1)) || holdsData(Backup::nameOf(file, 2)) || holdsData(file + "-wal");
}

/// What is left of a database that was lost during a log-out, and its backups, may hold what the log-out removed.
void beginAnewAfterLogOut(const std::string& file, Recovery& recovery) {
    for (const std::string ending : {companions[0], companions[1], ""}) {
        removeFile(file + ending);
    }
    logHost(VessaLogger::ERROR, "a log-out was under way, so no backup is restored; all settings have their defaults");
    recovery.source = Recovery::Source::DEFAULTS;
}

Database openOrRestore(const std::string& file, Recovery& recovery) {
    if (holdsData(file) || !leftTraces(file)) {
        try {
            return Database(file);
        } catch (const DamagedDatabase& damage) {
            logHost(VessaLogger::ERROR, damage.what());
        }
    } else {
        logHost(VessaLogger::ERROR, file + " is missing or empty, but there was one");
    }
    if (exists(logOutMarkerOf(file))) {
        beginAnewAfterLogOut(file, recovery);
        return Database(file);
    }
    recovery.setAside = setAside(file);
    if (!recovery.setAside.empty()) {
        logHost(VessaLogger::ERROR, "what was found was kept as " + recovery.setAside);
    }
    recovery.source = restoreNewest(file);
    return Database(file);
}

}  // namespace

Database openOrRecover(const std::string& path, Recovery& recovery) {
    Database database = openOrRestore(std::filesystem::absolute(path).string(), recovery);
    finishLogOut(database);
    return database;
}

}  // namespace SettingsHost
