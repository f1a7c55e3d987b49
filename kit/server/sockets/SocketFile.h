#pragma once

#include <string>
#include <variant>

#include <sys/types.h>

#include "SettingsHandlerKit/Descriptor.h"
#include "SettingsHandlerKit/ListenerError.h"

namespace SettingsHandlerKit {

/// A path to listen at, or a listening socket that another process opened.
using SocketPlace = std::variant<std::string, Descriptor>;

/// A listening Unix socket with its file, created with mode 0600. Its folder is made (0700) when it is missing, and
/// must be a real folder of this user that is not writable by others. A stale socket is replaced; the socket of a
/// running host and files that are not sockets are left unchanged. The file of a passed socket is removed only if it
/// is `isOwn`: an earlier listener of this process made it.
class SocketFile {
public:
    /// Errors: `ListenerError`.
    explicit SocketFile(SocketPlace place, bool isOwn = false);
    /// Removes the file, see `remove`.
    ~SocketFile();

    SocketFile(const SocketFile&) = delete;
    SocketFile& operator=(const SocketFile&) = delete;

    const std::string& path() const { return socketPath; }
    /// The listening descriptor, non-blocking; the caller's to close from now on.
    int takeDescriptor();
    /// Removes the file, if it is still the one that was made. To be called before the descriptor is closed: after
    /// that, another host may put a file there with the same inode. Repeated calls do nothing.
    void remove();
    /// Leaves the file to the next listener. Returns: whether it was this one's to remove.
    bool leave();

private:
    void bindAndListen();
    void remember();

    std::string socketPath;
    Descriptor descriptor;
    dev_t device = 0;
    ino_t inode = 0;
    bool removed = false;
};

}  // namespace SettingsHandlerKit
