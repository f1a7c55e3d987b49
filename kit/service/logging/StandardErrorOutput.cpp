#include "service/logging/StandardErrorOutput.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SettingsHandlerKit {

StandardErrorOutput::StandardErrorOutput(int descriptor) : target(descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        return;
    }
    if (S_ISSOCK(status.st_mode)) {
        kind = Kind::SOCKET;
    } else if (S_ISFIFO(status.st_mode)) {
        kind = Kind::SHARED_PIPE;
        const std::string name = "/proc/self/fd/" + std::to_string(descriptor);
        const int reopened = ::open(name.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (reopened >= 0) {
            target = reopened;
            kind = Kind::OWN_PIPE;
        }
    }
}

StandardErrorOutput::~StandardErrorOutput() {
    if (kind == Kind::OWN_PIPE) {
        ::close(target);
    }
}

long StandardErrorOutput::writeSome(const char* text, std::size_t size) {
    if (kind == Kind::SOCKET) {
        return ::send(target, text, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    if (kind == Kind::SHARED_PIPE) {
        pollfd room{target, POLLOUT, 0};
        // A writable pipe takes PIPE_BUF bytes without blocking.
        return ::poll(&room, 1, 0) == 1 ? ::write(target, text, std::min<std::size_t>(size, PIPE_BUF)) : -1;
    }
    return ::write(target, text, size);
}

std::size_t StandardErrorOutput::writeAsMuchAsPossible(const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        errno = 0;
        const long count = writeSome(text.data() + written, text.size() - written);
        if (count <= 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max(count, 0L));
    }
    return written;
}

bool StandardErrorOutput::write(const std::string& line) {
    rest.erase(0, writeAsMuchAsPossible(rest));
    if (!rest.empty()) {
        return false;
    }
    const std::size_t written = writeAsMuchAsPossible(line);
    if (written > 0) {
        rest = line.substr(written);
    }
    return written > 0;
}

}  // namespace SettingsHandlerKit
