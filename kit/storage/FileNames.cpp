#include "storage/FileNames.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "storage/Database.h"

namespace SettingsHandlerKit {

namespace {

constexpr const char* backupSuffix = ".backup";
constexpr const char* damagedSuffix = ".damaged";
constexpr const char* restoreSuffix = ".restoring";

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view withoutSqliteSuffix(std::string_view name) {
    // Other programs that read the file leave a "-shm".
    for (const std::string_view suffix :
         {std::string_view(walSuffix), std::string_view(journalSuffix), std::string_view("-shm")}) {
        if (name.size() > suffix.size() && name.substr(name.size() - suffix.size()) == suffix) {
            return name.substr(0, name.size() - suffix.size());
        }
    }
    return name;
}

/// `suffix` follows the name of the database. Other suffixes are files of others.
bool isCompanion(std::string_view suffix) {
    suffix = withoutSqliteSuffix(suffix);
    if (suffix == unfinishedBackupName("") || suffix == restoreSuffix || suffix == damagedSuffix) {
        return true;
    }
    for (const std::string numbered : {backupSuffix, damagedSuffix}) {
        if (startsWith(suffix, numbered + ".") && isNumber(suffix.substr(numbered.size() + 1))) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string backupName(const std::string& database, int generation) {
    return database + backupSuffix + "." + std::to_string(generation);
}

std::string unfinishedBackupName(const std::string& database) {
    return database + backupSuffix + ".new";
}

std::string unfinishedRestoreName(const std::string& database) {
    return database + restoreSuffix;
}

std::string damagedName(const std::string& database, int number) {
    return database + damagedSuffix + (number == 1 ? "" : "." + std::to_string(number));
}

std::string logOutMarkerName(const std::string& database) {
    return database + ".log-out";
}

std::vector<std::string> databaseFiles(const std::string& database) {
    return {database + walSuffix, database + journalSuffix, database};
}

std::vector<std::string> companionFiles(const Disk& disk, const std::string& database) {
    const std::filesystem::path path(database);
    const std::string name = path.filename().string();
    std::vector<std::string> found;
    if (const std::error_code error = disk.list(path.parent_path().string(), found)) {
        throw DatabaseError("cannot read the folder " + path.parent_path().string() + ": " + error.message());
    }
    std::vector<std::string> files;
    for (const auto& each : found) {
        if (startsWith(each, name) && isCompanion(std::string_view(each).substr(name.size()))) {
            files.push_back((path.parent_path() / each).string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace SettingsHandlerKit
