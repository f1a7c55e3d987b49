#include "VersionFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SettingsMqtt {

namespace {

/// The first line; then a line for each key: key, version, fingerprint, whether it was changed.
constexpr const char* title = "settings-mqtt 1";

void check(bool isDone, const std::string& what) {
    if (!isDone) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

/// Closes the descriptor also when something fails.
class Descriptor {
public:
    Descriptor(const std::string& path, int flags) : number(::open(path.c_str(), flags | O_CLOEXEC, 0600)) {
        check(number >= 0, "cannot open " + path);
    }
    ~Descriptor() { ::close(number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

}  // namespace

VersionFile::VersionFile(const std::string& folder, Log logger) : path(folder + "/versions"), log(std::move(logger)) {
    const auto parent = std::filesystem::path(path).parent_path().parent_path();
    std::error_code ignored;
    std::filesystem::create_directories(parent, ignored);
    check(::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST, "cannot create " + folder);
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
    try {
        write(records);
    } catch (const std::system_error& error) {
        log(3, std::string("applied versions are not stored: ") + error.what());
    }
}

void VersionFile::write(const VersionRecords& records) const {
    std::ostringstream content;
    content << title << '\n';
    for (const auto& [key, record] : records) {
        content << key << ' ' << record.version << ' ' << record.fingerprint << ' ' << record.changedAway << '\n';
    }
    const std::string text = content.str();
    const std::string replacement = path + ".new";
    {
        const Descriptor file(replacement, O_WRONLY | O_CREAT | O_TRUNC);
        check(::write(file.number, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
              "cannot write " + replacement);
        check(::fsync(file.number) == 0, "fsync failed for " + replacement);
    }
    check(std::rename(replacement.c_str(), path.c_str()) == 0, "cannot replace " + path);
    const Descriptor folder(std::filesystem::path(path).parent_path(), O_RDONLY | O_DIRECTORY);
    check(::fsync(folder.number) == 0, "fsync failed for the folder of " + path);
}

}  // namespace SettingsMqtt
