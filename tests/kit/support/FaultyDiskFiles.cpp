#include <cerrno>
#include <cstdarg>
#include <filesystem>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/types.h>

#include "kit/support/FaultyDisk.h"

// The linker (--wrap) redirects calls of the C library to these.
extern "C" {
int __real_fsync(int descriptor);
int __real_open(const char* path, int flags, ...);
int __real_rename(const char* from, const char* to);
int __real_unlink(const char* path);
}

namespace SettingsHostTests {

struct FileCalls {
    /// The disk that watches `path`, if there is one.
    static FaultyDisk* diskOf(const std::string& path) {
        sqlite3_vfs* const layer = sqlite3_vfs_find("faulty-disk");
        auto* const disk = layer == nullptr ? nullptr : static_cast<FaultyDisk*>(layer->pAppData);
        const bool concerned = disk != nullptr && (disk->watches(path) || path == disk->watchedFolder);
        return concerned ? disk : nullptr;
    }

    static bool fails(FaultyDisk& disk, bool needsRoom = false) {
        if (!disk.fails(needsRoom)) {
            return false;
        }
        errno = disk.faultMode == FaultyDisk::Mode::FULL ? ENOSPC : EIO;
        return true;
    }

    static int fsync(int descriptor) {
        std::error_code error;
        const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error).string();
        FaultyDisk* const disk = diskOf(path);
        if (disk == nullptr) {
            return __real_fsync(descriptor);
        }
        if (fails(*disk)) {
            return -1;
        }
        disk->sync(path);
        return 0;
    }

    static int open(const char* path, int flags, mode_t mode) {
        FaultyDisk* const disk = (flags & O_CREAT) != 0 ? diskOf(path) : nullptr;
        if (disk != nullptr && !std::filesystem::exists(path)) {
            if (fails(*disk, true)) {
                return -1;
            }
            disk->create(path);
        }
        return __real_open(path, flags, mode);
    }

    static int rename(const char* from, const char* to) {
        if (FaultyDisk* const disk = diskOf(from)) {
            if (fails(*disk)) {
                return -1;
            }
            disk->rename(from, to);
        }
        return __real_rename(from, to);
    }

    static int unlink(const char* path) {
        if (FaultyDisk* const disk = diskOf(path)) {
            if (fails(*disk)) {
                return -1;
            }
            if (std::filesystem::is_regular_file(path)) {
                disk->remove(path);
            }
        }
        return __real_unlink(path);
    }
};

}  // namespace SettingsHostTests

extern "C" {

int __wrap_fsync(int descriptor) {
    return SettingsHostTests::FileCalls::fsync(descriptor);
}

int __wrap_open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return SettingsHostTests::FileCalls::open(path, flags, mode);
}

int __wrap_rename(const char* from, const char* to) {
    return SettingsHostTests::FileCalls::rename(from, to);
}

int __wrap_unlink(const char* path) {
    return SettingsHostTests::FileCalls::unlink(path);
}
}
