#include "support/FastFolder.h"

#include <cstdlib>

#include <unistd.h>

#include "support/Check.h"

namespace SettingsHandlerFuzz {

FastFolder::FastFolder() {
    const char* const inMemory = "/dev/shm";
    const auto parent =
        ::access(inMemory, W_OK) == 0 ? std::filesystem::path(inMemory) : std::filesystem::temp_directory_path();
    std::string name = (parent / "settings-fuzz-XXXXXX").string();
    check(::mkdtemp(name.data()) != nullptr, "a temporary folder can be made");
    folder = name;
}

FastFolder::~FastFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void FastFolder::clear() {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::filesystem::remove_all(entry.path());
    }
}

}  // namespace SettingsHandlerFuzz
