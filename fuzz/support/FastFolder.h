#pragma once

#include <filesystem>
#include <string>

namespace SettingsHandlerFuzz {

/// A temporary folder, in memory if the system supports it. Removed at the end unless the process is killed.
class FastFolder {
public:
    FastFolder();
    ~FastFolder();
    FastFolder(const FastFolder&) = delete;
    FastFolder& operator=(const FastFolder&) = delete;

    /// Removes everything in it.
    void clear();
    std::string operator/(const std::string& name) const { return (folder / name).string(); }
    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

}  // namespace SettingsHandlerFuzz
