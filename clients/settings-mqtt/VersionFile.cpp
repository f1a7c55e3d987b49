#include "VersionFile.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace SettingsMqtt {

namespace {

/// The first line; then a line for each key: key, version, fingerprint.
constexpr const char* title = "settings-mqtt 1";

/// Until values are stored; each time takes two flushes of the disk.
constexpr std::chrono::seconds savingPause{10};

/// Sets `errno` when it returns false.
bool isFlushed(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool isDone = ::fsync(descriptor) == 0;
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return isDone;
}

}  // namespace

VersionFile::VersionFile(std::string stateFolder, const SettingsBridge::Log& programLog)
    : folder(std::move(stateFolder)),
      path(folder + "/versions"),
      log(programLog),
      kept(std::make_shared<Versions>(load())) {
    if (std::filesystem::create_directories(folder)) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    }
}

SettingsBridge::Source::Wanted VersionFile::wanted() {
    const auto unsaved = kept->unsaved();
    if (unsaved == Versions::Unsaved::VERSIONS) {
        process(0);
    } else if (unsaved == Versions::Unsaved::VALUES && !due) {
        due = std::chrono::steady_clock::now() + savingPause;
    }
    return {-1, 0, due};
}

void VersionFile::process(short /*events*/) {
    due.reset();
    if (kept->unsaved() != Versions::Unsaved::NOTHING) {
        store(kept->save());
    }
}

VersionRecords VersionFile::load() const {
    std::ifstream file(path);
    std::string line;
    VersionRecords records;
    bool isWhole = !std::getline(file, line) || line == title;
    while (isWhole && std::getline(file, line)) {
        std::istringstream words(line);
        std::string key;
        isWhole = words >> key && words >> records[key].version >> records[key].agreed;
    }
    if (!isWhole) {
        log(3, path + " is damaged: desired values are applied as on a new device");
        records.clear();
    }
    return records;
}

void VersionFile::store(const VersionRecords& records) const {
    const std::string replacement = path + ".new";
    std::ofstream file(replacement);
    file << title << '\n';
    for (const auto& [key, record] : records) {
        file << key << ' ' << record.version << ' ' << record.agreed << '\n';
    }
    file.close();
    if (!file || !isFlushed(replacement) || std::rename(replacement.c_str(), path.c_str()) != 0 || !isFlushed(folder)) {
        log(3, "cannot store the applied versions in " + path + ": " + std::generic_category().message(errno));
    }
}

}  // namespace SettingsMqtt
