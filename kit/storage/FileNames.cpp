#include "storage/FileNames.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "storage/Database.h"

namespace SettingsHost {

namespace {

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string_view withoutCompanion(std::string_view name) {
    // The last one is left by other programs that looked into the file.
    for (const std::string_view companion : {companions[0], companions[1], "-shm"}) {
        if (name.size() > companion.size() && name.substr(name.size() - companion.size()) == companion) {
            return name.substr(0, name.size() - companion.size());
        }
    }
    return name;
}

/// `ending` follows the name of the database. Names of other files that begin like the database are not the storage's.
bool isStorages(std::string_view ending) {
    ending = withoutCompanion(ending);
    for (const std::string_view name : {".backup.new", ".restoring", ".damaged"}) {
        if (ending == name) {
            return true;
        }
    }
    for (const std::string_view numbered : {".backup.", ".damaged."}) {
        const auto number = startsWith(ending, numbered) ? ending.substr(numbered.size()) : "";
        if (!number.empty() && number.find_first_not_of("0123456789") == std::string_view::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::string> companionFiles(const std::string& databaseFile) {
    const std::filesystem::path database(databaseFile);
    const std::string name = database.filename().string();
    std::vector<std::string> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(database.parent_path(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string found = entry->path().filename().string();
        if (startsWith(found, name) && isStorages(std::string_view(found).substr(name.size()))) {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw DatabaseError("cannot look into " + database.parent_path().string() + ": " + error.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace SettingsHost
