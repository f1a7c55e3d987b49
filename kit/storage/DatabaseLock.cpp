#include "storage/DatabaseLock.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "storage/Database.h"

namespace SettingsHandlerKit {

namespace {

// The bytes that SQLite locks, as documented for its file format. A process that has a database open holds a lock on
// some of them.
constexpr off_t firstLockByte = 0x40000000;
constexpr off_t lockBytes = 512;

}  // namespace

Descriptor lockForReading(const std::string& file) {
    Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (opened.get() < 0 || ::flock(opened.get(), LOCK_SH | LOCK_NB) != 0) {
        throw DatabaseError("cannot lock " + file + ": " + std::strerror(errno));
    }
    return opened;
}

Descriptor lockForRemoval(const std::string& file) {
    Descriptor opened(::open(file.c_str(), O_RDWR | O_CLOEXEC));
    if (opened.get() < 0) {
        throw DatabaseError("cannot open " + file + ": " + std::strerror(errno));
    }
    struct flock bytes {};
    bytes.l_type = F_WRLCK;
    bytes.l_whence = SEEK_SET;
    bytes.l_start = firstLockByte;
    bytes.l_len = lockBytes;
    if (::flock(opened.get(), LOCK_EX | LOCK_NB) != 0 || ::fcntl(opened.get(), F_SETLK, &bytes) != 0) {
        throw DatabaseError(file + " is in use by another process");
    }
    return opened;
}

}  // namespace SettingsHandlerKit
