#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

namespace {

constexpr mode_t ownerOnly = 0600;

}  // namespace

LogFile::LogFile(std::string filePath, std::size_t sizeLimit) : path(std::move(filePath)), limit(sizeLimit) {}

LogFile::~LogFile() {
    close();
}

void LogFile::close() {
    if (descriptor >= 0) {
        ::close(std::exchange(descriptor, -1));
    }
}

bool LogFile::fail(const std::string& why) {
    reason = why;
    return false;
}

bool LogFile::open() {
    if (descriptor >= 0) {
        return true;
    }
    // O_NONBLOCK: does not wait for the reader of a pipe.
    const int opened =
        ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, ownerOnly);
    if (opened < 0) {
        return fail(errno == ELOOP ? "it is a link" : std::strerror(errno));
    }
    if (!accept(opened)) {
        ::close(opened);
        return false;
    }
    descriptor = opened;
    return true;
}

bool LogFile::accept(int opened) {
    struct stat status {};
    if (::fstat(opened, &status) != 0) {
        return fail(std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return fail("it is not a regular file");
    }
    if (status.st_nlink != 1) {
        return fail("it is a link");
    }
    if (status.st_uid != ::geteuid()) {
        return fail("it belongs to another user");
    }
    // An existing file may be accessible to others.
    if ((status.st_mode & 07777) != ownerOnly && ::fchmod(opened, ownerOnly) != 0) {
        return fail(std::strerror(errno));
    }
    size = static_cast<std::size_t>(status.st_size);
    return true;
}

std::vector<std::string> LogFile::filesOf(const std::string& file) {
    return {file, file + ".1", file + ".2"};
}

bool LogFile::rotate() {
    const auto files = filesOf(path);
    for (std::size_t older = files.size() - 1; older > 0; --older) {
        if (std::rename(files[older - 1].c_str(), files[older].c_str()) != 0 && errno != ENOENT) {
            return fail(std::string("it is full and cannot be renamed: ") + std::strerror(errno));
        }
    }
    return reopen();
}

bool LogFile::reopen() {
    close();
    return open();
}

bool LogFile::append(const std::string& line) {
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = ::write(descriptor, line.data() + written, line.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            const std::string why = std::strerror(errno);
            // Otherwise the next line would continue this one.
            const bool isWhole = ::ftruncate(descriptor, static_cast<off_t>(size)) == 0;
            return fail(isWhole ? why : why + ", in the middle of a line");
        }
        written += static_cast<std::size_t>(count);
    }
    size += written;
    return true;
}

bool LogFile::write(const std::string& line) {
    if (!open()) {
        return false;
    }
    const bool isFull = size > 0 && size + line.size() > limit;
    return (!isFull || rotate()) && append(line);
}

void reopenLogFile(LogFile& file) {
    if (file.reopen()) {
        writeLog(VessaLogger::INFORMATION, "reopened the log file");
    } else {
        writeLog(VessaLogger::WARNING,
                 "cannot reopen the log file " + file.name() + ", its lines are lost: " + file.failure());
    }
}

}  // namespace SettingsHandlerKit
