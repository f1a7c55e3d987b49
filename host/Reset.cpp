#include "Reset.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "storage/Database.h"
#include "storage/DatabaseLock.h"
#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHost {

namespace {

bool startsLikeDatabase(const std::string& file) {
    const std::string head = "SQLite format 3";
    std::string found(head.size(), '\0');
    std::ifstream(file, std::ios::binary).read(found.data(), static_cast<std::streamsize>(found.size()));
    return found == head;
}

/// A damaged database and one of a newer version may be removed. A file that never was a database was named by mistake.
void refuseIfInUseOrForeign(const std::string& file) {
    try {
        const SettingsHandlerKit::Database opened(file);
    } catch (const SettingsHandlerKit::DamagedDatabase&) {
        if (!startsLikeDatabase(file) && SettingsHandlerKit::companionFiles(file).empty()) {
            throw SettingsHandlerKit::DatabaseError(file + " is not a database; it was left as it is");
        }
    } catch (const SettingsHandlerKit::NewerDatabase&) {
    }
}

/// The database comes last: while it exists its lock keeps other hosts from starting, and no backup is restored in its
/// place.
std::vector<std::string> filesToRemove(const std::string& database, const std::string& log) {
    std::vector<std::string> candidates;
    if (!log.empty()) {
        candidates = SettingsHandlerKit::LogFile::filesOf(std::filesystem::absolute(log).string());
        std::reverse(candidates.begin(), candidates.end());
    }
    if (std::filesystem::exists(std::filesystem::path(database).parent_path())) {
        for (const auto& file : SettingsHandlerKit::companionFiles(database)) {
            candidates.push_back(file);
        }
    }
    candidates.push_back(SettingsHandlerKit::logOutMarkerName(database));
    for (const auto& file : SettingsHandlerKit::databaseFiles(database)) {
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

bool askForConfirmation() {
    std::printf("Remove them? [y/N] ");
    std::fflush(stdout);
    std::string answer;
    for (int character = std::getchar(); character != EOF && character != '\n'; character = std::getchar()) {
        answer += static_cast<char>(character);
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace

int reset(const Options& options) {
    if (!options.resetConfirmed && ::isatty(STDIN_FILENO) == 0) {
        throw CommandLineEnd(2, "--reset asks for confirmation, but standard input is not a terminal: add --yes");
    }
    const std::string database = std::filesystem::absolute(options.storageFile).string();
    SettingsHandlerKit::Descriptor lock;
    if (SettingsHandlerKit::holdsData(database)) {
        refuseIfInUseOrForeign(database);
        lock = SettingsHandlerKit::lockForRemoval(database);
    }
    const auto files = filesToRemove(database, options.log.file);
    if (files.empty()) {
        std::printf("Nothing to remove.\n");
        return 0;
    }
    std::printf("%s\n", options.resetConfirmed ? "Removing:" : "These files will be removed:");
    for (const auto& file : files) {
        std::printf("  %s\n", file.c_str());
    }
    if (!options.resetConfirmed && !askForConfirmation()) {
        std::fprintf(stderr, "settings-host: nothing was removed\n");
        return 1;
    }
    for (const auto& file : files) {
        SettingsHandlerKit::removeFile(file);
    }
    return 0;
}

}  // namespace SettingsHost
