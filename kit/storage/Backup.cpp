#include "storage/Backup.h"

#include <sqlite3.h>

#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHandlerKit {

namespace {

[[noreturn]] void fail(sqlite3* connection) {
    throw DatabaseError(sqlite3_errmsg(connection));
}

}  // namespace

void Backup::Finisher::operator()(sqlite3_backup* begun) const {
    sqlite3_backup_finish(begun);
}

Backup::Backup(Database& source) : database(source), unfinished(unfinishedBackupName(source.file())) {
    Disk& disk = database.disk();
    removeFile(disk, unfinished);
    removeFile(disk, unfinished + walSuffix);
    createFile(disk, unfinished);
    const std::string layer = disk.databaseLayer();
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(unfinished.c_str(), &opened, SQLITE_OPEN_READWRITE, layer.empty() ? nullptr : layer.c_str());
    copy.reset(opened);
    // An unfinished copy is never read, so it needs no journal on the disk.
    if (result != SQLITE_OK || sqlite3_exec(opened, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=MEMORY",
                                            nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(opened);
    }
    copying.reset(sqlite3_backup_init(opened, "main", database.handle(), "main"));
    if (!copying) {
        fail(opened);
    }
}

Backup::~Backup() {
    copying.reset();
    copy.reset();
    database.disk().removeFile(unfinished);
}

bool Backup::step(int pages) {
    const int result = sqlite3_backup_step(copying.get(), pages);
    if (result == SQLITE_OK) {
        return true;
    }
    if (result != SQLITE_DONE) {
        throw DatabaseError(sqlite3_errstr(result));
    }
    copying.reset();
    check();
    copy.reset();
    rotate();
    return false;
}

/// A damaged copy must not replace a good backup.
void Backup::check() {
    std::string verdict;
    const auto read = [](void* out, int, char** columns, char**) {
        *static_cast<std::string*>(out) = columns[0];
        return 0;
    };
    if (sqlite3_exec(copy.get(), "PRAGMA quick_check(1)", read, &verdict, nullptr) != SQLITE_OK) {
        fail(copy.get());
    }
    if (verdict != "ok") {
        throw DatabaseError("the copy is damaged: " + verdict);
    }
}

void Backup::rotate() {
    const std::string newest = backupName(database.file(), 1);
    if (holdsData(database.disk(), newest)) {
        moveFile(database.disk(), newest, backupName(database.file(), 2));
    }
    moveFile(database.disk(), unfinished, newest);
}

void backUp(Database& database) {
    constexpr int pages = 1000;
    Backup backup(database);
    while (backup.step(pages)) {
    }
}

bool isBackupDue(const Disk& disk, const std::string& databaseFile, std::chrono::seconds maximumAge) {
    const auto backup = disk.find(backupName(databaseFile, 1));
    if (!backup) {
        return true;
    }
    const auto age = std::chrono::system_clock::now() - backup->changed;
    return age > maximumAge || age < std::chrono::seconds(0);
}

}  // namespace SettingsHandlerKit
