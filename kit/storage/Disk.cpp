#include "SettingsHandlerKit/Disk.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

namespace {

constexpr mode_t ownerOnly = 0600;

std::error_code errorIf(bool failed) {
    return {failed ? errno : 0, std::generic_category()};
}

Descriptor openFile(const std::string& file, int flags) {
    return Descriptor(::open(file.c_str(), flags | O_CLOEXEC, ownerOnly));
}

}  // namespace

Disk::~Disk() = default;

std::error_code Disk::createFolder(const std::string& folder) {
    return errorIf(::mkdir(folder.c_str(), 0700) != 0);
}

std::error_code Disk::createFile(const std::string& file) {
    return errorIf(openFile(file, O_RDWR | O_CREAT).get() < 0);
}

std::error_code Disk::copyFile(const std::string& from, const std::string& to) {
    const Descriptor source = openFile(from, O_RDONLY);
    const Descriptor copy = source.get() < 0 ? Descriptor() : openFile(to, O_WRONLY | O_CREAT | O_EXCL);
    if (copy.get() < 0) {
        return errorIf(true);
    }
    constexpr std::size_t atOnce = std::size_t{1024} * 1024;
    ssize_t copied = 0;
    do {
        copied = ::sendfile(copy.get(), source.get(), nullptr, atOnce);
    } while (copied > 0);
    return errorIf(copied < 0);
}

std::error_code Disk::renameFile(const std::string& from, const std::string& to) {
    return errorIf(std::rename(from.c_str(), to.c_str()) != 0);
}

std::error_code Disk::removeFile(const std::string& file) {
    return errorIf(::unlink(file.c_str()) != 0);
}

std::error_code Disk::sync(const std::string& path) {
    const Descriptor opened = openFile(path, O_RDONLY);
    return errorIf(opened.get() < 0 || ::fsync(opened.get()) != 0);
}

std::string Disk::databaseLayer() const {
    return "";
}

std::optional<Disk::FileState> Disk::find(const std::string& path) const {
    struct stat status {};
    FileState found;
    if (::stat(path.c_str(), &status) == 0) {
        found.size = S_ISREG(status.st_mode) ? static_cast<std::uintmax_t>(status.st_size) : 0;
        const auto sinceEpoch =
            std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
        found.changed += std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch);
        return found;
    }
    return ::lstat(path.c_str(), &status) == 0 ? std::optional(found) : std::nullopt;
}

std::error_code Disk::tryOpen(const std::string& file, bool writing) const {
    return errorIf(openFile(file, writing ? O_RDWR : O_RDONLY).get() < 0);
}

std::error_code Disk::list(const std::string& folder, std::vector<std::string>& names) const {
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    return {error.value(), std::generic_category()};
}

}  // namespace SettingsHandlerKit
