#include "storage/Files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/Descriptor.h"
#include "storage/Database.h"

namespace SettingsHandlerKit {

namespace {

constexpr mode_t ownerOnly = 0600;

[[noreturn]] void fail(const std::string& what, int reason = errno) {
    throw DatabaseError(what + ": " + std::strerror(reason));
}

Descriptor openFile(const std::string& file, int flags) {
    return Descriptor(::open(file.c_str(), flags | O_CLOEXEC, ownerOnly));
}

bool canOpen(const std::string& file, int flags) {
    return openFile(file, flags).get() >= 0;
}

void sync(const std::string& path) {
    const Descriptor opened = openFile(path, O_RDONLY);
    if (opened.get() < 0 || ::fsync(opened.get()) != 0) {
        fail("fsync failed for " + path);
    }
}

/// The name of a file is stored in its folder, which is synced like a file.
void syncFolderOf(const std::string& path) {
    sync(std::filesystem::path(path).parent_path().string());
}

}  // namespace

void createFolders(const std::string& folder) {
    std::error_code unused;
    if (folder.empty() || std::filesystem::exists(folder, unused)) {
        return;
    }
    createFolders(std::filesystem::path(folder).parent_path().string());
    if (::mkdir(folder.c_str(), 0700) == 0) {
        syncFolderOf(folder);
    } else if (errno != EEXIST) {
        fail("cannot create the folder " + folder);
    }
}

FileAccess createFile(const std::string& file) {
    createFolders(std::filesystem::path(file).parent_path().string());
    if (canOpen(file, O_RDWR)) {
        return FileAccess::WRITABLE;
    }
    if (errno == EROFS && canOpen(file, O_RDONLY)) {
        return FileAccess::READ_ONLY;
    }
    if (errno != ENOENT || !canOpen(file, O_RDWR | O_CREAT)) {
        fail("cannot open " + file);
    }
    syncFolderOf(file);
    return FileAccess::WRITABLE;
}

bool holdsData(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 0;
}

void moveFile(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        fail("cannot rename " + from + " to " + to);
    }
    syncFolderOf(to);
}

void removeFile(const std::string& file) {
    if (::unlink(file.c_str()) == 0) {
        syncFolderOf(file);
    } else if (errno != ENOENT) {
        fail("cannot remove " + file);
    }
}

void copyFile(const std::string& from, const std::string& to) {
    removeFile(to);
    std::error_code error;
    if (!canOpen(to, O_RDWR | O_CREAT | O_EXCL)) {
        fail("cannot create " + to);
    }
    if (!std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error)) {
        fail("cannot copy " + from + " to " + to, error.value());
    }
    sync(to);
    syncFolderOf(to);
}

}  // namespace SettingsHandlerKit
