#include "SocketLines.h"

#include <stdexcept>

#include <sys/socket.h>

namespace Benchmarks {

const std::string& SocketLines::next() {
    for (;;) {
        const std::size_t end = pending.find('\n');
        if (end != std::string::npos) {
            line.assign(pending, 0, end);
            pending.erase(0, end + 1);
            return line;
        }
        const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), 0);
        if (count <= 0) {
            throw std::runtime_error("a socket was closed");
        }
        pending.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace Benchmarks
