#pragma once

#include <array>
#include <chrono>
#include <string>

namespace Benchmarks {

/// Lines from a socket that blocks.
class SocketLines {
public:
    explicit SocketLines(int connectedSocket) : socket(connectedSocket) {}

    /// The next line; valid until the one after it is asked for. Throws when the other side hung up.
    const std::string& next();
    /// When the last bytes came.
    std::chrono::steady_clock::time_point received() const { return time; }

private:
    int socket;
    std::array<char, 4096> buffer{};
    std::string pending;
    std::string line;
    std::chrono::steady_clock::time_point time;
};

}  // namespace Benchmarks
