#pragma once

#include <string>
#include <variant>

#include <sys/types.h>

#include "server/sockets/ListenerError.h"
#include "service/Descriptor.h"

namespace SettingsHost {

/// Where a Unix socket is: a path to listen at, or a listening socket that somebody else made.
using SocketPlace = std::variant<std::string, Descriptor>;

/// A listening Unix socket with its file, 0600 from its first moment. Its folder is made (0700) when it is missing, and
/// must be a real folder of this user that nobody else can write to. The socket of a host that is gone is replaced; a
/// live host's and everything that is no socket stays. The file of a socket that somebody else made is theirs: it is
/// never removed.
class SocketFile {
public:
    /// Errors: `ListenerError`.
    explicit SocketFile(SocketPlace place);
    /// Removes the file, see `remove`.
    ~SocketFile();

    SocketFile(const SocketFile&) = delete;
    SocketFile& operator=(const SocketFile&) = delete;

    const std::string& path() const { return socketPath; }
    /// The listening descriptor, non-blocking; the caller's to close from now on.
    int takeDescriptor();
    /// Removes the file, if it is still the one that was made. To be called before the descriptor is closed: after
    /// that, another host may put a file there that cannot be told apart. Repeated calls do nothing.
    void remove();

private:
    void bindAndListen();

    std::string socketPath;
    Descriptor descriptor;
    dev_t device = 0;
    ino_t inode = 0;
    bool removed = false;
};

}  // namespace SettingsHost
