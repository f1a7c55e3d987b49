#include "VersionFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SettingsMqtt {

namespace {

/// The first line; then a line for each key: key, version, fingerprint, whether it was changed.
constexpr const char* title = "settings-mqtt 1";

bool isFlushed(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isDone = descriptor >= 0 && ::fsync(descriptor) == 0;
    ::close(descriptor);
    return isDone;
}

}  // namespace

VersionFile::VersionFile(std::string stateFolder, Log logger)
    : folder(std::move(stateFolder)), path(folder + "/versions"), log(std::move(logger)) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path().parent_path(), ignored);
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw std::system_error(errno, std::generic_category(), "cannot create " + folder);
    }
}

VersionRecords VersionFile::load() {
    std::ifstream file(path);
    std::string line;
    VersionRecords records;
    if (!std::getline(file, line)) {
        return records;
    }
    bool isWhole = line == title;
    while (isWhole && std::getline(file, line)) {
        std::istringstream words(line);
        std::string key;
        VersionRecord record;
        isWhole = static_cast<bool>(words >> key >> record.version >> record.fingerprint >> record.changedAway);
        records[key] = record;
    }
    if (!isWhole) {
        log(3, path + " is damaged: desired values are applied as on a new device");
        return {};
    }
    return records;
}

void VersionFile::store(const VersionRecords& records) {
    const std::string replacement = path + ".new";
    std::ofstream file(replacement);
    file << title << '\n';
    for (const auto& [key, record] : records) {
        file << key << ' ' << record.version << ' ' << record.fingerprint << ' ' << record.changedAway << '\n';
    }
    file.close();
    if (!file || !isFlushed(replacement) || std::rename(replacement.c_str(), path.c_str()) != 0 || !isFlushed(folder)) {
        log(3, "applied versions are not stored in " + path + ": " + std::generic_category().message(errno));
    }
}

}  // namespace SettingsMqtt
