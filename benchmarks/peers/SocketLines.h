#pragma once

#include <array>
#include <string>

namespace Benchmarks {

/// Lines from a socket that blocks.
class SocketLines {
public:
    explicit SocketLines(int connectedSocket) : socket(connectedSocket) {}

    /// The next line; valid until the one after it is asked for. Throws when the other side hung up.
    const std::string& next();

private:
    int socket;
    std::array<char, 4096> buffer{};
    std::string pending;
    std::string line;
};

}  // namespace Benchmarks
