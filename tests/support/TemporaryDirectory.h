#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace TestSupport {

/// A folder in memory, if there is one: for tests that need not wait for a disk.
inline std::filesystem::path memoryFolder() {
    const std::filesystem::path shared = "/dev/shm";
    return std::filesystem::is_directory(shared) ? shared : std::filesystem::temp_directory_path();
}

/// A new folder, mode 0700, that is removed with its content.
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string name = (parent / "settings-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot create a temporary folder");
        }
        folder = name;
    }

    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return folder; }
    /// A path inside the folder.
    std::string operator/(const std::string& name) const { return (folder / name).string(); }

private:
    std::filesystem::path folder;
};

}  // namespace TestSupport
