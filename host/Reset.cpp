#include "Reset.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/StorageFiles.h"

namespace SettingsHost {

namespace {

std::vector<std::string> logFilesOf(const Options& options) {
    std::vector<std::string> files;
    if (options.log.file.empty()) {
        return files;
    }
    for (const auto& file :
         SettingsHandlerKit::LogFile::filesOf(std::filesystem::absolute(options.log.file).string())) {
        if (std::filesystem::is_regular_file(std::filesystem::symlink_status(file))) {
            files.push_back(file);
        }
    }
    std::reverse(files.begin(), files.end());
    return files;
}

/// A reset that was reported as done survives a loss of power.
void removeDurably(const std::vector<std::string>& files) {
    SettingsHandlerKit::Disk disk;
    for (const auto& file : files) {
        std::error_code error = disk.removeFile(file);
        if (!error) {
            error = disk.sync(std::filesystem::path(file).parent_path().string());
        }
        if (error) {
            throw std::runtime_error("cannot remove " + file + ": " + error.message());
        }
    }
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
    SettingsHandlerKit::StorageFiles storage(options.storageFile);
    const auto logFiles = logFilesOf(options);
    auto files = logFiles;
    files.insert(files.end(), storage.files().begin(), storage.files().end());
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
    removeDurably(logFiles);
    storage.remove();
    return 0;
}

}  // namespace SettingsHost
